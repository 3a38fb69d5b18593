// The processor time of the calling thread: on a busy machine the time on the wall tells more of its neighbours.
#ifndef THREADCLOCK_H
#define THREADCLOCK_H

#include <string>

namespace bench {

// Seconds of processor time that the calling thread has had.
double ThreadSeconds();

// Seconds on the wall.
double WallSeconds();

// Where ThreadSeconds has its time from, for the head of a report.
std::string ThreadClockName();

} // namespace bench

#endif
