// clusctl tree, graph: what depends on what.
#ifndef CLUSCTL_PICTURECOMMANDS_H
#define CLUSCTL_PICTURECOMMANDS_H

#include "Report.h"

#include "picture/ClusterPicture.h"

class CommandLine;

// What "tree" shows of the whole cluster: "groups" and "resources" of the document.
void AddTrees(const picture::ClusterPicture& cluster, Report& report);

void AddPictureCommands(CommandLine& commandLine);

#endif
