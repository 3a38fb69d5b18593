// The live cluster in the form of the simulator's model file.
#ifndef CLUSCTL_CLUSTERMODEL_H
#define CLUSCTL_CLUSTERMODEL_H

#include "Report.h"

class LogCapture;

// Reads the cluster of this computer, which becomes the node ".". What the cluster refuses to tell of an object, or to
// open, is marked in the model ("unread"), so that the simulator refuses it too, and marks the report incomplete.
// Throws Failure when the cluster is lost, or does not tell which objects there are. Shows how far it is.
Json ReadClusterModel(const LogCapture& log, Report& report);

#endif
