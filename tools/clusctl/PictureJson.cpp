#include "PictureJson.h"

#include "picture/PictureIndex.h"

#include <set>

using namespace picture;

namespace {

Json StatesJson(const std::vector<StateOnNode>& states) {
    Json records = Json::array();
    for (const StateOnNode& each : states) {
        records.push_back({{"node", each.node}, {"state", each.state}});
    }
    return records;
}

} // namespace

Json TextOrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

Json ClusterJson(const ClusterPicture& cluster) {
    const char* const kind = cluster.kind == Kind::Vcs ? "vcs" : cluster.kind == Kind::Failover ? "failover" : "none";
    return {{"kind", kind}, {"name", TextOrNull(cluster.name)}};
}

Json NodeRecords(const ClusterPicture& cluster) {
    Json records = Json::array();
    for (const Node& node : cluster.nodes) {
        records.push_back({{"name", node.name}, {"state", node.state}, {"up", node.isUp}});
    }
    return records;
}

Json GroupRecord(const Group& group) {
    return {{"name", group.name},
            {"state", group.state},
            {"node", TextOrNull(group.node)},
            {"states", StatesJson(group.states)}};
}

Json ResourceRecords(const ClusterPicture& cluster, const std::vector<const Resource*>& resources) {
    const PictureIndex index(cluster);
    const std::set<std::string>& base = index.BaseOfProduct();
    Json records = Json::array();
    for (const Resource* const resource : resources) {
        records.push_back({
            {"name", resource->name},
            {"type", TextOrNull(resource->type)},
            {"group", TextOrNull(resource->group)},
            {"state", resource->state},
            {"node", TextOrNull(resource->node)},
            {"states", StatesJson(resource->states)},
            {"part", resource->role == Role::Product   ? Json("product")
                     : base.count(resource->name) != 0 ? Json("product-base")
                                                       : Json()},
            {"dependsOn", resource->hasDependenciesRead ? Json(resource->dependsOn) : Json()},
        });
    }
    return records;
}
