// hagrp: -add, -delete, -link, -unlink.
#include "Tools.h"

#include <algorithm>
#include <initializer_list>
#include <set>

namespace vcssim {

namespace {

bool IsOneOf(const std::string& word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(), [&](const char* known) { return word == known; });
}

void Add(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    CfDocument& configuration = context.cluster.configuration;
    if (!IsCfName(name)) {
        context.output.Simulated("99023", "'" + name + "' is no name for a group");
    } else if (configuration.GroupNamed(name)) {
        context.output.Simulated("99024", "Group " + name + " exists already");
    } else {
        configuration.AddGroup(name);
        context.output.Notice("10136", "Group added; populating SystemList and setting the Parallel attribute "
                                       "recommended before adding resources");
    }
}

// What stands in the way of deleting a group has no source: the simulator deletes only what nothing is lost with.
void Delete(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    CfDocument& configuration = context.cluster.configuration;
    const CfGroup* const group = configuration.GroupNamed(name);
    if (!group) {
        context.output.Simulated("12130", "Group " + name + " does not exist in the local cluster");
        return;
    }
    if (!group->resources.empty()) {
        context.output.Simulated("99071", "Group " + name + " has resources");
        return;
    }
    for (const CfGroup& other : configuration.Groups()) {
        for (const CfLink& link : other.requires_) {
            if (link.parent == name || link.child == name) {
                context.output.Simulated("99072", "Group " + name + " has a dependency with group " +
                                                      (link.parent == name ? link.child : link.parent));
                return;
            }
        }
    }
    configuration.RemoveGroup(name);
    context.cluster.state.ForgetGroup(name);
}

bool DependsOn(const CfGroup& group, const std::string& child) {
    return std::any_of(group.requires_.begin(), group.requires_.end(),
                       [&](const CfLink& link) { return link.child == child; });
}

// Whether the group, or one that it depends on, is `wanted`.
bool Reaches(const CfDocument& configuration, const std::string& group, const std::string& wanted,
             std::set<std::string>& seen) {
    if (group == wanted) {
        return true;
    }
    const CfGroup* const known = seen.insert(group).second ? configuration.GroupNamed(group) : nullptr;
    return known && std::any_of(known->requires_.begin(), known->requires_.end(),
                                [&](const CfLink& link) { return Reaches(configuration, link.child, wanted, seen); });
}

void LinkOrUnlink(Context& context, const std::string& command, Arguments& arguments) {
    const std::string parent = arguments.Next();
    const std::string child = arguments.Next();
    std::string relationship;
    if (command == "-link") {
        const std::string category = arguments.Next();
        const std::string location = arguments.Next();
        const std::string rigidity = arguments.IsEmpty() ? "firm" : arguments.Next();
        if (!IsOneOf(category, {"online", "offline"}) || !IsOneOf(location, {"local", "global", "remote"}) ||
            !IsOneOf(rigidity, {"soft", "firm", "hard"})) {
            throw UsageError();
        }
        relationship = category + " " + location + (category == "online" ? " " + rigidity : std::string());
    }
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    CfDocument& configuration = context.cluster.configuration;
    const CfGroup* const group = configuration.GroupNamed(parent);
    if (!group || !configuration.GroupNamed(child)) {
        context.output.Warning("10133", "Group does not exist");
        return;
    }
    std::set<std::string> seen;
    if (command == "-unlink") {
        if (DependsOn(*group, child)) {
            configuration.RemoveGroupLink(parent, child);
        } else {
            context.output.Simulated("10146", "There is no dependency between '" + parent + "' and '" + child + "'");
        }
    } else if (DependsOn(*group, child)) {
        context.output.Warning("10905", "Dependency between '" + parent + "' and '" + child + "' already exists");
    } else if (Reaches(configuration, child, parent, seen)) {
        context.output.Simulated("99035", "Dependency between '" + parent + "' and '" + child + "' would make a loop");
    } else {
        configuration.AddGroupLink(parent, child, relationship);
    }
}

} // namespace

void RunHagrpChange(Context& context, const std::string& command, Arguments& arguments) {
    if (command == "-add") {
        Add(context, arguments);
    } else if (command == "-delete") {
        Delete(context, arguments);
    } else {
        LinkOrUnlink(context, command, arguments);
    }
}

} // namespace vcssim
