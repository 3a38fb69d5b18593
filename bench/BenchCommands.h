// Commands of clusctl as processes on model files, against processes that make the needed cluster calls alone.
#ifndef BENCHCOMMANDS_H
#define BENCHCOMMANDS_H

#include <string>

namespace bench {

// Measures and prints. Throws std::runtime_error when a process fails.
void MeasureCommands();

// Makes the cluster calls that a command's answer needs: "servers", "groups", "resources" or "snapshot". Throws
// std::runtime_error when one fails.
void RunBareCommand(const std::string& command);

} // namespace bench

#endif
