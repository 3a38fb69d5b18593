// A VCS tool as a child process.
#ifndef CLUS_PLATFORM_TOOLPROCESS_H
#define CLUS_PLATFORM_TOOLPROCESS_H

namespace clus {

// Starts a tool, hidden and with both its outputs in the capture file, waits for it without a time-out and logs its
// exit code. False when it could not be started, unless the platform gives no reason. Without a handle for the file
// nothing is run, and that is no failure. CreateProcessW may write to `commandLine`.
bool RunTool(wchar_t* commandLine, const wchar_t* captureFileName);

} // namespace clus

#endif
