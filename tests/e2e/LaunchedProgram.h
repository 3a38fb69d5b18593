// What the tools have in common that run a program and do something to it in the midst of its work:
//
//   TOOL WHAT FILE NUMBER PAUSE PROGRAM [ARGUMENT ...]
//
// PAUSE milliseconds after FILE begins with that number.
#ifndef LAUNCHEDPROGRAM_H
#define LAUNCHEDPROGRAM_H

#include <windows.h>

#include <functional>

// The exit code when the program ended before, or nothing could be done.
const int CannotBeDone = 99;

const DWORD LongestWait = 40000; // milliseconds

// Starts the program, does it, and waits for the program's end. The exit code of the tool: the program's.
int RunUntil(wchar_t** arguments, DWORD creationFlags, const std::function<bool(const PROCESS_INFORMATION&)>& act);

#endif
