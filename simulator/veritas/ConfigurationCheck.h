// What is wrong with a configuration that can be read.
#ifndef VCSSIM_CONFIGURATIONCHECK_H
#define VCSSIM_CONFIGURATIONCHECK_H

#include "Cluster.h"

#include <string>
#include <vector>

namespace vcssim {

// One sentence each, in the order of the configuration.
std::vector<std::string> ProblemsOf(const Cluster& cluster);

} // namespace vcssim

#endif
