// The live cluster in the form of the simulator's model file.
#ifndef CLUSCTL_CLUSTERMODEL_H
#define CLUSCTL_CLUSTERMODEL_H

#include "Report.h"

class LogCapture;

// Reads the cluster of this computer, which becomes the node ".". Throws Failure when anything of it cannot be read:
// half a cluster is no ground for a rehearsal. Shows how far it is.
Json ReadClusterModel(const LogCapture& log);

#endif
