// hares: the queries.
#include "Operations.h"
#include "Queries.h"

#include <algorithm>

namespace vcssim {

namespace {

Displayed DisplayedResource(const Cluster& cluster, const CfGroup& group, const CfBlock& resource) {
    return {resource.name, cluster.ResourceAttributes(resource),
            [&](const std::string& attribute) { return cluster.ResourceAttribute(group, resource, attribute); }};
}

void List(Context& context, Arguments& arguments) {
    const std::vector<Condition> conditions = TakeConditions(arguments);
    const Cluster& cluster = context.cluster;
    std::vector<ListRow> rows;
    for (const CfGroup& group : cluster.configuration.Groups()) {
        const std::vector<std::string> systems = cluster.SystemsOf(group);
        for (const CfBlock& resource : group.resources) {
            const auto lookUp = [&](const std::string& attribute) {
                return cluster.ResourceAttribute(group, resource, attribute);
            };
            for (const std::string& system : MatchingSystems(conditions, systems, lookUp)) {
                rows.push_back({resource.name, system});
            }
        }
    }
    if (rows.empty()) {
        NoMatch(context.output, "resource");
    }
    PrintList(context.output, rows);
}

void DisplayResources(Context& context, Arguments& arguments) {
    const DisplayRequest request = TakeDisplayRequest(arguments);
    const CfDocument& configuration = context.cluster.configuration;
    std::vector<Displayed> displayed;
    for (const std::string& name : request.names) {
        const CfBlock* const resource = configuration.ResourceNamed(name);
        if (!resource) {
            context.output.Simulated("40130", "Resource " + name + " does not exist in the local cluster");
            return;
        }
        displayed.push_back(DisplayedResource(context.cluster, *configuration.GroupOf(name), *resource));
    }
    if (request.names.empty()) {
        for (const CfGroup& group : configuration.Groups()) {
            for (const CfBlock& resource : group.resources) {
                displayed.push_back(DisplayedResource(context.cluster, group, resource));
            }
        }
    }
    if (displayed.empty()) {
        NoMatch(context.output, "resource");
        return;
    }
    Display(context.output, "Resource", displayed, request.attributes);
}

void ShowValue(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    const std::string attribute = arguments.Next();
    const std::string system = arguments.IsEmpty() ? "" : arguments.Next();
    arguments.NeedEnd();
    const CfBlock* const resource = context.cluster.configuration.ResourceNamed(name);
    if (!resource) {
        NoSuchResource(context.output, name);
        return;
    }
    const CfGroup& group = *context.cluster.configuration.GroupOf(name);
    for (const AttributeRow& row : context.cluster.ResourceAttribute(group, *resource, attribute)) {
        if (system.empty() || row.system == "global" || row.system == system) {
            context.output.Print(JoinedParts(row.parts) + "\n");
            return;
        }
    }
    context.output.Simulated("99011", "Attribute " + attribute + " does not exist");
}

void ShowDependencies(Context& context, Arguments& arguments) {
    const std::vector<std::string>& names = arguments.All();
    const CfDocument& configuration = context.cluster.configuration;
    for (const std::string& name : names) {
        if (!configuration.ResourceNamed(name)) {
            NoSuchResource(context.output, name);
            return;
        }
    }
    struct Row {
        std::string group;
        std::string parent;
        std::string child;
    };
    const auto isAsked = [&](const std::string& name) {
        return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
    };
    // Rows of the resource as a parent go first, and of these the link made last.
    std::vector<Row> rows;
    std::vector<Row> asChild;
    for (const CfGroup& group : configuration.Groups()) {
        for (std::size_t i = group.links.size(); i > 0; --i) {
            const CfLink& link = group.links[i - 1];
            if (isAsked(link.parent)) {
                rows.push_back({group.block.name, link.parent, link.child});
            } else if (isAsked(link.child)) {
                asChild.push_back({group.block.name, link.parent, link.child});
            }
        }
    }
    rows.insert(rows.end(), asChild.begin(), asChild.end());
    if (rows.empty()) {
        context.output.Warning("50034", "No Resource dependencies are configured");
        return;
    }
    rows.insert(rows.begin(), {"#Group", "Parent", "Child"});
    std::size_t groupWidth = 0;
    std::size_t parentWidth = 0;
    for (const Row& row : rows) {
        groupWidth = std::max(groupWidth, row.group.size());
        parentWidth = std::max(parentWidth, row.parent.size());
    }
    for (const Row& row : rows) {
        context.output.Print(Padded(row.group, groupWidth) + " " + Padded(row.parent, parentWidth) + " " + row.child +
                             "\n");
    }
}

void ShowState(Context& context, Arguments& arguments) {
    std::string system;
    const bool ofSystem = arguments.TakeValue("-sys", system);
    const std::string name = arguments.IsEmpty() ? "" : arguments.Next();
    arguments.NeedEnd();
    const Cluster& cluster = context.cluster;
    if (!name.empty() && !cluster.configuration.ResourceNamed(name)) {
        NoSuchResource(context.output, name);
        return;
    }
    if (ofSystem && !cluster.HasSystem(system)) {
        NoSuchSystem(context.output, "10200", system);
        return;
    }
    if (ofSystem && !name.empty()) {
        if (CheckSystem(context, *cluster.configuration.GroupOf(name), system)) {
            context.output.Print(cluster.ResourceState(*cluster.configuration.ResourceNamed(name), system) + "\n");
        }
        return;
    }
    std::vector<DisplayRow> rows;
    for (const CfGroup& group : cluster.configuration.Groups()) {
        for (const CfBlock& resource : group.resources) {
            if (!name.empty() && resource.name != name) {
                continue;
            }
            for (const AttributeRow& row : cluster.ResourceAttribute(group, resource, "State")) {
                if (!ofSystem || row.system == system) {
                    rows.push_back({resource.name, "State", row.system, row.parts});
                }
            }
        }
    }
    if (rows.empty()) {
        NoMatch(context.output, "resource");
        return;
    }
    PrintDisplay(context.output, "Resource", rows);
}

} // namespace

bool RunHaresQuery(Context& context, const std::string& command, Arguments& arguments) {
    if (command == "-list") {
        List(context, arguments);
    } else if (command == "-display") {
        DisplayResources(context, arguments);
    } else if (command == "-value") {
        ShowValue(context, arguments);
    } else if (command == "-dep") {
        ShowDependencies(context, arguments);
    } else if (command == "-state") {
        ShowState(context, arguments);
    } else {
        return false;
    }
    return true;
}

void RunHares(Context& context, Arguments arguments) {
    const std::string command = arguments.Next();
    if (RunHaresQuery(context, command, arguments)) {
        return;
    }
    if (command == "-online" || command == "-offline" || command == "-clear" || command == "-probe") {
        RunHaresControl(context, command, arguments);
    } else {
        RunHaresChange(context, command, arguments);
    }
}

} // namespace vcssim
