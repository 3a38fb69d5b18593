#include "RehearsedModel.h"

#include "PropertyJson.h"
#include "Text.h"
#include "TextDifference.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <utility>

namespace {

const char ThisNode[] = ".";
// Of copies without a clock: some Monday, 00:00 (UTC). Always the same, so that rehearsals are.
const std::int64_t UsualClock = 13348540800000;

const char* const Lists[] = {"nodes", "networks", "networkInterfaces", "groups", "resources"};
const char* const Times[] = {"dueAt", "actAt", "restartsAt", "failoversAt", "failbackAt"};

bool IsSame(const std::string& a, const std::string& b) {
    return Lower(a) == Lower(b);
}

std::string TextOf(const Json& object, const char* member, const char* otherwise = "") {
    const auto found = object.find(member);
    return found != object.end() && found->is_string() ? found->get<std::string>() : otherwise;
}

const Json& ListOf(const Json& model, const char* name) {
    static const Json none = Json::array();
    const auto found = model.find(name);
    return found == model.end() ? none : *found;
}

// The first of these times that any object has.
std::int64_t EarliestOf(const Json& model, const std::vector<const char*>& members) {
    std::int64_t earliest = 0;
    for (const char* list : {"groups", "resources"}) {
        for (const Json& object : ListOf(model, list)) {
            for (const char* member : members) {
                const auto found = object.find(member);
                const std::int64_t time = found != object.end() && found->is_number() ? found->get<std::int64_t>() : 0;
                earliest = time != 0 && (earliest == 0 || time < earliest) ? time : earliest;
            }
        }
    }
    return earliest;
}

const Json* FindNode(const Json& model, const std::string& node, const std::string& thisComputer) {
    for (const Json& candidate : ListOf(model, "nodes")) {
        const std::string name = TextOf(candidate, "name");
        if (IsSame(name == ThisNode ? thisComputer : name, node)) {
            return &candidate;
        }
    }
    return nullptr;
}

// The objects of a list by their names; they stay the model's. Made when it is asked: often nothing is looked for.
class Index {
public:
    Index(const Json& model, const char* list) : m_list(ListOf(model, list)) {
    }
    const Json* Find(const std::string& name) const {
        if (m_objects.empty()) {
            for (const Json& object : m_list) {
                m_objects[Lower(TextOf(object, "name"))] = &object;
            }
        }
        const auto found = m_objects.find(Lower(name));
        return found == m_objects.end() ? nullptr : found->second;
    }

private:
    const Json& m_list;
    mutable std::map<std::string, const Json*> m_objects;
};

// "OnlinePending" as people are told: "online pending".
std::string StateText(const std::string& state) {
    std::string text;
    for (const char c : state) {
        text += c >= 'A' && c <= 'Z' && !text.empty() ? " " : "";
        text += c;
    }
    return Lower(text);
}

bool IsOnline(const Json& resource) {
    return TextOf(resource, "state", "Offline") == "Online";
}

bool ShallBeOnline(const Json& resource) {
    const std::string state = TextOf(resource, "state", "Offline");
    const auto common = resource.find("common");
    const auto persistent = common == resource.end() ? Json() : common->value("PersistentState", Json());
    return persistent.is_number() ? persistent != 0 : state == "Online" || state == "OnlinePending";
}

// PersistentState is only written where the state does not say the same.
void DropUnchangedWishes(Json& before, Json& after) {
    const Index earliers(before, "resources");
    if (!after.contains("resources")) {
        return;
    }
    for (Json& resource : after["resources"]) {
        const Json* const earlier = earliers.Find(TextOf(resource, "name"));
        const bool isNew = resource.contains("common") && (earlier == nullptr || !earlier->contains("common") ||
                                                           !earlier->at("common").contains("PersistentState"));
        if (!isNew || earlier == nullptr || ShallBeOnline(*earlier) != ShallBeOnline(resource)) {
            continue;
        }
        resource["common"].erase("PersistentState");
        if (resource["common"].empty()) {
            resource.erase("common");
        }
    }
}

// The last thing that the time line gives a reason for.
std::string LastReason(const Json& timeline, const char* kind, const std::string& name) {
    std::string reason;
    for (const Json& entry : timeline) {
        if (TextOf(entry, "kind") == kind && IsSame(TextOf(entry, "name"), name) && !TextOf(entry, "why").empty()) {
            reason = kind == std::string("group") ? "the group " + TextOf(entry, "what") + ": " + TextOf(entry, "why")
                                                  : TextOf(entry, "what") + ": " + TextOf(entry, "why");
        }
    }
    return reason;
}

Json WhyDown(const Index& resources, const Json& resource, const Json& timeline) {
    for (const Json& needed : ListOf(resource, "dependsOn")) {
        const Json* const other = resources.Find(needed.get<std::string>());
        if (other != nullptr && !IsOnline(*other)) {
            return "it depends on " + needed.get<std::string>() + ", which is not online either";
        }
    }
    const std::string own = LastReason(timeline, "resource", TextOf(resource, "name"));
    if (!own.empty()) {
        return own;
    }
    const std::string ofGroup = LastReason(timeline, "group", TextOf(resource, "group"));
    return ofGroup.empty() ? Json() : Json(ofGroup);
}

bool IsList(const std::string& member) {
    return std::find(std::begin(Lists), std::end(Lists), member) != std::end(Lists);
}

std::vector<std::string> LinesWithout(const Json& model, const Json& other) {
    Json reduced = Json::object();
    for (const auto& member : model.items()) {
        if (!IsList(member.key())) {
            if (!other.contains(member.key()) || other.at(member.key()) != member.value()) {
                reduced[member.key()] = member.value();
            }
            continue;
        }
        const Index others(other, member.key().c_str());
        Json objects = Json::array();
        for (const Json& object : member.value()) {
            const Json* const same = others.Find(TextOf(object, "name"));
            if (same == nullptr || *same != object) {
                objects.push_back(object);
            }
        }
        if (!objects.empty()) {
            reduced[member.key()] = objects;
        }
    }
    return reduced.empty() ? std::vector<std::string>() : SplitLines(common::DumpJson(reduced));
}

// Without the objects that stand in the same place of both, unchanged: hardly any is left of a large model.
Json WithoutUnchanged(const Json& model, const Json& other) {
    Json reduced = Json::object();
    for (const auto& member : model.items()) {
        if (!IsList(member.key())) {
            reduced[member.key()] = member.value();
            continue;
        }
        const Json& others = ListOf(other, member.key().c_str());
        Json& objects = reduced[member.key()] = Json::array();
        for (std::size_t i = 0; i < member.value().size(); ++i) {
            if (i >= others.size() || others[i] != member.value()[i]) {
                objects.push_back(member.value()[i]);
            }
        }
    }
    return reduced;
}

} // namespace

WrittenModel::WrittenModel(std::string written) : text(std::move(written)), json(common::ParseJson(text)) {
}

Json PrivateCopy(Json copy) {
    if (!copy.contains("cluster") || !copy["cluster"].is_object()) {
        return copy; // which the simulator refuses, with the reason
    }
    if (ClockOf(copy) == 0) {
        const std::int64_t due = EarliestOf(copy, {"dueAt", "actAt", "failbackAt"});
        copy["cluster"]["clock"] = due != 0 ? due : UsualClock;
    }
    if (!copy["cluster"].contains("behaviour")) {
        copy["cluster"]["behaviour"] = Json::object();
    }
    Json& behaviour = copy["cluster"]["behaviour"];
    if (behaviour.is_object() && !behaviour.contains("failures")) {
        behaviour["failures"] = "acted-on";
    }
    return copy;
}

std::int64_t ClockOf(const Json& model) {
    const auto cluster = model.find("cluster");
    return cluster == model.end() || !cluster->contains("clock") || !cluster->at("clock").is_number()
               ? 0
               : cluster->at("clock").get<std::int64_t>();
}

std::int64_t NextEnd(const Json& model) {
    return EarliestOf(model, {"dueAt"});
}

std::string WordsOfState(const std::string& what) {
    const std::string is = "is ";
    const bool isState = what.size() > is.size() && StartsWith(what, is) && what[is.size()] >= 'A' &&
                         what[is.size()] <= 'Z' && what.find(' ', is.size()) == std::string::npos;
    return isState ? is + StateText(what.substr(is.size())) : what;
}

std::vector<std::string> NodesOf(const Json& model, const std::string& thisComputer) {
    std::vector<std::string> names;
    for (const Json& node : ListOf(model, "nodes")) {
        const std::string name = TextOf(node, "name");
        names.push_back(name == ThisNode ? thisComputer : name);
    }
    return names;
}

std::string NodeState(const Json& model, const std::string& node, const std::string& thisComputer) {
    const Json* const found = FindNode(model, node, thisComputer);
    const std::string state = found == nullptr ? "" : TextOf(*found, "state", "up");
    const bool isRunning = model.at("cluster").value("running", true);
    const bool takesPart = state == "up" || state == "paused";
    return !isRunning && takesPart && IsSame(node, thisComputer) ? "stopped" : state;
}

Json Essence(Json essence) {
    if (essence.contains("cluster")) {
        essence["cluster"].erase("clock");
    }
    for (const char* list : {"groups", "resources"}) {
        if (!essence.contains(list)) {
            continue;
        }
        for (Json& object : essence[list]) {
            for (const char* time : Times) {
                object.erase(time);
            }
            if (object.contains("private")) {
                MaskSecretProperties(object["private"]);
            }
        }
    }
    return essence;
}

Json ComparableEnd(const Json& before, const Json& end) {
    const Index earliers(before, "resources");
    Json comparable = Essence(end);
    if (comparable.contains("resources")) {
        for (Json& resource : comparable["resources"]) {
            if (earliers.Find(TextOf(resource, "name")) == nullptr) {
                resource.erase("id");
            }
        }
    }
    return comparable;
}

std::vector<std::string> ModelDifference(const Json& before, const Json& after) {
    Json first = Essence(WithoutUnchanged(before, after));
    Json second = Essence(WithoutUnchanged(after, before));
    DropUnchangedWishes(first, second);
    return UnifiedDifference(LinesWithout(first, second), LinesWithout(second, first));
}

Json StaysDown(const Json& before, const Json& after, const Json& timeline) {
    const Index earliers(before, "resources");
    const Index resources(after, "resources");
    Json down = Json::array();
    for (const Json& resource : ListOf(after, "resources")) {
        const Json* const earlier = earliers.Find(TextOf(resource, "name"));
        const bool wasOnline = earlier != nullptr && IsOnline(*earlier);
        if (!IsOnline(resource) && (wasOnline || ShallBeOnline(resource))) {
            down.push_back({{"name", resource.at("name")},
                            {"group", resource.at("group")},
                            {"state", StateText(TextOf(resource, "state", "Offline"))},
                            {"reason", WhyDown(resources, resource, timeline)}});
        }
    }
    return down;
}
