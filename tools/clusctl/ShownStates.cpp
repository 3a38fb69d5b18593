#include "ShownStates.h"

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
    return {{"mode", isWritable ? "rw" : "ro"},
            {"systems", systems},
            {"resources", resources},
            {"probed", probed},
            {"frozen", {{"groups", frozenGroups}, {"systems", frozenSystems}}}};
}
