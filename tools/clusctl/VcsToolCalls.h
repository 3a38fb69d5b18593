// The runs of VCS tools that a rehearsed command made, as the simulator's journal has them.
#ifndef CLUSCTL_VCSTOOLCALLS_H
#define CLUSCTL_VCSTOOLCALLS_H

#include "ClusterCalls.h"

// Of the lines of a journal, in their order. Lines that are none are passed over. Secrets are masked in it already.
std::vector<ClusterCall> ReadToolCalls(const std::string& journal);

#endif
