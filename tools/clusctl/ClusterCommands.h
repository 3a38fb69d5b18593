// clusctl cluster, groups, resources: what the cluster holds.
#ifndef CLUSCTL_CLUSTERCOMMANDS_H
#define CLUSCTL_CLUSTERCOMMANDS_H

class CommandLine;

void AddClusterCommands(CommandLine& commandLine);

#endif
