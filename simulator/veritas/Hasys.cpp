// hasys: the queries.
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
    } else {
        throw UsageError();
    }
}

} // namespace vcssim
