// VCS: a tool run against the bare calls, many runs at once, and lists of resources against the splitting of their text
// alone.
#ifndef BENCHVERITAS_H
#define BENCHVERITAS_H

#include "Report.h"
#include "Scale.h"

namespace bench {

// Throws std::runtime_error when a result is not the expected one.
void MeasureVeritas(Report& report, Scale scale);

} // namespace bench

#endif
