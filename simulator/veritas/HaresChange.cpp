// hares: -add, -delete, -link, -unlink, and the way to -modify, -local and -global.
#include "Modify.h"

#include <set>

namespace vcssim {

namespace {

void Add(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    const std::string type = arguments.Next();
    const std::string group = arguments.Next();
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    CfDocument& configuration = context.cluster.configuration;
    if (!IsCfName(name)) {
        context.output.Simulated("99020", "'" + name + "' is no name for a resource");
    } else if (configuration.ResourceNamed(name)) {
        context.output.Simulated("99021", "Resource " + name + " exists already");
    } else if (!IsCfName(type) || !context.cluster.types.Find(type)) {
        context.output.Simulated("99022", "Type " + type + " does not exist");
    } else if (!configuration.GroupNamed(group)) {
        context.output.Warning("10133", "Group does not exist");
    } else if (context.output.Switches().refusesRegistration) {
        context.output.Simulated("10806", "Resource " + name + " cannot be registered");
    } else {
        configuration.AddResource(group, type, name);
        configuration.SetAttribute(name, "Enabled", "", "0");
        context.cluster.state.Forget(name);
        context.output.Notice("10242", "Resource added. Enabled attribute must be set before agent monitors");
    }
}

void Delete(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    if (!context.cluster.configuration.ResourceNamed(name)) {
        NoSuchResource(context.output, name);
        return;
    }
    context.cluster.configuration.RemoveResource(name);
    context.cluster.state.Forget(name);
}

// Whether `resource` needs `wanted`, directly or through others.
bool Requires(const CfGroup& group, const std::string& resource, const std::string& wanted,
              std::set<std::string>& seen) {
    if (resource == wanted) {
        return true;
    }
    if (!seen.insert(resource).second) {
        return false;
    }
    for (const CfLink& link : group.links) {
        if (link.parent == resource && Requires(group, link.child, wanted, seen)) {
            return true;
        }
    }
    return false;
}

bool IsLinked(const CfGroup& group, const std::string& parent, const std::string& child) {
    for (const CfLink& link : group.links) {
        if (link.parent == parent && link.child == child) {
            return true;
        }
    }
    return false;
}

void Link(Context& context, const std::string& parent, const std::string& child) {
    CfDocument& configuration = context.cluster.configuration;
    const CfGroup& group = *configuration.GroupOf(parent);
    std::set<std::string> seen;
    if (configuration.GroupOf(child) != &group) {
        context.output.Simulated("99030", "Resources " + parent + " and " + child + " are not in the same group");
    } else if (IsLinked(group, parent, child)) {
        context.output.Simulated("99031", "Dependency between '" + parent + "' and '" + child + "' already exists");
    } else if (Requires(group, child, parent, seen)) {
        context.output.Simulated("99032", "Dependency between '" + parent + "' and '" + child + "' would make a loop");
    } else if (context.cluster.IsPersistent(*configuration.ResourceNamed(parent))) {
        context.output.Simulated("99033", "Resource " + parent + " is persistent and cannot require others");
    } else {
        configuration.AddLink(parent, child);
    }
}

void LinkOrUnlink(Context& context, const std::string& command, Arguments& arguments) {
    const std::string parent = arguments.Next();
    const std::string child = arguments.Next();
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    CfDocument& configuration = context.cluster.configuration;
    for (const std::string& name : {parent, child}) {
        if (!configuration.ResourceNamed(name)) {
            NoSuchResource(context.output, name);
            return;
        }
    }
    if (command == "-link") {
        Link(context, parent, child);
    } else if (IsLinked(*configuration.GroupOf(parent), parent, child)) {
        configuration.RemoveLink(parent, child);
    } else {
        context.output.Simulated("99034", "There is no dependency between '" + parent + "' and '" + child + "'");
    }
}

void Override(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    const std::string attribute = arguments.Next();
    arguments.NeedEnd();
    if (!CheckWritable(context)) {
        return;
    }
    const CfBlock* const resource = context.cluster.configuration.ResourceNamed(name);
    if (!resource) {
        NoSuchResource(context.output, name);
        return;
    }
    const ResourceType* const type = context.cluster.types.Find(resource->keyword);
    if (type && (type->statics.count(attribute) != 0 || type->staticLists.count(attribute) != 0)) {
        context.output.Simulated("99061", "Not simulated: hares -override of a static attribute");
    } else {
        context.output.Warning("13322", attribute + " is not a static attribute");
    }
}

} // namespace

void RunHaresChange(Context& context, const std::string& command, Arguments& arguments) {
    if (command == "-add") {
        Add(context, arguments);
    } else if (command == "-delete") {
        Delete(context, arguments);
    } else if (command == "-link" || command == "-unlink") {
        LinkOrUnlink(context, command, arguments);
    } else if (command == "-override") {
        Override(context, arguments);
    } else if (command == "-modify" || command == "-local" || command == "-global") {
        const ModifyRequest request =
            command == "-modify" ? TakeModifyRequest(arguments) : TakeScopeRequest(command, arguments);
        if (CheckWritable(context)) {
            Modify(context, request);
        }
    } else {
        throw UsageError();
    }
}

} // namespace vcssim
