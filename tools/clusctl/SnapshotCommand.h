// clusctl snapshot: the live cluster as a model file of the cluster simulator.
#ifndef CLUSCTL_SNAPSHOTCOMMAND_H
#define CLUSCTL_SNAPSHOTCOMMAND_H

class CommandLine;

void AddSnapshotCommand(CommandLine& commandLine);

#endif
