#include "HostSystem.h"

#include "ThreadClock.h"

#include <cstdint>
#include <cstring>

namespace bench {

namespace {

typedef unsigned long long Number;

bool IsOnLinux() {
    const auto host = FindFunction<void __cdecl(const char**, const char**)>(L"ntdll.dll", "wine_get_host_version");
    const char* system = "";
    const char* release = "";
    if (host) {
        host(&system, &release);
    }
    return std::strcmp(system, "Linux") == 0;
}

// Negative for an error, and where no call of Linux can be made.
long long LinuxCall(long long number, std::intptr_t first, std::intptr_t second, long long third = 0,
                    long long fourth = 0, long long fifth = 0) {
    static const bool isOnLinux = IsOnLinux();
    if (!isOnLinux) {
        return -1;
    }
#if defined(__GNUC__) && defined(__x86_64__)
    long long result = number;
    register long long r10 asm("r10") = fourth;
    register long long r8 asm("r8") = fifth;
    asm volatile("syscall"
                 : "+a"(result)
                 : "D"(first), "S"(second), "d"(third), "r"(r10), "r"(r8)
                 : "rcx", "r11", "memory");
    return result;
#else
    static_cast<void>(number), static_cast<void>(first), static_cast<void>(second);
    static_cast<void>(third), static_cast<void>(fourth), static_cast<void>(fifth);
    return -1;
#endif
}

} // namespace

double SecondsOf(const FILETIME& time) {
    return static_cast<double>(static_cast<Number>(time.dwHighDateTime) << 32 | time.dwLowDateTime) / 1e7;
}

double CyclesPerSecond() {
    static const double cyclesPerSecond = [] {
        const auto cycleTime = FindFunction<BOOL WINAPI(HANDLE, PULONG64)>(L"kernel32.dll", "QueryThreadCycleTime");
        ULONG64 begin = 0, end = 0;
        cycleTime(GetCurrentThread(), &begin);
        const double started = WallSeconds();
        while (WallSeconds() - started < 0.05) {
        }
        cycleTime(GetCurrentThread(), &end);
        return static_cast<double>(end - begin) / 0.05;
    }();
    return cyclesPerSecond;
}

bool LinuxThreadSeconds(double& seconds) {
    const long long clockGetTime = 228;
    const long long threadClock = 3;
    struct {
        long long seconds, nanoseconds;
    } time = {};
    const bool isTold = LinuxCall(clockGetTime, threadClock, reinterpret_cast<std::intptr_t>(&time)) == 0;
    seconds = static_cast<double>(time.seconds) + static_cast<double>(time.nanoseconds) / 1e9;
    return isTold;
}

int LinuxTaskClock(bool hasDescendants) {
    const long long perfEventOpen = 298;
    const Number inherit = 1U << 1;
    const Number excludeKernel = 1U << 5; // what needs no rights; this clock tells the kernel's time nevertheless
    struct {
        unsigned type = 1; // a clock of the kernel's own
        unsigned size = 64;
        Number config = 1; // the time of the task
        Number samplePeriod = 0, sampleType = 0, readFormat = 0;
        Number flags = 0;
        Number others[2] = {};
    } wanted;
    static_assert(sizeof(wanted) == 64, "the first version of the structure");
    wanted.flags = excludeKernel | (hasDescendants ? inherit : 0);
    const long long thisThread = 0, anyProcessor = -1, noGroup = -1, closedByExec = 8;
    return static_cast<int>(LinuxCall(perfEventOpen, reinterpret_cast<std::intptr_t>(&wanted), thisThread, anyProcessor,
                                      noGroup, closedByExec));
}

bool LinuxRead(int file, unsigned long long& number) {
    const long long read = 0;
    return LinuxCall(read, file, reinterpret_cast<std::intptr_t>(&number), sizeof(number)) == sizeof(number);
}

} // namespace bench
