// clusctl model: models of the simulators, without asking them or a cluster.
#ifndef CLUSCTL_MODELCOMMANDS_H
#define CLUSCTL_MODELCOMMANDS_H

class CommandLine;

void AddModelCommands(CommandLine& commandLine);

#endif
