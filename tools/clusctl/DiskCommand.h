// disk: the paths of a cluster disk.
#ifndef CLUSCTL_DISKCOMMAND_H
#define CLUSCTL_DISKCOMMAND_H

class CommandLine;

void AddDiskCommand(CommandLine& commandLine);

#endif
