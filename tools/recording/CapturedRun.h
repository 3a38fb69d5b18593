// Runs a tool as the library does, and keeps apart what it prints on its two outputs.
#ifndef RECORDING_CAPTUREDRUN_H
#define RECORDING_CAPTUREDRUN_H

#include "Recording.h"

#include <winsock2.h>
#include <windows.h>

namespace recording {

// Starts the tool, waits for its end, and gives to `tool` what it printed and its exit code. What it prints also goes,
// in whole lines, to the file or files that its outputs were to be; which of two lines of different outputs came first
// is told by when they arrived here. Of more than 64 MB `tool` keeps no more, and says so. FALSE when it cannot be
// started, with the reason in `tool`. The handles in `information` are the caller's.
BOOL RunCaptured(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                 PROCESS_INFORMATION* information, RecordedTool& tool);

} // namespace recording

#endif
