#include "Changes.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace picture {

namespace {

const char Absent[] = "absent";
const char Present[] = "present";

void Compare(const char* kind, const std::string& name, const char* what, const std::string& from,
             const std::string& to, std::vector<Change>& changes) {
    if (from != to) {
        changes.push_back({kind, name, what, from, to});
    }
}

void CompareParts(const Node& before, const Node& after, std::vector<Change>& changes) {
    Compare("node", after.name, "state", before.state, after.state, changes);
}

void CompareParts(const Group& before, const Group& after, std::vector<Change>& changes) {
    Compare("group", after.name, "state", before.state, after.state, changes);
    Compare("group", after.name, "node", before.node, after.node, changes);
}

void CompareParts(const Resource& before, const Resource& after, std::vector<Change>& changes) {
    Compare("resource", after.name, "state", before.state, after.state, changes);
    Compare("resource", after.name, "node", before.node, after.node, changes);
    Compare("resource", after.name, "group", before.group, after.group, changes);
}

const char* YesOrNo(bool is) {
    return is ? "yes" : "no";
}

void CompareServers(const VirtualServer& before, const VirtualServer& after, std::vector<Change>& changes) {
    Compare("server", after.name, "name", before.name, after.name, changes);
    Compare("server", after.name, "state", before.state, after.state, changes);
    Compare("server", after.name, "node", before.node, after.node, changes);
    Compare("server", after.name, "product", before.product, after.product, changes);
    Compare("server", after.name, "protected", YesOrNo(before.isProtected), YesOrNo(after.isProtected), changes);
}

// Problems with their levels and texts.
typedef std::vector<std::pair<const Problem*, std::string>> Told;

Told ToldOf(const Health& health) {
    Told told;
    for (const Problem& problem : health.problems) {
        told.emplace_back(&problem, std::string(NameOf(problem.level)) + ": " + problem.text);
    }
    return told;
}

// The text that tells the same of the same object; empty when none does. It is taken out of the list.
std::string TakeSame(const Problem& problem, const std::string& text, Told& told) {
    const auto isSame = [&](const auto& other) {
        return std::tie(problem.object, problem.group) == std::tie(other.first->object, other.first->group) &&
               std::string(problem.code) == other.first->code;
    };
    auto found = std::find_if(told.begin(), told.end(),
                              [&](const auto& other) { return isSame(other) && other.second == text; });
    found = found == told.end() ? std::find_if(told.begin(), told.end(), isSame) : found;
    if (found == told.end()) {
        return std::string();
    }
    std::string same = found->second;
    told.erase(found);
    return same;
}

template <typename Object>
void CompareLists(const char* kind, const std::vector<Object>& before, const std::vector<Object>& after,
                  std::vector<Change>& changes) {
    std::map<std::string, const Object*> old;
    for (const Object& object : before) {
        old.emplace(object.name, &object);
    }
    for (const Object& object : after) {
        const auto found = old.find(object.name);
        if (found == old.end()) {
            changes.push_back({kind, object.name, "presence", Absent, Present});
        } else {
            CompareParts(*found->second, object, changes);
            old.erase(found);
        }
    }
    for (const Object& object : before) {
        if (old.count(object.name) != 0) {
            changes.push_back({kind, object.name, "presence", Present, Absent});
        }
    }
}

template <typename Object> const Object* FindNamed(const std::vector<Object>& objects, const std::string& name) {
    const auto found =
        std::find_if(objects.begin(), objects.end(), [&name](const Object& object) { return object.name == name; });
    return found == objects.end() ? nullptr : &*found;
}

template <typename Object> void KeepState(const Object& before, Object& now) {
    if (now.condition == Condition::Unknown) {
        now.state = before.state;
        now.condition = before.condition;
        now.node = before.node;
    }
}

void KeepParts(const Resource& before, Resource& now) {
    KeepState(before, now);
    if (now.group.empty()) {
        now.group = before.group;
    }
    if (now.type.empty()) {
        now.type = before.type;
        now.role = before.role;
        now.service = before.service;
    }
    if (now.networkName.empty() && now.role == Role::NetworkName) {
        now.networkName = before.networkName;
    }
    if (!now.hasDependenciesRead) {
        now.hasDependenciesRead = before.hasDependenciesRead;
        now.dependsOn = before.dependsOn;
    }
}

} // namespace

std::vector<Change> ChangesBetween(const Health& before, const Health& after) {
    std::vector<Change> changes;
    std::map<std::string, const VirtualServer*> old;
    for (const VirtualServer& server : before.servers) {
        old.emplace(server.group, &server);
    }
    for (const VirtualServer& server : after.servers) {
        const auto found = old.find(server.group);
        if (found == old.end()) {
            changes.push_back({"server", server.name, "presence", Absent, Present});
        } else {
            CompareServers(*found->second, server, changes);
            old.erase(found);
        }
    }
    for (const VirtualServer& server : before.servers) {
        if (old.count(server.group) != 0) {
            changes.push_back({"server", server.name, "presence", Present, Absent});
        }
    }
    Told told = ToldOf(before);
    for (const auto& problem : ToldOf(after)) {
        const std::string from = TakeSame(*problem.first, problem.second, told);
        Compare("problem", problem.first->object, problem.first->code, from, problem.second, changes);
    }
    for (const auto& gone : told) {
        changes.push_back({"problem", gone.first->object, gone.first->code, gone.second, std::string()});
    }
    return changes;
}

void KeepKnown(const ClusterPicture& before, ClusterPicture& now) {
    for (Node& node : now.nodes) {
        const Node* const known = FindNamed(before.nodes, node.name);
        if (known != nullptr && node.state == "unknown") {
            node = *known;
        }
    }
    for (Group& group : now.groups) {
        if (const Group* const known = FindNamed(before.groups, group.name)) {
            KeepState(*known, group);
        }
    }
    for (Resource& resource : now.resources) {
        if (const Resource* const known = FindNamed(before.resources, resource.name)) {
            const LeftOutResource* const leftOut = FindNamed(before.leftOut, resource.name);
            if (leftOut != nullptr && resource.type.empty()) { // the library was not asked of it
                now.leftOut.push_back(*leftOut);
            }
            KeepParts(*known, resource);
        }
    }
}

std::vector<Change> ChangesBetween(const ClusterPicture& before, const ClusterPicture& after) {
    std::vector<Change> changes;
    CompareLists("node", before.nodes, after.nodes, changes);
    CompareLists("group", before.groups, after.groups, changes);
    CompareLists("resource", before.resources, after.resources, changes);
    return changes;
}

} // namespace picture
