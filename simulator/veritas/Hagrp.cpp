// hagrp: the queries.
#include "Operations.h"
#include "Queries.h"

#include <algorithm>

namespace vcssim {

namespace {

bool HasGroups(Context& context) {
    if (context.cluster.configuration.Groups().empty()) {
        context.output.Warning("50031", "No Groups are configured");
        return false;
    }
    return true;
}

Displayed DisplayedGroup(const Cluster& cluster, const CfGroup& group) {
    return {group.block.name, cluster.GroupAttributes(group),
            [&](const std::string& attribute) { return cluster.GroupAttribute(group, attribute); }};
}

void List(Context& context, Arguments& arguments) {
    const std::vector<Condition> conditions = TakeConditions(arguments);
    if (!HasGroups(context)) {
        return;
    }
    std::vector<ListRow> rows;
    for (const CfGroup& group : context.cluster.configuration.Groups()) {
        for (const std::string& system : MatchingSystems(conditions, context.cluster.SystemsOf(group),
                                                         DisplayedGroup(context.cluster, group).lookUp)) {
            rows.push_back({group.block.name, system});
        }
    }
    if (rows.empty()) {
        NoMatch(context.output, "group");
    }
    PrintList(context.output, rows);
}

void DisplayGroups(Context& context, Arguments& arguments) {
    const DisplayRequest request = TakeDisplayRequest(arguments);
    std::vector<Displayed> displayed;
    for (const std::string& name : request.names) {
        const CfGroup* const group = context.cluster.configuration.GroupNamed(name);
        if (!group) {
            context.output.Warning("10133", "Group does not exist");
            return;
        }
        displayed.push_back(DisplayedGroup(context.cluster, *group));
    }
    if (request.names.empty()) {
        if (!HasGroups(context)) {
            return;
        }
        for (const CfGroup& group : context.cluster.configuration.Groups()) {
            displayed.push_back(DisplayedGroup(context.cluster, group));
        }
    }
    Display(context.output, "Group", displayed, request.attributes);
}

void StateOfSystem(Context& context, const std::string& system) {
    std::vector<DisplayRow> rows;
    for (const CfGroup& group : context.cluster.configuration.Groups()) {
        for (const AttributeRow& row : context.cluster.GroupAttribute(group, "State")) {
            if (row.system == system) {
                rows.push_back({group.block.name, "State", system, row.parts});
            }
        }
    }
    if (rows.empty()) {
        context.output.Warning("10554", "No group exists with system of " + system);
        return;
    }
    PrintDisplay(context.output, "Group", rows);
}

void ShowState(Context& context, Arguments& arguments) {
    std::string system;
    const bool ofSystem = arguments.TakeValue("-sys", system);
    const std::string name = arguments.IsEmpty() ? "" : arguments.Next();
    arguments.NeedEnd();
    if (ofSystem && !context.cluster.HasSystem(system)) {
        NoSuchSystem(context.output, "51051", system);
        return;
    }
    if (name.empty()) {
        if (!HasGroups(context)) {
            return;
        }
        if (ofSystem) {
            StateOfSystem(context, system);
            return;
        }
    }
    std::vector<Displayed> displayed;
    for (const CfGroup& group : context.cluster.configuration.Groups()) {
        if (name.empty() || group.block.name == name) {
            displayed.push_back(DisplayedGroup(context.cluster, group));
        }
    }
    if (displayed.empty()) {
        context.output.Warning("40131", "Group " + name + " does not exist in the local cluster");
    } else if (ofSystem) {
        const CfGroup& group = *context.cluster.configuration.GroupNamed(name);
        if (CheckSystem(context, group, system)) {
            context.output.Print(context.cluster.GroupState(group, system) + "\n");
        }
    } else {
        Display(context.output, "Group", displayed, {"State"});
    }
}

void ShowValue(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    const std::string attribute = arguments.Next();
    const std::string system = arguments.IsEmpty() ? "" : arguments.Next();
    arguments.NeedEnd();
    const CfGroup* const group = context.cluster.configuration.GroupNamed(name);
    if (!group) {
        context.output.Warning("10133", "Group does not exist");
        return;
    }
    for (const AttributeRow& row : context.cluster.GroupAttribute(*group, attribute)) {
        if (system.empty() || row.system == "global" || row.system == system) {
            context.output.Print(JoinedParts(row.parts) + "\n");
            return;
        }
    }
    context.output.Simulated("99011", "Attribute " + attribute + " does not exist");
}

void ShowDependencies(Context& context, Arguments& arguments) {
    const std::string name = arguments.IsEmpty() ? "" : arguments.Next();
    arguments.NeedEnd();
    if (!name.empty() && !context.cluster.configuration.GroupNamed(name)) {
        context.output.Warning("10133", "Group does not exist");
        return;
    }
    struct Row {
        std::string parent;
        std::string child;
        std::string relationship;
    };
    std::vector<Row> rows = {{"#Parent", "Child", "Relationship"}};
    for (const CfGroup& group : context.cluster.configuration.Groups()) {
        for (std::size_t i = 0; i < group.requires_.size(); ++i) {
            const CfLink& link = group.requires_[i];
            if (name.empty() || link.parent == name || link.child == name) {
                rows.push_back({link.parent, link.child, group.relationships[i]});
            }
        }
    }
    if (rows.size() == 1) {
        context.output.Warning("50035", "No Group dependencies are configured");
        return;
    }
    std::size_t parentWidth = 14;
    std::size_t childWidth = 15;
    for (const Row& row : rows) {
        parentWidth = std::max(parentWidth, row.parent.size());
        childWidth = std::max(childWidth, row.child.size());
    }
    for (const Row& row : rows) {
        context.output.Print(Padded(row.parent, parentWidth) + " " + Padded(row.child, childWidth) + " " +
                             row.relationship + "\n");
    }
}

} // namespace

void RunHagrp(Context& context, Arguments arguments) {
    const std::string command = arguments.Next();
    if (command == "-list") {
        List(context, arguments);
    } else if (command == "-display") {
        DisplayGroups(context, arguments);
    } else if (command == "-state") {
        ShowState(context, arguments);
    } else if (command == "-value") {
        ShowValue(context, arguments);
    } else if (command == "-dep") {
        ShowDependencies(context, arguments);
    } else if (command == "-add" || command == "-delete" || command == "-link" || command == "-unlink") {
        RunHagrpChange(context, command, arguments);
    } else {
        RunHagrpControl(context, command, arguments);
    }
}

} // namespace vcssim
