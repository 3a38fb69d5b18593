#include "StateCheck.h"

namespace vcssim {

bool CanHoldResources(const std::string& systemState) {
    return systemState == "RUNNING" || systemState == "LEAVING";
}

std::vector<std::string> ContradictionsIn(const Cluster& cluster) {
    const State& state = cluster.state;
    std::vector<std::string> found;
    if (state.takesDownSystems || state.progress.clock) {
        return found;
    }
    for (const CfGroup& group : cluster.configuration.Groups()) {
        for (const std::string& system : cluster.SystemsOf(group)) {
            const auto there = state.systems.find(system);
            if (there == state.systems.end() || CanHoldResources(there->second)) {
                continue;
            }
            for (const CfBlock& resource : group.resources) {
                const bool isOnline = cluster.ResourceState(resource, system).compare(0, 6, "ONLINE") == 0;
                if (isOnline && !cluster.IsPersistent(resource)) {
                    found.push_back("resources." + resource.name + "." + system + ": the system " + system + " is " +
                                    there->second +
                                    " and has nothing online; with \"downSystems\": \"accepted\" it may have");
                }
            }
        }
    }
    return found;
}

} // namespace vcssim
