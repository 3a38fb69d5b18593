// What the clocks ask of the system beneath: Linux under Wine, or Windows.
#ifndef HOSTSYSTEM_H
#define HOSTSYSTEM_H

#include <winsock2.h>
#include <windows.h>

namespace bench {

template <typename Function> Function* FindFunction(const wchar_t* module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(module), name)));
}

double SecondsOf(const FILETIME& time);

// Of the processor's cycle counter on Windows, measured once.
double CyclesPerSecond();

// clock_gettime(CLOCK_THREAD_CPUTIME_ID); false where it cannot be asked.
bool LinuxThreadSeconds(double& seconds);

// A file that tells the nanoseconds that this thread runs from now on, also with those of all threads and processes
// that it starts and these start in their turn; negative where there is no such thing.
int LinuxTaskClock(bool hasDescendants);
bool LinuxRead(int file, unsigned long long& number);

} // namespace bench

#endif
