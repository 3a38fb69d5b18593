// The live cluster in the form of the simulator's model file.
#ifndef CLUSCTL_CLUSTERMODEL_H
#define CLUSCTL_CLUSTERMODEL_H

#include "Report.h"

// Reads the cluster of this computer, which becomes the node ".". Throws Failure when anything of it cannot be read:
// half a cluster is no ground for a rehearsal.
Json ReadClusterModel();

#endif
