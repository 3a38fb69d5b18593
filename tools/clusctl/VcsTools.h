// What the VCS tools said, for people: the library reports success also when a tool printed an error.
#ifndef CLUSCTL_VCSTOOLS_H
#define CLUSCTL_VCSTOOLS_H

#include "LogCapture.h"
#include "Password.h"
#include "Report.h"
#include "VcsValues.h"

#include <functional>
#include <string>
#include <vector>

struct ToolProblem {
    enum class Kind {
        Missing,    // the tool is not on the search path
        NotStarted, // it is, and cannot be started
        Lost,       // what it said was not captured, or not all of it
        EngineDown,
        ReadOnly, // the configuration is not open for writing
        Message,  // any other message of VCS
        Ended     // an exit code without a message
    };

    Kind kind;
    std::string command; // as ToolRun
    std::string message;
    unsigned long code = 0; // Win32 code, of NotStarted and Lost: it belongs behind the message
};

// Watches the tools that the library runs from now on.
class ToolWatch {
public:
    explicit ToolWatch(const LogCapture& log);

    // The runs that went wrong. Messages that tell nothing new are none: a resource that is not faulted, no
    // dependencies, a mode that was there before. How the configuration was written and closed is told by
    // ClosingProblems, since the change before it may be made all the same.
    std::vector<ToolProblem> Problems() const;
    std::vector<ToolProblem> ClosingProblems() const;

    // Whether VCS answers, and does not do what it was told.
    bool IsRefused() const;

    // Whether the configuration was opened, or was open when that was tried.
    bool HasOpened() const;

    // Throws Failure, with what the tools said, when one of them went wrong or the library reported a failure.
    // `what`: "cannot list the systems".
    void Require(bool succeeded, const std::string& what) const;

    // Throws Failure when a list holds pieces of a message, or of no text at all, instead of names.
    void RequireNames(const VcsNames& names, const std::string& what) const;

    // Whether a tool gave the VCS message of this number, such as "10364".
    bool HasMessage(const std::string& number) const;

    std::vector<ToolRun> Runs() const;

private:
    std::vector<ToolProblem> ProblemsOf(bool areClosings) const;

    const LogCapture& m_log;
    const size_t m_first;
};

// Says what went wrong, and what the tools printed. There has to be a problem.
Failure ToolFailure(const std::string& what, const std::vector<ToolProblem>& problems);

// For a command that was interrupted: with the changes that the tools had been told by then, and how the configuration
// is left. `shown` is what there is to show besides.
FailureWithReport InterruptedFailure(const LogCapture& log, const Report& shown);

// The form in which VCS keeps a password, which is given as an argument (AsArgument). Throws Failure when there is
// none.
std::wstring EncryptForVcs(const LogCapture& log, const Password& password);

// For a progress line: the tool that runs.
std::function<std::string()> DescribeProgress(const LogCapture& log);

#endif
