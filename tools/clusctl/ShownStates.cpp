#include "ShownStates.h"

#include <StateCheck.h>

#include <algorithm>

namespace {

// Of the resources that are shown as online on a system which does not run: what is persistent is online everywhere.
bool HasLostResources(const ShownConfiguration& shown, const Json& systems) {
    const vcssim::TypeTable types;
    return std::any_of(shown.resources.begin(), shown.resources.end(), [&](const ShownValue& row) {
        if (row.attribute != "State" || row.value.compare(0, 6, "ONLINE") != 0 || !systems.contains(row.system) ||
            vcssim::CanHoldResources(systems[row.system].get<std::string>())) {
            return false;
        }
        const vcssim::ResourceType* const type = types.Find(ShownValueOf(shown.resources, row.object, "Type"));
        return type == nullptr || !type->persistent;
    });
}

} // namespace

Json StatesJson(const ShownConfiguration& shown) {
    Json systems = Json::object();
    Json frozenSystems = Json::array();
    for (const ShownValue& row : shown.systems) {
        if (row.attribute == "SysState" && row.value != "RUNNING") {
            systems[row.object] = row.value;
        } else if (row.attribute == "TFrozen" && row.value == "1") {
            frozenSystems.push_back(row.object);
        }
    }
    Json frozenGroups = Json::array();
    for (const ShownValue& row : shown.groups) {
        if (row.attribute == "TFrozen" && row.value == "1") {
            frozenGroups.push_back(row.object);
        }
    }
    Json resources = Json::object();
    Json probed = Json::object();
    for (const ShownValue& row : shown.resources) {
        if (row.attribute == "State") {
            resources[row.object][row.system] = row.value;
        } else if (row.attribute == "Probed" && row.value == "1") {
            probed[row.object].push_back(row.system);
        }
    }
    const bool isWritable = ShownValueOf(shown.cluster, "", "ReadOnly") == "0";
    Json states = {{"mode", isWritable ? "rw" : "ro"},
                   {"systems", systems},
                   {"resources", resources},
                   {"probed", probed},
                   {"frozen", {{"groups", frozenGroups}, {"systems", frozenSystems}}}};
    if (HasLostResources(shown, systems)) {
        states["downSystems"] = "accepted";
    }
    return states;
}
