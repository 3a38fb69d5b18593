// hagrp: -online, -offline, -switch, -clear, -freeze, -unfreeze.
#include "ClusterEngine.h"
#include "Operations.h"

#include <algorithm>

namespace vcssim {

namespace {

const CfGroup* GroupToControl(Context& context, const std::string& name) {
    const CfGroup* const group = context.cluster.configuration.GroupNamed(name);
    if (!group) {
        context.output.Simulated("12130", "Group " + name + " does not exist in the local cluster");
    }
    return group;
}

// Which of the numbers stands for which of these is not known.
bool CheckNotOnline(Context& context, const CfGroup& group, const std::string& system) {
    const std::string subject = "Group " + group.block.name + " is ";
    const std::string state = context.cluster.GroupState(group, system);
    if (state == "ONLINE") {
        context.output.Simulated("50735", subject + "online on system " + system + " already");
        return false;
    }
    if (state.find("STARTING") != std::string::npos) {
        context.output.Simulated("50996", subject + "being brought online on system " + system + " already");
        return false;
    }
    const std::vector<std::string> systems = context.cluster.SystemsOf(group);
    const auto other = std::find_if(systems.begin(), systems.end(), [&](const std::string& place) {
        return place != system && context.cluster.GroupState(group, place) == "PARTIAL";
    });
    if (other == systems.end() || context.cluster.IsParallel(group)) {
        return true;
    }
    context.output.Simulated("50997", subject + "partially online on system " + *other);
    return false;
}

void Online(Context& context, const CfGroup& group, const std::string& system) {
    if (!context.cluster.IsFrozen(group) && !CheckNotOnline(context, group, system)) {
        return;
    }
    if (!CheckNotOnlineElsewhere(context, group, system, false) || !CheckSimulated(context, group)) {
        return;
    }
    ClusterEngine engine(context.cluster, context.output.Switches());
    const std::size_t number = engine.Group(group.block.name);
    if (!CheckAllowed(context, engine.Control().WhyNotOnline(number, engine.System(system)))) {
        return;
    }
    std::set<std::string> seen;
    std::vector<std::string> wanted;
    for (const CfBlock& resource : group.resources) {
        if (context.cluster.IsFlagSet(group, resource, "AutoStart", system)) {
            CollectOnline(context, group, resource, system, seen, wanted); // for its notices
        }
    }
    engine.Control().Online(number, engine.System(system));
    engine.Store();
}

void Offline(Context& context, const CfGroup& group, const std::string& system) {
    ClusterEngine engine(context.cluster, context.output.Switches());
    const std::size_t number = engine.Group(group.block.name);
    if (!CheckAllowed(context, engine.Control().Offline(number, engine.System(system)))) {
        return;
    }
    engine.Store();
    Cluster& cluster = context.cluster;
    for (const CfBlock& resource : group.resources) {
        if (!cluster.IsPersistent(resource) && !IsFaulted(cluster, resource, system) &&
            cluster.state.progress.TransitionOf(resource.name, system) == ResourceStatus::Still) {
            cluster.state.resources[resource.name][system] = "OFFLINE";
        }
    }
}

void OnlineOrOffline(Context& context, const std::string& command, Arguments& arguments) {
    const std::string name = arguments.Next();
    std::string system;
    if (!arguments.TakeValue("-sys", system)) {
        throw UsageError();
    }
    arguments.NeedEnd();
    const CfGroup* const group = GroupToControl(context, name);
    if (!group || !CheckSystem(context, *group, system)) {
        return;
    }
    if (command == "-online") {
        Online(context, *group, system);
    } else {
        Offline(context, *group, system);
    }
    if (context.output.ExitCode() != 0) {
        return;
    }
    // From now on the state follows from the resources.
    State& state = context.cluster.state;
    const auto given = state.groups.find(name);
    if (given != state.groups.end()) {
        given->second.erase(system);
    }
}

void Switch(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    std::string system;
    const bool any = arguments.TakeFlag("-any");
    const bool isNamed = arguments.TakeValue("-to", system);
    if (any == isNamed) {
        throw UsageError();
    }
    arguments.NeedEnd();
    const CfGroup* const group = GroupToControl(context, name);
    if (!group || (!any && !CheckSystem(context, *group, system)) || !CheckSimulated(context, *group)) {
        return;
    }
    if (context.cluster.SystemsOf(*group).empty()) {
        context.output.Simulated("50837", "The SystemList of group " + name + " is empty");
        return;
    }
    const Cluster& cluster = context.cluster;
    const bool isThere = !any && !cluster.IsParallel(*group) && !cluster.IsFrozen(*group) &&
                         cluster.GroupState(*group, system) == "ONLINE";
    ClusterEngine engine(context.cluster, context.output.Switches());
    const std::size_t to = any ? NoPlace : engine.System(system);
    if (CheckAllowed(context, engine.Control().Switch(engine.Group(name), to), isThere ? "10192" : "51055")) {
        engine.Store();
    }
}

void Clear(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    std::string system;
    const bool ofSystem = arguments.TakeValue("-sys", system);
    arguments.NeedEnd();
    const CfGroup* const group = GroupToControl(context, name);
    if (!group || (ofSystem && !CheckSystem(context, *group, system))) {
        return;
    }
    ClusterEngine engine(context.cluster, context.output.Switches());
    const std::size_t number = engine.Group(name);
    bool cleared = false;
    for (const CfBlock& resource : group->resources) {
        for (const std::string& place : context.cluster.SystemsOf(*group)) {
            if ((!ofSystem || place == system) && !context.cluster.IsPersistent(resource) &&
                IsFaulted(context.cluster, resource, place)) {
                engine.Control().Clear(number, engine.Resource(number, resource.name), engine.System(place));
                cleared = true;
            }
        }
    }
    engine.Store();
    if (!cleared) {
        context.output.Simulated("99062", "Group " + name + " is not faulted");
    }
}

void FreezePersistently(Context& context, const CfGroup& group, bool freezes) {
    const CfAttribute* const frozen = group.block.Find("Frozen", "");
    const bool isFrozen = frozen && frozen->value.text == "1";
    if (!CheckWritable(context)) {
        return;
    }
    if (freezes == isFrozen) {
        if (freezes) {
            context.output.Warning("40209", "Group is already persistently frozen");
        } else {
            context.output.Warning("40202", "Group is not persistently frozen");
        }
        return;
    }
    const std::string name = group.block.name;
    context.cluster.configuration.SetGroupAttribute(name, "Frozen", freezes ? "1" : "0");
}

void Freeze(Context& context, bool freezes, Arguments& arguments) {
    const bool isPersistent = arguments.TakeFlag("-persistent");
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    const CfGroup* const group = GroupToControl(context, name);
    if (!group) {
        return;
    }
    const bool wasFrozen = context.cluster.IsFrozen(*group);
    auto& frozen = context.cluster.state.progress.frozenGroups;
    if (isPersistent) {
        FreezePersistently(context, *group, freezes);
    } else if (freezes) {
        frozen.insert(name);
    } else if (frozen.erase(name) == 0) {
        context.output.Simulated("99063", "Group " + name + " is not frozen");
    }
    // The engine is told what has changed, as it may have waited for that.
    const bool isFrozen = context.cluster.IsFrozen(*context.cluster.configuration.GroupNamed(name));
    if (isFrozen != wasFrozen) {
        ClusterEngine engine(context.cluster, context.output.Switches());
        engine.Control().FreezeGroup(engine.Group(name), isFrozen);
        engine.Store();
    }
}

} // namespace

void RunHagrpControl(Context& context, const std::string& command, Arguments& arguments) {
    if (command == "-online" || command == "-offline") {
        OnlineOrOffline(context, command, arguments);
    } else if (command == "-switch") {
        Switch(context, arguments);
    } else if (command == "-clear") {
        Clear(context, arguments);
    } else if (command == "-freeze" || command == "-unfreeze") {
        Freeze(context, command == "-freeze", arguments);
    } else if (command == "-modify") {
        RunHagrpModify(context, arguments);
    } else {
        throw UsageError();
    }
}

} // namespace vcssim
