#include "ThreadClock.h"

#include <winsock2.h>
#include <windows.h>

#include <cstring>

namespace bench {

namespace {

typedef unsigned long long Number;

template <typename Function> Function* Find(const wchar_t* module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(module), name)));
}

// Wine has no QueryThreadCycleTime, and its GetThreadTimes goes by ticks of 10 ms. A thread there is one of the host's,
// which keeps its time exactly.
bool IsOnLinux() {
    const auto host = Find<void __cdecl(const char**, const char**)>(L"ntdll.dll", "wine_get_host_version");
    const char* system = "";
    const char* release = "";
    if (host) {
        host(&system, &release);
    }
    return std::strcmp(system, "Linux") == 0;
}

// clock_gettime(CLOCK_THREAD_CPUTIME_ID); false where it cannot be asked.
bool LinuxThreadSeconds(double& seconds) {
#if defined(__GNUC__) && defined(__x86_64__)
    const long long clockGetTime = 228;
    const long long threadClock = 3;
    struct {
        long long seconds, nanoseconds;
    } time = {};
    long long result = clockGetTime;
    asm volatile("syscall" : "+a"(result) : "D"(threadClock), "S"(&time) : "rcx", "r11", "memory");
    seconds = static_cast<double>(time.seconds) + static_cast<double>(time.nanoseconds) / 1e9;
    return result == 0;
#else
    static_cast<void>(seconds);
    return false;
#endif
}

typedef BOOL WINAPI CycleTime(HANDLE, PULONG64);

double CyclesPerSecond(CycleTime* cycleTime) {
    ULONG64 begin = 0, end = 0;
    cycleTime(GetCurrentThread(), &begin);
    const double started = WallSeconds();
    while (WallSeconds() - started < 0.05) {
    }
    cycleTime(GetCurrentThread(), &end);
    return static_cast<double>(end - begin) / 0.05;
}

double ThreadTimes() {
    FILETIME begin, end, kernel, user;
    GetThreadTimes(GetCurrentThread(), &begin, &end, &kernel, &user);
    const auto ticks = [](const FILETIME& time) {
        return static_cast<double>(static_cast<Number>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    };
    return (ticks(kernel) + ticks(user)) / 1e7;
}

enum class Source {
    Linux,
    Cycles,
    Ticks
};

struct Clock {
    Clock() : cycleTime(Find<CycleTime>(L"kernel32.dll", "QueryThreadCycleTime")) {
        double seconds = 0;
        ULONG64 cycles = 0;
        if (IsOnLinux() && LinuxThreadSeconds(seconds)) {
            source = Source::Linux;
        } else if (cycleTime && cycleTime(GetCurrentThread(), &cycles)) {
            source = Source::Cycles;
            cyclesPerSecond = CyclesPerSecond(cycleTime);
        }
    }

    Source source = Source::Ticks;
    CycleTime* cycleTime;
    double cyclesPerSecond = 1;
};

const Clock& TheClock() {
    static const Clock clock;
    return clock;
}

} // namespace

double ThreadSeconds() {
    const Clock& clock = TheClock();
    double seconds = 0;
    ULONG64 cycles = 0;
    switch (clock.source) {
    case Source::Linux:
        LinuxThreadSeconds(seconds);
        return seconds;
    case Source::Cycles:
        clock.cycleTime(GetCurrentThread(), &cycles);
        return static_cast<double>(cycles) / clock.cyclesPerSecond;
    default:
        return ThreadTimes();
    }
}

double WallSeconds() {
    LARGE_INTEGER count, frequency;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

std::string ThreadClockName() {
    switch (TheClock().source) {
    case Source::Linux:
        return "the host's clock of the thread";
    case Source::Cycles:
        return "QueryThreadCycleTime";
    default:
        return "GetThreadTimes, which ticks";
    }
}

} // namespace bench
