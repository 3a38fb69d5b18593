#include "ProcessClock.h"

#include "HostSystem.h"

namespace bench {

namespace {

typedef BOOL WINAPI CycleTime(HANDLE, PULONG64);

// Wine tells the times of another process's threads by ticks of 10 ms, and those of a process not at all. The host
// counts the time of a thread with all that it starts, however deep.
class DescendantCounter {
public:
    DescendantCounter() : m_all(LinuxTaskClock(true)), m_own(LinuxTaskClock(false)) {
    }
    bool Works() const {
        return m_all >= 0 && m_own >= 0;
    }
    double Seconds() const {
        unsigned long long all = 0;
        unsigned long long own = 0;
        LinuxRead(m_all, all);
        LinuxRead(m_own, own);
        return (static_cast<double>(all) - static_cast<double>(own)) / 1e9;
    }
    // An ended process of Wine is one of the host's for some moments more.
    double SettledSeconds() const {
        double seconds = Seconds();
        for (int tries = 0; tries < 50; ++tries) {
            Sleep(1);
            const double now = Seconds();
            // Its own thread is read after all of them, so that the difference trembles.
            if (now - seconds < 20e-6) {
                return now;
            }
            seconds = now;
        }
        return seconds;
    }

private:
    const int m_all; // files; they stay open as long as the process lives
    const int m_own;
};

const DescendantCounter& Descendants() {
    thread_local const DescendantCounter counter;
    return counter;
}

CycleTime* ProcessCycleTime() {
    return FindFunction<CycleTime>(L"kernel32.dll", "QueryProcessCycleTime");
}

// Of the first thread: all of these processes do most of their work there.
double Ticks(HANDLE thread) {
    FILETIME begin, end, kernel, user;
    if (!GetThreadTimes(thread, &begin, &end, &kernel, &user)) {
        return 0;
    }
    return SecondsOf(kernel) + SecondsOf(user);
}

} // namespace

bool DescendantSeconds(double& seconds) {
    const DescendantCounter& counter = Descendants();
    seconds = counter.Works() ? counter.SettledSeconds() : 0;
    return counter.Works();
}

ProcessTimer::ProcessTimer() {
    const DescendantCounter& counter = Descendants();
    if (counter.Works()) {
        m_before = counter.Seconds();
    }
}

double ProcessTimer::Seconds(const PROCESS_INFORMATION& process) const {
    const DescendantCounter& counter = Descendants();
    if (counter.Works()) {
        return counter.SettledSeconds() - m_before;
    }
    ULONG64 cycles = 0;
    CycleTime* const cycleTime = ProcessCycleTime();
    if (cycleTime && cycleTime(process.hProcess, &cycles)) {
        return static_cast<double>(cycles) / CyclesPerSecond();
    }
    return Ticks(process.hThread);
}

std::string ProcessClockName() {
    return Descendants().Works() ? "the host's clock of all their threads"
           : ProcessCycleTime()  ? "QueryProcessCycleTime"
                                 : "GetThreadTimes, which ticks";
}

} // namespace bench
