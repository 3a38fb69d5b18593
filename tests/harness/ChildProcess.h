// Processes that tests start: the test program itself once more, or one that lies beside it.
#ifndef HARNESS_CHILDPROCESS_H
#define HARNESS_CHILDPROCESS_H

#include "common/Handle.h"

#include <map>
#include <string>

namespace harness {

// Changes to the environment that a child inherits; an empty value removes the variable.
typedef std::map<std::wstring, std::wstring> Variables;

// The path of this program, and its folder with a backslash at the end.
std::wstring ProgramPath();
std::wstring ProgramFolder();

// Where a child writes to, by inheritable handles that stay the caller's; null is nowhere. By default where this
// process writes to.
struct ChildStreams {
    HANDLE output = nullptr;
    HANDLE errors = nullptr;
};

class ChildProcess {
public:
    // `flags` are those of CreateProcessW. A process that does not start fails the test.
    explicit ChildProcess(const std::wstring& commandLine, const Variables& changes = {},
                          const ChildStreams& streams = {}, DWORD flags = 0);
    ~ChildProcess(); // stops it when it still runs
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    DWORD Wait();                           // its exit code; the test fails when it takes longer than a minute
    bool RunsFor(DWORD milliseconds) const; // whether it still runs then
    void Stop();                            // at once, in the middle of whatever it does
    // Null when it was not started.
    HANDLE get() const {
        return m_process.get();
    }

private:
    common::Handle m_process;
};

} // namespace harness

#endif
