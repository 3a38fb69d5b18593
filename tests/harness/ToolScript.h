// Stands in for the command-line tools that clusutil.dll runs: no process is started, each command line gets the answer
// that the test scripted for it.
//
//     tools.Answer(L"hasys -list ", "NODE1\r\nNODE2\r\n");
//     EXPECT_TRUE(cluster.EnumSystemNames(systems));
//     EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hasys -list "}));
//
// It lies below the PlatformTap: failures made with FailCall come first, and the tap's handle audit covers the handles
// that are given out here (signalled events).
#ifndef HARNESS_TOOLSCRIPT_H
#define HARNESS_TOOLSCRIPT_H

#include "PlatformTap.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace harness {

typedef std::vector<std::wstring> CommandList;

// One call of CreateProcessW as the library made it.
struct ToolRun {
    std::wstring commandLine;
    CreateProcessArguments arguments; // its pointers are only good for null or not
    STARTUPINFOW startup;
    DWORD outputFlags = 0; // HANDLE_FLAG_... of the standard output at the start
    bool started = false;
};

class ToolScript : public ProcessStandIn {
public:
    explicit ToolScript(PlatformTap& tap);
    ~ToolScript() override;
    ToolScript(const ToolScript&) = delete;
    ToolScript& operator=(const ToolScript&) = delete;

    // What a command line prints, byte by byte, and its exit code. Several answers to one command line are given in
    // their order; the last one stays.
    void Answer(const std::wstring& commandLine, const std::string& output, DWORD exitCode = 0);
    // To every command line that begins so; the longest beginning counts, and a whole command line before all.
    void AnswerPrefix(const std::wstring& beginning, const std::string& output, DWORD exitCode = 0);
    // To the next run, whatever its command line; several wait in a queue. Before all others.
    void AnswerNext(const std::string& output, DWORD exitCode = 0);

    // The n-th run from now on, or every run of a command line, cannot be started: last error `code`, which may be 0.
    void FailStart(unsigned n, DWORD code);
    void FailStart(const std::wstring& commandLine, DWORD code);

    // Runs that no answer was scripted for print nothing; the fixture's audit complains unless they are allowed.
    void AllowUnscripted() {
        m_allowUnscripted = true;
    }
    CommandList Unscripted() const;

    // The command lines of all runs, in order, those that could not be started included.
    CommandList CommandLines() const;
    // And forgets the runs.
    CommandList TakeCommandLines();
    const std::vector<ToolRun>& Runs() const {
        return m_runs;
    }

    // Called with the answer to each run that starts, which it may change.
    std::function<void(const std::wstring& commandLine, std::string& output, DWORD& exitCode)> onAnswer;

    // Called in each run that starts, before its output is written.
    std::function<void(const ToolRun&)> onRun;

    BOOL Create(const CreateProcessArguments& arguments, LPPROCESS_INFORMATION process) override;
    DWORD Wait(HANDLE process, DWORD milliseconds) override;
    BOOL ExitCode(HANDLE process, LPDWORD code) override;

private:
    struct Reply {
        std::string output;
        DWORD exitCode = 0;
        bool starts = true;
        DWORD startError = 0;
    };
    typedef std::deque<Reply> Replies;

    static Reply Next(Replies& replies);
    bool FindReply(const std::wstring& commandLine, Reply& reply);

    PlatformTap& m_tap;
    mutable std::mutex m_mutex;
    std::map<std::wstring, Replies> m_exact;
    std::map<std::wstring, Replies> m_beginnings;
    Replies m_queue;
    std::map<unsigned, DWORD> m_failingStarts; // by number of the run
    unsigned m_runCount = 0;
    std::vector<ToolRun> m_runs;
    CommandList m_unscripted;
    std::map<HANDLE, DWORD> m_exitCodes;
    bool m_allowUnscripted = false;
};

} // namespace harness

#endif
