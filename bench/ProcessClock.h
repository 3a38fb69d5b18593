// The processor time of processes that the benchmark starts, all their threads included.
#ifndef PROCESSCLOCK_H
#define PROCESSCLOCK_H

#include <winsock2.h>
#include <windows.h>

#include <string>

namespace bench {

// What a run took.
struct RunTime {
    double seconds; // of the processor
    double wallSeconds;
};

// Seconds of processor time that all threads and processes have had that this thread started since it asked first, and
// those that these started. False where the system does not tell.
bool DescendantSeconds(double& seconds);

// The processor time of one process.
class ProcessTimer {
public:
    // Before the process is started.
    ProcessTimer();
    // When it has ended.
    double Seconds(const PROCESS_INFORMATION& process) const;

private:
    double m_before = 0;
};

// Where these times come from, for the head of a report.
std::string ProcessClockName();

} // namespace bench

#endif
