// clusctl on recordings, and rehearsals of its commands.
#ifndef BENCHREHEARSALS_H
#define BENCHREHEARSALS_H

#include "Report.h"

namespace bench {

const std::size_t RoundsOfStarts = 41; // a start is short, and the neighbours' work falls on few of them

// Both throw std::runtime_error when a process fails.
void MeasureRecording(Report& report);
void MeasureRehearsals(Report& report);

} // namespace bench

#endif
