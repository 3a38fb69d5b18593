#include "EngineInput.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>

namespace vcssim {

namespace {

const long MostOfANumber = 1000000;

// The value on a system, or on all of them; null when the configuration has none.
const CfValue* ValueOf(const CfBlock& block, const char* attribute, const std::string& system = "") {
    const CfAttribute* found = system.empty() ? nullptr : block.Find(attribute, system);
    if (!found) {
        found = block.Find(attribute, "");
    }
    return found ? &found->value : nullptr;
}

// What is no number counts as 0. No sum of the numbers of a cluster leaves an int.
int NumberIn(const std::string& text) {
    return static_cast<int>(std::clamp(std::strtol(text.c_str(), nullptr, 10), -MostOfANumber, MostOfANumber));
}

int NumberOf(const CfValue* value, int standard) {
    return value ? NumberIn(value->text) : standard;
}

int NumberOf(const CfBlock& block, const char* attribute, int standard) {
    return NumberOf(ValueOf(block, attribute), standard);
}

bool IsSet(const CfBlock& block, const char* attribute, const std::string& system) {
    const CfValue* const value = ValueOf(block, attribute, system);
    return !value || (value->text != "0" && !value->text.empty()); // 1 is the default of all that are asked for
}

std::map<std::string, int> NumbersOf(const CfBlock& block, const char* attribute) {
    std::map<std::string, int> numbers;
    if (const CfValue* const value = ValueOf(block, attribute)) {
        for (const CfElement& element : value->elements) {
            numbers[element.key] = NumberOf(&element.value, 0);
        }
    }
    return numbers;
}

template <typename List> std::size_t PlaceIn(const List& list, const std::string& name) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].name == name) {
            return i;
        }
    }
    return NoPlace;
}

// An attribute of the type that a resource may override.
int StaticOf(const Cluster& cluster, const CfBlock& resource, const char* attribute, int standard) {
    if (const CfValue* const own = ValueOf(resource, attribute)) {
        return NumberOf(own, standard);
    }
    const ResourceType* const type = cluster.types.Find(resource.keyword);
    if (type && type->statics.count(attribute) != 0) {
        return NumberIn(type->statics.at(attribute));
    }
    return standard;
}

TransitionTimes TimesOf(const Cluster& cluster, const CfBlock& resource) {
    const auto& times = cluster.state.progress.times;
    for (const std::string& name : {resource.name, resource.keyword, std::string("*")}) {
        const auto found = times.find(name);
        if (found != times.end()) {
            return found->second;
        }
    }
    return {};
}

ResourceModel MakeResource(const Cluster& cluster, const CfBlock& resource) {
    ResourceModel model;
    model.name = resource.name;
    model.persistent = cluster.IsPersistent(resource);
    model.critical = IsSet(resource, "Critical", "");
    const auto failing = cluster.state.failing.find(resource.name);
    for (const CfBlock& system : cluster.configuration.Systems()) {
        model.enabled.push_back(IsSet(resource, "Enabled", system.name));
        model.autoStart.push_back(IsSet(resource, "AutoStart", system.name));
        model.failing.push_back(failing != cluster.state.failing.end() && failing->second.count(system.name) != 0);
    }
    const TransitionTimes times = TimesOf(cluster, resource);
    model.onlineTime = times.online;
    model.offlineTime = times.offline;
    model.onlineTimeout = std::max(0, StaticOf(cluster, resource, "OnlineTimeout", 300));
    model.offlineTimeout = std::max(0, StaticOf(cluster, resource, "OfflineTimeout", 300));
    model.onlineRetryLimit = StaticOf(cluster, resource, "OnlineRetryLimit", 0);
    model.restartLimit = StaticOf(cluster, resource, "RestartLimit", 0);
    model.confInterval = StaticOf(cluster, resource, "ConfInterval", 600);
    return model;
}

bool Reaches(const std::vector<ResourceModel>& resources, std::size_t from, std::size_t to) {
    std::vector<bool> seen(resources.size(), false);
    std::vector<std::size_t> open = {from};
    while (!open.empty()) {
        const std::size_t next = open.back();
        open.pop_back();
        if (next == to) {
            return true;
        }
        if (!seen[next]) {
            seen[next] = true;
            open.insert(open.end(), resources[next].parents.begin(), resources[next].parents.end());
        }
    }
    return false;
}

// Links that close a loop keep resources from going online, but not from going offline.
void LinkResources(const CfGroup& group, std::vector<ResourceModel>& resources) {
    std::map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < resources.size(); ++i) {
        places[resources[i].name] = i;
    }
    for (const CfLink& link : group.links) {
        const std::size_t parent = places.at(link.parent);
        const std::size_t child = places.at(link.child);
        resources[parent].children.push_back(child);
        if (!Reaches(resources, parent, child)) {
            resources[child].parents.push_back(parent);
        }
    }
}

// Systems without a priority have that of the system before them and 1 more.
std::vector<GroupPlace> PlacesOf(const CfGroup& group, const std::vector<SystemModel>& systems) {
    std::vector<GroupPlace> places;
    const std::map<std::string, int> zones = NumbersOf(group.block, "SystemZones");
    int priority = 0;
    if (const CfValue* const list = ValueOf(group.block, "SystemList")) {
        for (const CfElement& element : list->elements) {
            priority = element.hasValue ? NumberOf(&element.value, 0) : priority;
            const std::size_t system = PlaceIn(systems, element.key);
            if (system != NoPlace) {
                const auto zone = zones.find(element.key);
                places.push_back({system, priority, zone == zones.end() ? -1 : zone->second,
                                  IsSet(group.block, "Enabled", element.key)});
            }
            ++priority;
        }
    }
    return places;
}

// False: not one of the documented ones.
bool ParseRelationship(const std::string& text, GroupDependency& dependency) {
    if (text == "offline local") {
        dependency.offline = true;
        return true;
    }
    std::istringstream words(text);
    std::string category;
    std::string location;
    std::string rigidity;
    std::string more;
    words >> category >> location >> rigidity >> more;
    static const char* const Locations[] = {"local", "global", "remote"};
    static const char* const Rigidities[] = {"soft", "firm", "hard"};
    const auto* const place = std::find(std::begin(Locations), std::end(Locations), location);
    const auto* const strength = std::find(std::begin(Rigidities), std::end(Rigidities), rigidity);
    if (category != "online" || place == std::end(Locations) || !more.empty() ||
        (strength == std::end(Rigidities) && !rigidity.empty())) {
        return false;
    }
    dependency.location = static_cast<GroupDependency::Location>(place - Locations);
    dependency.rigidity =
        rigidity.empty() ? GroupDependency::Firm : static_cast<GroupDependency::Rigidity>(strength - Rigidities);
    return dependency.rigidity != GroupDependency::Hard || dependency.location == GroupDependency::Local;
}

// What VCS does not know of groups that run on several systems.
bool IsSupported(const GroupDependency& dependency, bool parallelParent, bool parallelChild) {
    if (dependency.offline) {
        return true;
    }
    const bool isLocal = dependency.location == GroupDependency::Local;
    const bool isHard = dependency.rigidity == GroupDependency::Hard;
    return !(isHard && (parallelParent || parallelChild)) && !(isLocal && parallelParent && !parallelChild) &&
           !(!isLocal && parallelParent && parallelChild);
}

GroupModel::Policy PolicyOf(const CfGroup& group) {
    const CfValue* const value = ValueOf(group.block, "FailOverPolicy");
    return value && value->text == "RoundRobin" ? GroupModel::RoundRobin
           : value && value->text == "Load"     ? GroupModel::Load
                                                : GroupModel::Priority;
}

GroupModel MakeGroup(const Cluster& cluster, const CfGroup& group, const std::vector<SystemModel>& systems) {
    const CfBlock& block = group.block;
    GroupModel model;
    model.name = block.name;
    model.parallel = cluster.IsParallel(group);
    model.autoFailOver = NumberOf(block, "AutoFailOver", 1);
    model.policy = PolicyOf(group);
    model.autoStart = NumberOf(block, "AutoStart", 1) != 0;
    model.autoRestart = NumberOf(block, "AutoRestart", 1) != 0;
    model.onlineRetryLimit = NumberOf(block, "OnlineRetryLimit", 0);
    model.onlineRetryInterval = NumberOf(block, "OnlineRetryInterval", 0);
    model.faultPropagation = NumberOf(block, "FaultPropagation", 1) != 0;
    model.load = NumberOf(block, "Load", 0);
    model.prerequisites = NumbersOf(block, "Prerequisites");
    model.places = PlacesOf(group, systems);
    if (const CfValue* const list = ValueOf(block, "AutoStartList")) {
        for (const CfElement& element : list->elements) {
            const std::size_t system = PlaceIn(systems, element.key);
            if (system != NoPlace) {
                model.autoStartList.push_back(system);
            }
        }
    }
    for (const CfBlock& resource : group.resources) {
        model.resources.push_back(MakeResource(cluster, resource));
    }
    LinkResources(group, model.resources);
    return model;
}

// Whether the group depends on itself.
bool IsInLoop(const Cluster& cluster, const std::string& group) {
    std::set<std::string> seen;
    std::vector<std::string> open = {group};
    while (!open.empty()) {
        const CfGroup* const next = cluster.configuration.GroupNamed(open.back());
        open.pop_back();
        for (std::size_t i = 0; next && i < next->requires_.size(); ++i) {
            const std::string& child = next->requires_[i].child;
            if (child == group) {
                return true;
            }
            if (seen.insert(child).second) {
                open.push_back(child);
            }
        }
    }
    return false;
}

std::string WhyNotDependent(const Cluster& cluster, const CfGroup& group, std::size_t link) {
    GroupDependency dependency;
    const std::string& relationship = group.relationships[link];
    const CfGroup* const child = cluster.configuration.GroupNamed(group.requires_[link].child);
    std::string what = "the dependency '" + relationship + "' of group " + group.block.name + " on group " +
                       group.requires_[link].child;
    if (!child) {
        return what + ", which does not exist";
    }
    if (!ParseRelationship(relationship, dependency)) {
        return what;
    }
    return IsSupported(dependency, cluster.IsParallel(group), cluster.IsParallel(*child))
               ? ""
               : what + " (" + (cluster.IsParallel(group) ? "parallel" : "failover") + " on " +
                     (cluster.IsParallel(*child) ? "parallel" : "failover") + ")";
}

} // namespace

std::string WhyNotSimulated(const Cluster& cluster, const CfGroup& group) {
    for (std::size_t i = 0; i < group.requires_.size(); ++i) {
        std::string why = WhyNotDependent(cluster, group, i);
        if (!why.empty()) {
            return why;
        }
    }
    if (IsInLoop(cluster, group.block.name)) {
        return "group " + group.block.name + ", which depends on itself";
    }
    const CfValue* const policy = ValueOf(group.block, "FailOverPolicy");
    for (const char* known : {"Priority", "RoundRobin", "Load"}) {
        if (!policy || policy->text == known) {
            const CfValue* const faults = ValueOf(group.block, "ManageFaults");
            return faults && faults->text != "ALL" ? "ManageFaults of group " + group.block.name + ", which is not ALL"
                                                   : "";
        }
    }
    return "the FailOverPolicy " + policy->text + " of group " + group.block.name;
}

EngineModel MakeEngineModel(const Cluster& cluster) {
    EngineModel model;
    for (const CfBlock& system : cluster.configuration.Systems()) {
        model.systems.push_back({system.name, NumberOf(system, "Capacity", 100), NumbersOf(system, "Limits")});
    }
    for (const CfGroup& group : cluster.configuration.Groups()) {
        model.groups.push_back(MakeGroup(cluster, group, model.systems));
    }
    for (std::size_t i = 0; i < model.groups.size(); ++i) {
        const CfGroup& group = cluster.configuration.Groups()[i];
        for (std::size_t link = 0; link < group.requires_.size(); ++link) {
            GroupDependency dependency;
            dependency.child = PlaceIn(model.groups, group.requires_[link].child);
            if (WhyNotDependent(cluster, group, link).empty() && !IsInLoop(cluster, group.block.name) &&
                ParseRelationship(group.relationships[link], dependency)) {
                model.groups[i].dependencies.push_back(dependency);
            }
        }
    }
    return model;
}

} // namespace vcssim
