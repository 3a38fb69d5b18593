// One run of a tool, from its arguments to its exit code.
#ifndef VCSSIM_RUN_H
#define VCSSIM_RUN_H

#include "Options.h"
#include "Output.h"

#include <string>
#include <vector>

namespace vcssim {

// Without faults and journal. Nothing is written to the standard streams.
Output RunCommand(const std::string& tool, const std::vector<std::string>& arguments, const Environment& environment);

// All of it, as the programs do. Throws std::bad_alloc; files are whole then as ever.
int RunTool(const std::string& tool, const std::vector<std::string>& arguments);

} // namespace vcssim

#endif
