// The resources of the groups that this node owns.
#ifndef CLUSCTL_RESOURCESHERE_H
#define CLUSCTL_RESOURCESHERE_H

#include "ClusterObjects.h"

// Those of a type, in any letter case, as ReadResource gives them. What cannot be read, and so may be one of them,
// marks the report incomplete.
Json ReadResourcesHere(const CCluster& cluster, const std::wstring& type, Report& report);

#endif
