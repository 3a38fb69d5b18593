#include "Drawing.h"

#include "Printable.h"

#include <map>
#include <set>

namespace picture {

namespace {

Box BoxOf(const Resource& resource, const std::set<std::string>& base) {
    Box box;
    box.name = Printable(resource.name);
    box.type = Printable(resource.type);
    box.state = Printable(resource.state);
    box.condition = resource.condition;
    box.look = resource.role == Role::Product   ? Look::Product
               : base.count(resource.name) != 0 ? Look::Base
                                                : Look::Plain;
    return box;
}

// A resource that is drawn only because a member depends on it.
Box ForeignBox(const ClusterPicture& cluster, const std::string& name) {
    Box box;
    if (const Resource* const resource = ResourceNamed(cluster, name)) {
        box = BoxOf(*resource, {});
    } else {
        box.name = Printable(name);
        box.state = "unknown";
    }
    box.look = Look::Foreign;
    return box;
}

GroupDrawing DrawMembers(const ClusterPicture& cluster, const std::string& group, const std::set<std::string>& base) {
    GroupDrawing drawing;
    const std::vector<const Resource*> members = MembersOf(cluster, group);
    std::map<std::string, std::size_t> places;
    for (const Resource* const member : members) {
        if (places.emplace(member->name, drawing.boxes.size()).second) {
            drawing.boxes.push_back(BoxOf(*member, base));
        }
    }
    for (const Resource* const member : members) {
        for (const std::string& name : member->dependsOn) {
            const auto place = places.emplace(name, drawing.boxes.size());
            if (place.second) {
                drawing.boxes.push_back(ForeignBox(cluster, name));
            }
            drawing.lines.push_back({places[member->name], place.first->second});
        }
    }
    return drawing;
}

} // namespace

std::vector<GroupDrawing> DrawGroups(const ClusterPicture& cluster, const std::vector<const Group*>& groups) {
    const std::set<std::string> base = BaseOfProduct(cluster);
    std::vector<GroupDrawing> drawings;
    for (const Group* const group : groups) {
        GroupDrawing drawing = DrawMembers(cluster, group->name, base);
        drawing.title =
            Printable(group->name) + ": " + group->state + (group->node.empty() ? "" : " on " + Printable(group->node));
        drawing.condition = group->condition;
        drawings.push_back(drawing);
    }
    return drawings;
}

std::vector<GroupDrawing> DrawCluster(const ClusterPicture& cluster) {
    std::vector<const Group*> groups;
    for (const Group& group : cluster.groups) {
        groups.push_back(&group);
    }
    std::vector<GroupDrawing> drawings = DrawGroups(cluster, groups);
    GroupDrawing homeless = DrawMembers(cluster, std::string(), BaseOfProduct(cluster));
    if (!homeless.boxes.empty()) {
        homeless.title = "Group not known";
        drawings.push_back(homeless);
    }
    return drawings;
}

} // namespace picture
