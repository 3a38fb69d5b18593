// The runs of the cluster's command-line tools, as the library reports them.
#ifndef CLUSCTL_TOOLRUNS_H
#define CLUSCTL_TOOLRUNS_H

#include <clus_VeritasCluster.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// Of a longer output clusctl takes nothing: what it makes of one takes a multiple of its size.
const size_t LongestToolOutput = size_t{64} << 20; // characters

// Secrets are masked in all of it.
struct ToolRun {
    std::string command; // "hares -list Type=Lanman"
    bool isStarted = false;
    unsigned long startError = 0;   // Win32 code: why it was not
    unsigned long captureError = 0; // Win32 code: why its output went astray
    unsigned long roomError = 0;    // Win32 code: why no more of its output could have been captured
    bool isExitCodeKnown = false;
    unsigned long exitCode = 0;
    bool isRead = false;
    bool isTooLong = false;                     // it is longer than LongestToolOutput, and not taken
    std::string firstLine;                      // of its output, standard error included; empty when there is none
    std::shared_ptr<const std::wstring> output; // all of it, one character per byte; null when there is none
    bool isInterrupted = false;                 // the user did it meanwhile: Ctrl+C goes to the tool as well

    // Empty when there is none.
    const std::wstring& Output() const;

    // Whether it only asked.
    bool IsQuestion() const;
};

// Receives the runs of this process while it lives. Throws out of the library after one of them: Interrupted when the
// user has interrupted the command, Failure when the output is too long. There is one at a time.
class ToolRuns {
public:
    ToolRuns();
    ~ToolRuns();
    ToolRuns(const ToolRuns&) = delete;
    ToolRuns& operator=(const ToolRuns&) = delete;

    // Takes a run of this program's own like those of the library; an output that is too long may be null. `roomError`
    // is what ProbeCurrentFolder said while the captured output was there. Throws in the same way.
    static void Tell(const CVeritasToolRun& run, unsigned long roomError);

    size_t Count() const;
    // They share their outputs with those that are kept.
    std::vector<ToolRun> Since(size_t first) const;

    // One line of the log, secrets masked: tells which tool runs, for a progress line.
    void TakeLine(const std::string& line);
    // The command that was begun last, or has ended last where the log does not tell what begins. Other threads may ask
    // while tools run.
    std::string Last() const;

private:
    static void Receive(const CVeritasToolRun& told, void* context);
    void TakeAndCheck(const CVeritasToolRun& told, unsigned long roomError);
    void Take(const CVeritasToolRun& told, unsigned long roomError);

    mutable std::mutex m_mutex;
    std::vector<ToolRun> m_runs;
    bool m_isOneLost = false;
    bool m_wasInterrupted = false;
    std::string m_last;
};

#endif
