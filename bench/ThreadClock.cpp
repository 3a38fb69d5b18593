#include "ThreadClock.h"

#include "HostSystem.h"

namespace bench {

namespace {

typedef BOOL WINAPI CycleTime(HANDLE, PULONG64);

double ThreadTimes() {
    FILETIME begin, end, kernel, user;
    GetThreadTimes(GetCurrentThread(), &begin, &end, &kernel, &user);
    return SecondsOf(kernel) + SecondsOf(user);
}

enum class Source {
    Linux,
    Cycles,
    Ticks
};

// Wine has no QueryThreadCycleTime, and its GetThreadTimes goes by ticks of 10 ms. A thread there is one of the host's,
// which keeps its time exactly.
struct Clock {
    Clock() : cycleTime(FindFunction<CycleTime>(L"kernel32.dll", "QueryThreadCycleTime")) {
        double seconds = 0;
        ULONG64 cycles = 0;
        if (LinuxThreadSeconds(seconds)) {
            source = Source::Linux;
        } else if (cycleTime && cycleTime(GetCurrentThread(), &cycles)) {
            source = Source::Cycles;
        }
    }

    Source source = Source::Ticks;
    CycleTime* cycleTime;
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
        return static_cast<double>(cycles) / CyclesPerSecond();
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
