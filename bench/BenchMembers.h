// The members of the cluster classes: on stubs, which leaves nothing but their own cost, and on the simulator held in
// memory against the bare calls.
#ifndef BENCHMEMBERS_H
#define BENCHMEMBERS_H

#include "Report.h"
#include "Scale.h"

namespace bench {

// Throws std::runtime_error when a result is not the expected one.
void MeasureMembers(Report& report, Scale scale);

} // namespace bench

#endif
