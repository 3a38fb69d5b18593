// Whether the states of a cluster can be true at the same time.
#ifndef VCSSIM_STATECHECK_H
#define VCSSIM_STATECHECK_H

#include "Cluster.h"

#include <string>
#include <vector>

namespace vcssim {

// Whether resources may be online on a system in this state: it runs, or is leaving and takes them offline.
bool CanHoldResources(const std::string& systemState);

// Resources that are online on systems that cannot hold them, as "PLACE: sentence", in the order of the configuration.
// None where the state accepts it, or where a clock lets the cluster notice the loss.
std::vector<std::string> ContradictionsIn(const Cluster& cluster);

} // namespace vcssim

#endif
