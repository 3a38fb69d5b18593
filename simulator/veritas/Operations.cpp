// The state of a resource after it is brought online, and whether it may be brought online at all.
#include "Operations.h"

#include <algorithm>

namespace vcssim {

bool IsOnline(const Cluster& cluster, const CfBlock& resource, const std::string& system) {
    return cluster.ResourceState(resource, system).compare(0, 6, "ONLINE") == 0;
}

bool IsFaulted(const Cluster& cluster, const CfBlock& resource, const std::string& system) {
    return cluster.ResourceState(resource, system).compare(0, 7, "FAULTED") == 0;
}

bool CheckSystem(Context& context, const CfGroup& group, const std::string& system) {
    if (!context.cluster.HasSystem(system)) {
        NoSuchSystem(context.output, "10200", system);
        return false;
    }
    const std::vector<std::string> systems = context.cluster.SystemsOf(group);
    if (std::find(systems.begin(), systems.end(), system) == systems.end()) {
        context.output.Simulated("10135",
                                 "System " + system + " is not in the SystemList of group " + group.block.name);
        return false;
    }
    const auto state = context.cluster.state.systems.find(system);
    if (state != context.cluster.state.systems.end() && state->second != "RUNNING") {
        context.output.Simulated("10180", "System " + system + " is not available");
        return false;
    }
    return true;
}

bool CheckNotOnlineElsewhere(Context& context, const CfGroup& group, const std::string& system, bool ofResource) {
    if (context.cluster.IsParallel(group)) {
        return true;
    }
    for (const std::string& other : context.cluster.SystemsOf(group)) {
        if (other == system || context.cluster.GroupState(group, other).compare(0, 7, "OFFLINE") == 0) {
            continue;
        }
        if (ofResource) {
            context.output.Warning("10286", "Cannot online: resource's group is not offline elsewhere");
        } else {
            context.output.Simulated("10165", "Group " + group.block.name + " is online on system " + other);
        }
        return false;
    }
    return true;
}

bool BringOnline(Context& context, const CfGroup& group, const CfBlock& resource, const std::string& system,
                 std::set<std::string>& seen) {
    Cluster& cluster = context.cluster;
    if (!seen.insert(resource.name).second) {
        return IsOnline(cluster, resource, system);
    }
    bool ready = true;
    for (const CfLink& link : group.links) {
        if (link.parent == resource.name) {
            const CfBlock& child = *cluster.configuration.ResourceNamed(link.child);
            // What is not enabled does not count.
            const bool up = BringOnline(context, group, child, system, seen);
            ready = (up || !cluster.IsFlagSet(group, child, "Enabled", system)) && ready;
        }
    }
    if (cluster.IsPersistent(resource)) {
        return IsOnline(cluster, resource, system);
    }
    if (!cluster.IsFlagSet(group, resource, "Enabled", system)) {
        return false;
    }
    if (IsFaulted(cluster, resource, system)) {
        context.output.Notice("10284",
                              "Cannot online a faulted resource:Clear the faulted resource on system " + system + ".");
        return false;
    }
    if (!ready) {
        return false;
    }
    if (!IsOnline(cluster, resource, system)) {
        const auto failing = cluster.state.failing.find(resource.name);
        const bool fails = failing != cluster.state.failing.end() && failing->second.count(system) != 0;
        cluster.state.resources[resource.name][system] = fails ? "FAULTED" : "ONLINE";
    }
    return IsOnline(cluster, resource, system);
}

} // namespace vcssim
