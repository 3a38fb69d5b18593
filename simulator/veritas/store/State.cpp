#include "State.h"

#include "ProgressJson.h"

#include "common/Json.h"

#include <algorithm>

namespace vcssim {

namespace {

using common::Json;

void ReadTable(const Json& json, const char* member, State::Table& table) {
    for (const auto& object : json.items()) {
        for (const auto& system : object.value().items()) {
            if (!system.value().is_string()) {
                throw StateError(std::string(member) + "." + object.key() + "." + system.key() + ": is no text");
            }
            table[object.key()][system.key()] = system.value().get<std::string>();
        }
    }
}

void ReadMarks(const Json& json, const char* member, State::Marks& marks) {
    for (const auto& object : json.items()) {
        for (const Json& system : object.value()) {
            if (!system.is_string()) {
                throw StateError(std::string(member) + "." + object.key() + ": is no list of systems");
            }
            marks[object.key()].insert(system.get<std::string>());
        }
    }
}

std::string ReadSettings(const Json& json) {
    if (!json.is_object()) {
        throw StateError("settings: is no object");
    }
    for (const auto& setting : json.items()) {
        if (!setting.value().is_string() && !setting.value().is_number_unsigned()) {
            throw StateError("settings." + setting.key() + ": is no text or number");
        }
    }
    return common::DumpJsonLine(json);
}

bool IsTableOf(const Json& json, bool ofObjects) {
    if (!json.is_object()) {
        return false;
    }
    for (const Json& value : json) {
        if (ofObjects ? !value.is_object() : !value.is_array()) {
            return false;
        }
    }
    return true;
}

void ReadMember(const std::string& name, const Json& value, State& state) {
    if (name == "mode") {
        if (value != "rw" && value != "ro") {
            throw StateError("mode: is neither \"rw\" nor \"ro\"");
        }
        state.writable = value == "rw";
    } else if (name == "engine") {
        if (value != "stopped") {
            throw StateError("engine: is not \"stopped\"");
        }
        state.isEngineStopped = true;
    } else if (name == "downSystems") {
        if (value != "refused" && value != "accepted") {
            throw StateError("downSystems: is neither \"refused\" nor \"accepted\"");
        }
        state.takesDownSystems = value == "accepted";
    } else if (name == "settings") {
        state.settings = ReadSettings(value);
    } else if (name == "resources" || name == "groups") {
        if (!IsTableOf(value, true)) {
            throw StateError(name + ": is no object of objects");
        }
        ReadTable(value, name.c_str(), name == "groups" ? state.groups : state.resources);
    } else if (name == "probed" || name == "failing") {
        if (!IsTableOf(value, false)) {
            throw StateError(name + ": is no object of lists");
        }
        ReadMarks(value, name.c_str(), name == "probed" ? state.probed : state.failing);
    } else if (name == "systems") {
        if (!value.is_object()) {
            throw StateError("systems: is no object");
        }
        for (const auto& system : value.items()) {
            if (!system.value().is_string()) {
                throw StateError("systems." + system.key() + ": is no text");
            }
            state.systems[system.key()] = system.value().get<std::string>();
        }
    } else if (!ReadProgressMember(name, value, state.progress)) {
        throw StateError("there is no member '" + name + "'");
    }
}

} // namespace

void State::Forget(const std::string& resource) {
    resources.erase(resource);
    probed.erase(resource);
    failing.erase(resource);
    progress.transitions.erase(resource);
    progress.restarts.erase(resource);
}

void State::ForgetGroup(const std::string& group) {
    groups.erase(group);
    progress.frozenGroups.erase(group);
    progress.retries.erase(group);
    std::vector<MoveRecord>& moves = progress.moves;
    moves.erase(
        std::remove_if(moves.begin(), moves.end(), [&group](const MoveRecord& move) { return move.group == group; }),
        moves.end());
}

State ReadState(const std::string& json) {
    State state;
    try {
        const Json root = common::ParseJson(json);
        if (!root.is_object()) {
            throw StateError("is no JSON object");
        }
        for (const auto& member : root.items()) {
            ReadMember(member.key(), member.value(), state);
        }
    } catch (const common::JsonError& error) {
        throw StateError(error.what());
    }
    return state;
}

std::string WriteState(const State& state) {
    Json root;
    root["mode"] = state.writable ? "rw" : "ro";
    if (state.isEngineStopped) {
        root["engine"] = "stopped";
    }
    if (state.takesDownSystems) {
        root["downSystems"] = "accepted";
    }
    root["systems"] = state.systems;
    root["groups"] = state.groups;
    root["resources"] = state.resources;
    root["probed"] = state.probed;
    root["failing"] = state.failing;
    WriteProgress(state.progress, root);
    if (!state.settings.empty()) {
        root["settings"] = common::ParseJson(state.settings);
    }
    return common::DumpJson(root);
}

} // namespace vcssim
