#include "Cluster.h"

#include "VcsEngine.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace vcssim {

namespace {

struct StandardValue {
    const char* attribute;
    const char* value;
};

const StandardValue SystemStandards[] = {{"CPUUsage", "0"}, {"Frozen", "0"}, {"Limits", ""}, {"TFrozen", "0"}};

const StandardValue GroupStandards[] = {
    {"AdministratorGroups", ""}, {"Administrators", ""}, {"Authority", "0"}, {"AutoFailOver", "1"},
    {"AutoStart", "1"},          {"AutoStartList", ""},  {"Enabled", "1"},   {"Frozen", "0"},
    {"Parallel", "0"},           {"Priority", "0"},      {"SystemList", ""}, {"TFrozen", "0"},
};

template <std::size_t N> const char* StandardOf(const StandardValue (&standards)[N], const std::string& attribute) {
    for (const StandardValue& standard : standards) {
        if (attribute == standard.attribute) {
            return standard.value;
        }
    }
    return nullptr;
}

template <std::size_t N>
std::vector<std::string> WithStandards(const StandardValue (&standards)[N], const CfBlock& block,
                                       const std::vector<std::string>& others) {
    std::vector<std::string> names = others;
    for (const StandardValue& standard : standards) {
        names.emplace_back(standard.attribute);
    }
    for (const CfAttribute& attribute : block.attributes) {
        names.push_back(attribute.name);
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<std::string> PartsOf(const char* text) {
    return *text == '\0' ? std::vector<std::string>() : std::vector<std::string>{text};
}

bool Has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// With the numbers that are not written: each is that of the system before and 1 more.
std::vector<std::string> NumberedSystems(const CfValue& list) {
    std::vector<std::string> parts;
    long long next = 0;
    for (const CfElement& element : list.elements) {
        parts.push_back(element.key);
        parts.push_back(element.hasValue ? element.value.text : std::to_string(next));
        next = std::strtoll(parts.back().c_str(), nullptr, 10) + 1;
    }
    return parts;
}

} // namespace

std::vector<std::string> Cluster::Systems() const {
    std::vector<std::string> names;
    names.reserve(configuration.Systems().size());
    for (const CfBlock& system : configuration.Systems()) {
        names.push_back(system.name);
    }
    return names;
}

std::vector<std::string> Cluster::SystemsOf(const CfGroup& group) const {
    const CfAttribute* const list = group.block.Find("SystemList", "");
    std::vector<std::string> names;
    if (list) {
        for (const CfElement& element : list->value.elements) {
            names.push_back(element.key);
        }
    }
    return names;
}

bool Cluster::HasSystem(const std::string& system) const {
    return Has(Systems(), system);
}

bool Cluster::IsParallel(const CfGroup& group) const {
    const CfAttribute* const parallel = group.block.Find("Parallel", "");
    return parallel && parallel->value.text != "0";
}

bool Cluster::IsFrozen(const CfGroup& group) const {
    const CfAttribute* const frozen = group.block.Find("Frozen", "");
    return (frozen && frozen->value.text == "1") || state.progress.frozenGroups.count(group.block.name) != 0;
}

bool Cluster::IsFrozen(const CfBlock& system) const {
    const CfAttribute* const frozen = system.Find("Frozen", "");
    return (frozen && frozen->value.text == "1") || state.progress.frozenSystems.count(system.name) != 0;
}

std::vector<std::string> Cluster::Value(const CfBlock& block, const std::string& attribute, const std::string& system,
                                        const std::vector<std::string>& standard) const {
    const CfAttribute* found = system.empty() ? nullptr : block.Find(attribute, system);
    if (!found) {
        found = block.Find(attribute, "");
    }
    return found ? found->value.Flat() : standard;
}

std::vector<AttributeRow> Cluster::Rows(const CfBlock& block, const std::string& attribute,
                                        const std::vector<std::string>& systems,
                                        const std::vector<std::string>& standard) const {
    const bool isLocal =
        std::any_of(block.attributes.begin(), block.attributes.end(), [&](const CfAttribute& candidate) {
            return candidate.name == attribute && !candidate.system.empty();
        });
    if (!isLocal) {
        return {{"global", Value(block, attribute, "", standard)}};
    }
    std::vector<AttributeRow> rows;
    rows.reserve(systems.size());
    for (const std::string& system : systems) {
        rows.push_back({system, Value(block, attribute, system, standard)});
    }
    return rows;
}

std::vector<AttributeRow> Cluster::SystemAttribute(const CfBlock& system, const std::string& attribute) const {
    if (attribute == "SysState") {
        const auto found = state.systems.find(system.name);
        return {{system.name, {found == state.systems.end() ? "RUNNING" : found->second}}};
    }
    if (attribute == "NodeId") {
        const std::vector<std::string> names = Systems();
        const auto place = std::find(names.begin(), names.end(), system.name) - names.begin();
        return {{system.name, {std::to_string(place)}}};
    }
    if (attribute == "TFrozen") {
        return {{system.name, {state.progress.frozenSystems.count(system.name) != 0 ? "1" : "0"}}};
    }
    const char* const standard = StandardOf(SystemStandards, attribute);
    if (!standard && !system.Has(attribute)) {
        return {};
    }
    return {{system.name, Value(system, attribute, "", PartsOf(standard ? standard : ""))}};
}

std::vector<AttributeRow> Cluster::GroupAttribute(const CfGroup& group, const std::string& attribute) const {
    if (attribute == "State") {
        std::vector<AttributeRow> rows;
        for (const std::string& system : SystemsOf(group)) {
            rows.push_back({system, {"|" + GroupState(group, system) + "|"}});
        }
        return rows;
    }
    if (attribute == "TFrozen") {
        return {{"global", {state.progress.frozenGroups.count(group.block.name) != 0 ? "1" : "0"}}};
    }
    const CfAttribute* const list = attribute == "SystemList" ? group.block.Find(attribute, "") : nullptr;
    if (list) {
        return {{"global", NumberedSystems(list->value)}};
    }
    const char* const standard = StandardOf(GroupStandards, attribute);
    if (!standard && !group.block.Has(attribute)) {
        return {};
    }
    return Rows(group.block, attribute, SystemsOf(group), PartsOf(standard ? standard : ""));
}

std::vector<AttributeRow> Cluster::ResourceAttribute(const CfGroup& group, const CfBlock& resource,
                                                     const std::string& attribute) const {
    if (attribute == "Group") {
        return {{"global", {group.block.name}}};
    }
    if (attribute == "Type") {
        return {{"global", {resource.keyword}}};
    }
    if (attribute == "State" || attribute == "Probed") {
        const auto probed = state.probed.find(resource.name);
        std::vector<AttributeRow> rows;
        for (const std::string& system : SystemsOf(group)) {
            const bool wasProbed = probed != state.probed.end() && probed->second.count(system) != 0;
            rows.push_back({system, {attribute == "State" ? ResourceState(resource, system) : wasProbed ? "1" : "0"}});
        }
        return rows;
    }
    AttributeType type;
    if (!FindAttributeType(resource, attribute, type)) {
        return {};
    }
    return Rows(resource, attribute, SystemsOf(group), type.standard);
}

std::vector<std::string> Cluster::SystemAttributes(const CfBlock& system) const {
    return WithStandards(SystemStandards, system, {"NodeId", "SysState"});
}

std::vector<std::string> Cluster::GroupAttributes(const CfGroup& group) const {
    return WithStandards(GroupStandards, group.block, {"State"});
}

std::vector<std::string> Cluster::ResourceAttributes(const CfBlock& resource) const {
    std::vector<std::string> names = {"Group",       "Type",          "AutoStart", "Critical", "Enabled",
                                      "MonitorOnly", "ResourceOwner", "Probed",    "State"};
    std::vector<std::string> own;
    if (const ResourceType* const type = types.Find(resource.keyword)) {
        for (const auto& attribute : type->attributes) {
            own.push_back(attribute.first);
        }
    }
    for (const CfAttribute& attribute : resource.attributes) {
        own.push_back(attribute.name);
    }
    std::sort(own.begin(), own.end());
    own.erase(std::unique(own.begin(), own.end()), own.end());
    std::copy_if(own.begin(), own.end(), std::back_inserter(names),
                 [common = names](const std::string& name) { return !Has(common, name); });
    return names;
}

bool Cluster::FindAttributeType(const CfBlock& resource, const std::string& attribute, AttributeType& type) const {
    if (const AttributeType* const known = types.Find(resource.keyword, attribute)) {
        type = *known;
        return true;
    }
    const ResourceType* const known = types.Find(resource.keyword);
    if (known && known->complete && !resource.Has(attribute)) {
        return false;
    }
    for (const CfGroup& group : configuration.Groups()) {
        for (const CfBlock& other : group.resources) {
            if (other.keyword != resource.keyword) {
                continue;
            }
            for (const CfAttribute& used : other.attributes) {
                if (used.name == attribute) {
                    type.kind = used.value.IsAssociation() ? AttributeType::Association
                                : used.value.isList        ? AttributeType::List
                                                           : AttributeType::Text;
                    return true;
                }
            }
        }
    }
    return false;
}

bool Cluster::IsPersistent(const CfBlock& resource) const {
    const ResourceType* const type = types.Find(resource.keyword);
    return type && type->persistent;
}

bool Cluster::IsFlagSet(const CfGroup& group, const CfBlock& resource, const char* attribute,
                        const std::string& system) const {
    for (const AttributeRow& row : ResourceAttribute(group, resource, attribute)) {
        if (row.system == "global" || row.system == system) {
            return !row.parts.empty() && row.parts.front() != "0";
        }
    }
    return false;
}

std::string Cluster::ResourceState(const CfBlock& resource, const std::string& system) const {
    const auto found = state.resources.find(resource.name);
    if (found != state.resources.end()) {
        const auto there = found->second.find(system);
        if (there != found->second.end()) {
            return there->second;
        }
    }
    return IsPersistent(resource) ? "ONLINE" : "OFFLINE";
}

std::string Cluster::GroupState(const CfGroup& group, const std::string& system) const {
    const auto given = state.groups.find(group.block.name);
    if (given != state.groups.end()) {
        const auto there = given->second.find(system);
        if (there != given->second.end()) {
            return there->second;
        }
    }
    std::size_t counted = 0;
    std::size_t online = 0;
    bool faulted = false;
    bool starts = false;
    bool stops = false;
    for (const CfBlock& resource : group.resources) {
        const std::string resourceState = ResourceState(resource, system);
        const ResourceStatus::Transition transition = state.progress.TransitionOf(resource.name, system);
        starts = starts || GoesUp(transition);
        stops = stops || GoesDown(transition);
        faulted = faulted || resourceState.compare(0, 7, "FAULTED") == 0;
        if (!IsPersistent(resource) && IsFlagSet(group, resource, "Enabled", system)) {
            ++counted;
            online += resourceState.compare(0, 6, "ONLINE") == 0 ? 1 : 0;
        }
    }
    return GroupStateText(online, counted, starts, stops, faulted);
}

} // namespace vcssim
