// clusctl as processes: its start, and its commands on model files against processes that make the needed cluster calls
// alone.
#ifndef BENCHCOMMANDS_H
#define BENCHCOMMANDS_H

#include "Report.h"
#include "Scale.h"

#include <string>

namespace bench {

// Throws std::runtime_error when a process fails.
void MeasureCommands(Report& report, Scale scale);

// Makes the cluster calls that a command's answer needs: "servers", "groups", "resources" or "snapshot". Throws
// std::runtime_error when one fails.
void RunBareCommand(const std::string& command);

} // namespace bench

#endif
