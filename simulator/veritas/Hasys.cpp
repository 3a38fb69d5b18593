// hasys: the queries, -freeze, -unfreeze.
#include "ClusterEngine.h"
#include "Queries.h"

#include <algorithm>

namespace vcssim {

namespace {

std::vector<Displayed> DisplayedSystems(const Cluster& cluster, const std::vector<std::string>& names) {
    std::vector<Displayed> displayed;
    for (const CfBlock& system : cluster.configuration.Systems()) {
        if (names.empty() || std::find(names.begin(), names.end(), system.name) != names.end()) {
            displayed.push_back({system.name, cluster.SystemAttributes(system), [&](const std::string& attribute) {
                                     return cluster.SystemAttribute(system, attribute);
                                 }});
        }
    }
    return displayed;
}

bool CheckSystems(Context& context, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!context.cluster.HasSystem(name)) {
            NoSuchSystem(context.output, "10357", name);
            return false;
        }
    }
    return true;
}

void List(Context& context, Arguments& arguments) {
    const std::vector<Condition> conditions = TakeConditions(arguments);
    bool any = false;
    for (const Displayed& system : DisplayedSystems(context.cluster, {})) {
        if (!MatchingSystems(conditions, {system.name}, system.lookUp).empty()) {
            context.output.Print(system.name + "\n");
            any = true;
        }
    }
    if (!any) {
        NoMatch(context.output, "system");
    }
}

const CfBlock& SystemNamed(const Cluster& cluster, const std::string& name) {
    const std::vector<CfBlock>& systems = cluster.configuration.Systems();
    return *std::find_if(systems.begin(), systems.end(), [&](const CfBlock& system) { return system.name == name; });
}

void FreezePersistently(Context& context, const CfBlock& system, bool freezes) {
    const CfAttribute* const frozen = system.Find("Frozen", "");
    const bool isFrozen = frozen && frozen->value.text == "1";
    if (!CheckWritable(context)) {
        return;
    }
    if (freezes != isFrozen) {
        context.cluster.configuration.SetSystemAttribute(std::string(system.name), "Frozen", freezes ? "1" : "0");
    } else if (freezes) {
        context.output.Simulated("99064", "System is already persistently frozen");
    } else {
        context.output.Warning("40205", "System is not persistently frozen");
    }
}

void Freeze(Context& context, bool freezes, Arguments& arguments) {
    const bool isPersistent = arguments.TakeFlag("-persistent");
    const bool evacuates = freezes && arguments.TakeFlag("-evacuate");
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    if (!CheckSystems(context, {name})) {
        return;
    }
    Cluster& cluster = context.cluster;
    const bool wasFrozen = cluster.IsFrozen(SystemNamed(cluster, name));
    if (isPersistent) {
        FreezePersistently(context, SystemNamed(cluster, name), freezes);
    } else if (freezes) {
        cluster.state.progress.frozenSystems.insert(name);
    } else if (cluster.state.progress.frozenSystems.erase(name) == 0) {
        context.output.Simulated("99065", "System " + name + " is not frozen");
    }
    if (context.output.ExitCode() == 0 && (cluster.IsFrozen(SystemNamed(cluster, name)) != wasFrozen || evacuates)) {
        ClusterEngine engine(cluster, context.output.Switches());
        engine.Control().FreezeSystem(engine.System(name), freezes, evacuates);
        engine.Store();
    }
}

void ShowValue(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    const std::string attribute = arguments.Next();
    arguments.NeedEnd();
    if (!CheckSystems(context, {name})) {
        return;
    }
    const std::vector<AttributeRow> rows = DisplayedSystems(context.cluster, {name}).front().lookUp(attribute);
    if (rows.empty()) {
        context.output.Simulated("99011", "Attribute " + attribute + " does not exist");
        return;
    }
    context.output.Print(JoinedParts(rows.front().parts) + "\n");
}

} // namespace

void RunHasys(Context& context, Arguments arguments) {
    const std::string command = arguments.Next();
    if (command == "-list") {
        List(context, arguments);
    } else if (command == "-display") {
        const DisplayRequest request = TakeDisplayRequest(arguments);
        if (CheckSystems(context, request.names)) {
            Display(context.output, "System", DisplayedSystems(context.cluster, request.names), request.attributes);
        }
    } else if (command == "-state") {
        const std::vector<std::string> names =
            arguments.IsEmpty() ? std::vector<std::string>() : std::vector<std::string>{arguments.Next()};
        arguments.NeedEnd();
        if (!CheckSystems(context, names)) {
            return;
        }
        const std::vector<Displayed> systems = DisplayedSystems(context.cluster, names);
        if (names.empty()) {
            Display(context.output, "System", systems, {"SysState"});
        } else {
            context.output.Print(systems.front().lookUp("SysState").front().parts.front() + "\n");
        }
    } else if (command == "-value") {
        ShowValue(context, arguments);
    } else if (command == "-freeze" || command == "-unfreeze") {
        Freeze(context, command == "-freeze", arguments);
    } else {
        throw UsageError();
    }
}

} // namespace vcssim
