// haclus: the cluster's attributes and state.
#include "Tools.h"

#include <algorithm>

namespace vcssim {

namespace {

const CfBlock* ClusterBlock(const Context& context) {
    const std::vector<CfBlock>& clusters = context.cluster.configuration.Clusters();
    return clusters.empty() ? nullptr : &clusters.front();
}

std::string ClusterName(const Context& context) {
    const CfBlock* const block = ClusterBlock(context);
    return block ? block->name : "";
}

// RUNNING while a system is.
std::string ClusterState(const Context& context) {
    for (const std::string& system : context.cluster.Systems()) {
        const auto state = context.cluster.state.systems.find(system);
        if (state == context.cluster.state.systems.end() || state->second == "RUNNING") {
            return "RUNNING";
        }
    }
    return "EXITED";
}

struct Attribute {
    std::string name;
    std::string value;
};

// All there are, by name: those of the configuration, and the others with their defaults.
std::vector<Attribute> Attributes(const Context& context) {
    std::vector<Attribute> attributes = {{"AdministratorGroups", ""},
                                         {"Administrators", ""},
                                         {"AutoAddSystemToCSG", "1"},
                                         {"AutoStartTimeout", "150"},
                                         {"BackupInterval", "0"},
                                         {"ClusState", ClusterState(context)},
                                         {"ClusterAddress", ""},
                                         {"ClusterLocation", ""},
                                         {"ClusterName", ClusterName(context)},
                                         {"DumpingMembership", "0"},
                                         {"ReadOnly", context.cluster.state.writable ? "0" : "1"},
                                         {"UserNames", ""}};
    const CfBlock* const block = ClusterBlock(context);
    for (std::size_t i = 0; block && i < block->attributes.size(); ++i) {
        const std::string& name = block->attributes[i].name;
        const auto known = std::find_if(attributes.begin(), attributes.end(),
                                        [&](const Attribute& attribute) { return attribute.name == name; });
        const std::string value = JoinedParts(block->attributes[i].value.Flat());
        if (known == attributes.end()) {
            attributes.push_back({name, value});
        } else {
            known->value = value;
        }
    }
    std::sort(attributes.begin(), attributes.end(),
              [](const Attribute& a, const Attribute& b) { return a.name < b.name; });
    return attributes;
}

void Display(Context& context) {
    const std::vector<Attribute> attributes = Attributes(context);
    std::size_t width = 24;
    for (const Attribute& attribute : attributes) {
        width = std::max(width, attribute.name.size());
    }
    context.output.Print(Padded("#Attribute", width) + " Value\n");
    for (const Attribute& attribute : attributes) {
        std::string line = Padded(attribute.name, width) + " " + attribute.value;
        if (context.output.Switches().bareEmptyValues) {
            line.erase(line.find_last_not_of(" \t") + 1);
        }
        context.output.Print(line + "\n");
    }
}

void ShowState(Context& context, Arguments& arguments) {
    const std::string name = arguments.IsEmpty() ? "" : arguments.Next();
    arguments.NeedEnd();
    if (!name.empty() && name != ClusterName(context)) {
        context.output.Simulated("99066", "Cluster " + name + " does not exist");
    } else if (!name.empty() || context.output.Switches().bareClusterState) {
        context.output.Print(ClusterState(context) + "\n");
    } else {
        const auto row = [](const std::string& cluster, const char* attribute, const std::string& value) {
            return Padded(cluster, 12) + " " + Padded(attribute, 21) + " " + value + "\n";
        };
        context.output.Print(row("#Cluster", "Attribute", "Value") +
                             row(ClusterName(context), "ClusState", ClusterState(context)));
    }
}

// False after a message.
bool FindValue(Context& context, const std::string& name, std::string& value) {
    for (const Attribute& attribute : Attributes(context)) {
        if (attribute.name == name) {
            value = attribute.value;
            return true;
        }
    }
    context.output.Simulated("99011", "Attribute " + name + " does not exist");
    return false;
}

void ShowValue(Context& context, Arguments& arguments) {
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    std::string value;
    if (FindValue(context, name, value)) {
        context.output.Print(value + "\n");
    }
}

// No other tool can run meanwhile, so that waiting would change nothing.
void Wait(Context& context, Arguments& arguments) {
    std::string seconds;
    if (arguments.TakeValue("-time", seconds) && !IsCfNumber(seconds)) {
        throw UsageError();
    }
    const std::string name = arguments.Next();
    const std::string wanted = arguments.Next();
    arguments.NeedEnd();
    std::string value;
    if (FindValue(context, name, value) && value != wanted) {
        context.output.Warning("10805", "Connection timed out");
    }
}

} // namespace

void RunHaclus(Context& context, Arguments arguments) {
    const std::string command = arguments.Next();
    arguments.TakeFlag("-localclus");
    if (command == "-display") {
        arguments.NeedEnd();
        Display(context);
    } else if (command == "-state") {
        ShowState(context, arguments);
    } else if (command == "-value") {
        ShowValue(context, arguments);
    } else if (command == "-wait") {
        Wait(context, arguments);
    } else {
        throw UsageError();
    }
}

} // namespace vcssim
