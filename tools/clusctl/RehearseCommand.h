// clusctl rehearse, and --dry-run: what would happen, on a private copy of the cluster.
#ifndef CLUSCTL_REHEARSECOMMAND_H
#define CLUSCTL_REHEARSECOMMAND_H

#include <functional>

class CommandLine;

// Adds the command, and --dry-run to all commands that were added before. `addAll` adds all commands to a command line:
// the command to be rehearsed is read by it.
void AddRehearseCommand(CommandLine& commandLine, const std::function<void(CommandLine&)>& addAll);

#endif
