// clusctl on a VCS cluster, against the tools that it runs.
#ifndef BENCHVCSCOMMANDS_H
#define BENCHVCSCOMMANDS_H

#include "Report.h"
#include "Scale.h"

namespace bench {

// Throws std::runtime_error when a process fails.
void MeasureVcsCommands(Report& report, Scale scale);

} // namespace bench

#endif
