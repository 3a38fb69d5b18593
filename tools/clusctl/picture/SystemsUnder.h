// Whether the systems of VCS run that something is said to be on.
#ifndef CLUSCTL_PICTURE_SYSTEMSUNDER_H
#define CLUSCTL_PICTURE_SYSTEMSUNDER_H

#include "ClusterPicture.h"

#include <string>

namespace picture {

constexpr char Running[] = "running";
constexpr char NotRunning[] = "not running";
constexpr char RunningUnknown[] = "unknown";

// One of these; empty of no system, and of a failover cluster.
std::string RunningUnder(const ClusterPicture& cluster, const std::string& node);

} // namespace picture

#endif
