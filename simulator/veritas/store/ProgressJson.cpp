#include "ProgressJson.h"

namespace vcssim {

namespace {

using common::Json;
using common::JsonError;
using common::ObjectReader;

const std::uint64_t LatestSecond = 100000000000; // some thousand years: sums of two do not overflow
const std::uint64_t MostAttempts = 1000000;

// In the order of ResourceStatus::Transition, Move::Cause and Move::Phase.
const char* const TransitionNames[] = {
    "", "waits to go online", "goes online", "restarts", "waits to go offline", "goes offline", "unable to offline"};
const char* const CauseNames[] = {"offline", "leaving", "switch", "fault", "loss", "dependency", "autostart"};
const char* const PhaseNames[] = {"following", "stopping", "placing"};

template <typename Value, std::size_t N>
Value Named(ObjectReader& reader, const char* member, const char* const (&names)[N]) {
    const std::string text = reader.Text(member);
    for (std::size_t i = 0; i < N; ++i) {
        if (!text.empty() && text == names[i]) {
            return static_cast<Value>(i);
        }
    }
    throw JsonError(reader.Place(member), "there is no '" + text + "'");
}

Seconds SecondsOf(ObjectReader& reader, const char* member) {
    return static_cast<Seconds>(reader.NumberOr(member, 0, LatestSecond));
}

int CountOf(ObjectReader& reader, const char* member) {
    return static_cast<int>(reader.NumberOr(member, 0, MostAttempts));
}

void NeedObject(const Json& json, const std::string& place) {
    if (!json.is_object()) {
        throw JsonError(place, "is no object");
    }
}

// Calls `read(reader)` for the record of each object and system.
template <typename Record, typename Read>
void ReadTable(const std::string& name, const Json& json, Progress::Table<Record>& table, Read read) {
    NeedObject(json, name);
    for (const auto& object : json.items()) {
        NeedObject(object.value(), name + "." + object.key());
        for (const auto& system : object.value().items()) {
            ObjectReader reader(system.value(), name + "." + object.key() + "." + system.key());
            table[object.key()][system.key()] = read(reader);
            reader.Done();
        }
    }
}

template <typename Record, typename Write> Json Written(const Progress::Table<Record>& table, Write write) {
    Json json = Json::object();
    for (const auto& object : table) {
        Json systems = Json::object();
        for (const auto& system : object.second) {
            systems[system.first] = write(system.second);
        }
        json[object.first] = systems;
    }
    return json;
}

void ReadTimes(const Json& json, Progress& progress) {
    NeedObject(json, "times");
    for (const auto& entry : json.items()) {
        ObjectReader reader(entry.value(), "times." + entry.key());
        TransitionTimes& times = progress.times[entry.key()];
        times.online = SecondsOf(reader, "online");
        times.offline = SecondsOf(reader, "offline");
        reader.Done();
    }
}

void ReadFrozen(const Json& json, Progress& progress) {
    ObjectReader reader(json, "frozen");
    reader.Each("groups", [&](const Json& item, const std::string& place) {
        progress.frozenGroups.insert(common::TextItem(item, place));
    });
    reader.Each("systems", [&](const Json& item, const std::string& place) {
        progress.frozenSystems.insert(common::TextItem(item, place));
    });
    reader.Done();
}

// A list of objects is read like the one member of an object around it.
template <typename Read> void ReadList(const char* name, const Json& json, Read read) {
    const Json around = {{name, json}};
    ObjectReader(around, "").Each(name, [&](const Json& item, const std::string& place) {
        ObjectReader reader(item, place);
        read(reader);
        reader.Done();
    });
}

MoveRecord ReadMove(ObjectReader& reader) {
    MoveRecord move;
    move.group = reader.Text("group");
    move.from = reader.TextOr("from", "");
    move.to = reader.TextOr("to", "");
    move.cause = Named<Move::Cause>(reader, "cause", CauseNames);
    move.phase = Named<Move::Phase>(reader, "phase", PhaseNames);
    move.retries = reader.FlagOr("retries", false);
    if (move.from.empty() && move.phase != Move::Placing) {
        throw JsonError(reader.Place("from"), "is missing");
    }
    return move;
}

TransitionRecord ReadTransition(ObjectReader& reader) {
    TransitionRecord record;
    record.transition = Named<ResourceStatus::Transition>(reader, "now", TransitionNames);
    record.due = SecondsOf(reader, "due");
    record.attempts = CountOf(reader, "attempts");
    return record;
}

Json WriteTimes(const std::map<std::string, TransitionTimes>& times) {
    Json json = Json::object();
    for (const auto& entry : times) {
        json[entry.first] = {{"online", entry.second.online}, {"offline", entry.second.offline}};
    }
    return json;
}

Json WriteMoves(const std::vector<MoveRecord>& moves) {
    Json json = Json::array();
    for (const MoveRecord& move : moves) {
        json.push_back({{"group", move.group},
                        {"from", move.from},
                        {"to", move.to},
                        {"cause", CauseNames[move.cause]},
                        {"phase", PhaseNames[move.phase]},
                        {"retries", move.retries}});
    }
    return json;
}

} // namespace

bool ReadProgressMember(const std::string& name, const Json& value, Progress& progress) {
    if (name == "clock") {
        const Json around = {{"clock", value}};
        ObjectReader reader(around, "");
        progress.clock = SecondsOf(reader, "clock");
    } else if (name == "times") {
        ReadTimes(value, progress);
    } else if (name == "frozen") {
        ReadFrozen(value, progress);
    } else if (name == "transitions") {
        ReadTable(name, value, progress.transitions, ReadTransition);
    } else if (name == "restarts") {
        ReadTable(name, value, progress.restarts, [](ObjectReader& reader) {
            return RestartRecord{CountOf(reader, "restarts"), SecondsOf(reader, "at")};
        });
    } else if (name == "retries") {
        ReadTable(name, value, progress.retries, [](ObjectReader& reader) {
            return RetryStatus{CountOf(reader, "retries"), reader.FlagOr("succeeded", false), SecondsOf(reader, "at")};
        });
    } else if (name == "moves") {
        ReadList("moves", value, [&](ObjectReader& reader) { progress.moves.push_back(ReadMove(reader)); });
    } else if (name == "timeline") {
        ReadList("timeline", value, [&](ObjectReader& reader) {
            progress.timeline.push_back({SecondsOf(reader, "at"), reader.Text("event"), reader.TextOr("reason", "")});
        });
    } else {
        return false;
    }
    return true;
}

void WriteProgress(const Progress& progress, Json& root) {
    if (progress.clock) {
        root["clock"] = *progress.clock;
    }
    if (!progress.times.empty()) {
        root["times"] = WriteTimes(progress.times);
    }
    if (!progress.frozenGroups.empty() || !progress.frozenSystems.empty()) {
        root["frozen"] = {{"groups", progress.frozenGroups}, {"systems", progress.frozenSystems}};
    }
    if (!progress.transitions.empty()) {
        root["transitions"] = Written(progress.transitions, [](const TransitionRecord& record) {
            return Json{
                {"now", TransitionNames[record.transition]}, {"due", record.due}, {"attempts", record.attempts}};
        });
    }
    if (!progress.restarts.empty()) {
        root["restarts"] = Written(progress.restarts, [](const RestartRecord& record) {
            return Json{{"restarts", record.restarts}, {"at", record.at}};
        });
    }
    if (!progress.retries.empty()) {
        root["retries"] = Written(progress.retries, [](const RetryStatus& record) {
            return Json{{"retries", record.retries}, {"succeeded", record.succeeded}, {"at", record.restarted}};
        });
    }
    if (!progress.moves.empty()) {
        root["moves"] = WriteMoves(progress.moves);
    }
    if (!progress.timeline.empty()) {
        Json timeline = Json::array();
        for (const TimelineEntry& entry : progress.timeline) {
            timeline.push_back({{"at", entry.at}, {"event", entry.event}, {"reason", entry.reason}});
        }
        root["timeline"] = timeline;
    }
}

} // namespace vcssim
