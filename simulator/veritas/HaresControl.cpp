// hares: -online, -offline, -clear, -probe.
#include "ClusterEngine.h"
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
    ClusterEngine engine(context.cluster, context.output.Switches());
    const std::size_t group = engine.Group(target.group.block.name);
    const std::size_t place = engine.System(system);
    if (!CheckAllowed(context, engine.Control().WhyNotOnline(group, place))) {
        return;
    }
    std::set<std::string> seen;
    std::vector<std::string> wanted;
    CollectOnline(context, target.group, target.resource, system, seen, wanted);
    std::vector<std::size_t> resources;
    resources.reserve(wanted.size());
    for (const std::string& name : wanted) {
        resources.push_back(engine.Resource(group, name));
    }
    engine.Control().BringOnline(group, resources, place);
    engine.Store();
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
    ClusterEngine engine(cluster, context.output.Switches());
    const std::size_t group = engine.Group(target.group.block.name);
    if (!CheckAllowed(context,
                      cluster.IsFrozen(target.group) ? "group " + target.group.block.name + " is frozen" : "")) {
        return;
    }
    engine.Control().TakeOffline(group, engine.Resource(group, target.resource.name), engine.System(system));
    engine.Store();
    if (!IsFaulted(cluster, target.resource, system) &&
        cluster.state.progress.TransitionOf(target.resource.name, system) == ResourceStatus::Still) {
        cluster.state.resources[target.resource.name][system] = "OFFLINE";
    }
}

void Clear(Context& context, const Target& target, const std::vector<std::string>& systems) {
    ClusterEngine engine(context.cluster, context.output.Switches());
    const std::size_t group = engine.Group(target.group.block.name);
    bool cleared = false;
    for (const std::string& system : systems) {
        if (IsFaulted(context.cluster, target.resource, system)) {
            engine.Control().Clear(group, engine.Resource(group, target.resource.name), engine.System(system));
            cleared = true;
        }
    }
    engine.Store();
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
