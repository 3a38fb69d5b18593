// A scenario: a configuration, what happens to it, and the time line that follows.
#ifndef SCENARIO_H
#define SCENARIO_H

#include "ClusterEngine.h"

#include <string>
#include <vector>

namespace scenario {

// A sentence behind "# ", a main.cf, a line "----", then one request a line behind "> ". What is told of each stands
// below it, and what became of the groups at the end: that is what is written anew.
struct Scenario {
    std::string head; // up to the requests, without the line "----"
    std::vector<std::string> requests;
};

Scenario Read(const std::string& text);

enum class Engines {
    OneForAll,
    OneForEach // as each tool has its own
};

// The scenario with what is told of it.
std::string Play(const Scenario& scenario, Engines engines);

vcssim::Cluster LoadCluster(const std::string& mainCf);

} // namespace scenario

#endif
