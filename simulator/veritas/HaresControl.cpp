// hares: -online, -offline, -clear, -probe.
#include "Operations.h"

namespace vcssim {

namespace {

struct Target {
    const CfGroup& group;
    const CfBlock& resource;
};

void Online(Context& context, const Target& target, const std::string& system) {
    if (context.cluster.IsPersistent(target.resource)) {
        context.output.Simulated("99050", "Resource " + target.resource.name + " is persistent");
        return;
    }
    if (!CheckNotOnlineElsewhere(context, target.group, system, true)) {
        return;
    }
    if (!context.cluster.IsFlagSet(target.group, target.resource, "Enabled", system)) {
        context.output.Simulated("99051", "Resource " + target.resource.name + " is not enabled");
        return;
    }
    std::set<std::string> seen;
    BringOnline(context, target.group, target.resource, system, seen);
}

void Offline(Context& context, const Target& target, const std::string& system, bool ignoresParents) {
    Cluster& cluster = context.cluster;
    if (cluster.IsPersistent(target.resource)) {
        context.output.Simulated("99050", "Resource " + target.resource.name + " is persistent");
        return;
    }
    for (const CfLink& link : target.group.links) {
        if (!ignoresParents && link.child == target.resource.name &&
            IsOnline(cluster, *cluster.configuration.ResourceNamed(link.parent), system)) {
            context.output.Simulated("99052", "Resource " + target.resource.name + " is required by " + link.parent +
                                                  ", which is online on system " + system);
            return;
        }
    }
    if (!IsFaulted(cluster, target.resource, system)) {
        cluster.state.resources[target.resource.name][system] = "OFFLINE";
    }
}

void Clear(Context& context, const Target& target, const std::vector<std::string>& systems) {
    bool cleared = false;
    for (const std::string& system : systems) {
        if (IsFaulted(context.cluster, target.resource, system)) {
            context.cluster.state.resources[target.resource.name][system] = "OFFLINE";
            cleared = true;
        }
    }
    if (!cleared) {
        context.output.Warning("10267", "Resource not faulted or group in the process of failing over");
    }
}

} // namespace

void RunHaresControl(Context& context, const std::string& command, Arguments& arguments) {
    std::string system;
    const bool ignoresParents = command == "-offline" && arguments.TakeFlag("-ignoreparent");
    const bool ofSystem = arguments.TakeValue("-sys", system);
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    if (!ofSystem && command != "-clear") {
        throw UsageError();
    }
    const CfDocument& configuration = context.cluster.configuration;
    const CfBlock* const resource = configuration.ResourceNamed(name);
    if (!resource) {
        NoSuchResource(context.output, name);
        return;
    }
    const Target target = {*configuration.GroupOf(name), *resource};
    if (ofSystem && !CheckSystem(context, target.group, system)) {
        return;
    }
    if (command == "-online") {
        Online(context, target, system);
    } else if (command == "-offline") {
        Offline(context, target, system, ignoresParents);
    } else if (command == "-clear") {
        Clear(context, target, ofSystem ? std::vector<std::string>{system} : context.cluster.SystemsOf(target.group));
    } else {
        context.cluster.state.probed[name].insert(system);
    }
}

} // namespace vcssim
