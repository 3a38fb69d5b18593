// clusctl tree, graph: what depends on what.
#ifndef CLUSCTL_PICTURECOMMANDS_H
#define CLUSCTL_PICTURECOMMANDS_H

class CommandLine;

void AddPictureCommands(CommandLine& commandLine);

#endif
