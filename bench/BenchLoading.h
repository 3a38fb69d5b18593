// What loading the library takes, and how large its files are.
#ifndef BENCHLOADING_H
#define BENCHLOADING_H

#include "Report.h"

namespace bench {

// Throws std::runtime_error when a process fails.
void MeasureLoading(Report& report);

} // namespace bench

#endif
