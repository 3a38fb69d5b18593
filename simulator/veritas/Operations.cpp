#include "Operations.h"

#include "EngineInput.h"

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
        const std::string state = context.cluster.GroupState(group, other);
        const bool isOnItsWay =
            state.find("|STARTING") != std::string::npos || state.find("|STOPPING") != std::string::npos;
        if (other == system || (state.compare(0, 7, "OFFLINE") == 0 && !isOnItsWay)) {
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

bool CollectOnline(Context& context, const CfGroup& group, const CfBlock& resource, const std::string& system,
                   std::set<std::string>& seen, std::vector<std::string>& wanted) {
    const Cluster& cluster = context.cluster;
    if (!seen.insert(resource.name).second) {
        return IsOnline(cluster, resource, system) ||
               std::find(wanted.begin(), wanted.end(), resource.name) != wanted.end();
    }
    bool ready = true;
    for (const CfLink& link : group.links) {
        if (link.parent == resource.name) {
            const CfBlock& child = *cluster.configuration.ResourceNamed(link.child);
            // What is not enabled does not count.
            const bool up = CollectOnline(context, group, child, system, seen, wanted);
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
        wanted.push_back(resource.name);
    }
    return true;
}

bool CheckAllowed(Context& context, const std::string& why, const char* number) {
    if (why.empty()) {
        return true;
    }
    std::string sentence = why;
    sentence[0] = static_cast<char>(sentence[0] >= 'a' && sentence[0] <= 'z' ? sentence[0] - 'a' + 'A' : sentence[0]);
    context.output.Simulated(number, sentence);
    return false;
}

bool CheckSimulated(Context& context, const CfGroup& group) {
    const std::string what = WhyNotSimulated(context.cluster, group);
    if (!what.empty()) {
        context.output.Simulated("99061", "Not simulated: " + what);
    }
    return what.empty();
}

} // namespace vcssim
