// A VCS tool as a child process.
#ifndef CLUS_PLATFORM_TOOLPROCESS_H
#define CLUS_PLATFORM_TOOLPROCESS_H

#include <winsock2.h>
#include <windows.h>

namespace clus {

// What became of a tool's run. Codes are Win32 codes, 0 for none.
struct ToolProcess {
    bool started = false;
    DWORD startError = 0;       // why it was not started
    DWORD captureError = 0;     // why its output was not captured: it was to run without redirection
    bool exitCodeKnown = false; // of a started one
    DWORD exitCode = 0;
};

// Starts a tool, hidden and with both its outputs in the capture file, waits for it without a time-out and logs its
// exit code. A capture file that another program has open is tried for a second; what cannot be opened then is not
// captured: the tool runs without redirection. False when it could not be started, unless the platform gives no reason.
// Without a handle for the file nothing is run, and that is no failure. CreateProcessW may write to `commandLine`.
bool RunTool(wchar_t* commandLine, const wchar_t* captureFileName, ToolProcess& process);

} // namespace clus

#endif
