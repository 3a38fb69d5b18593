#include "Changes.h"

#include <map>

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

} // namespace

std::vector<Change> ChangesBetween(const ClusterPicture& before, const ClusterPicture& after) {
    std::vector<Change> changes;
    CompareLists("node", before.nodes, after.nodes, changes);
    CompareLists("group", before.groups, after.groups, changes);
    CompareLists("resource", before.resources, after.resources, changes);
    return changes;
}

} // namespace picture
