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
Box ForeignBox(const PictureIndex& index, const std::string& name) {
    Box box;
    if (const Resource* const resource = index.ResourceNamed(name)) {
        box = BoxOf(*resource, {});
    } else {
        box.name = Printable(name);
        box.state = "unknown";
    }
    box.look = Look::Foreign;
    return box;
}

GroupDrawing DrawMembers(const PictureIndex& index, const std::string& group) {
    const std::set<std::string>& base = index.BaseOfProduct();
    GroupDrawing drawing;
    const std::vector<const Resource*>& members = index.MembersOf(group);
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
                drawing.boxes.push_back(ForeignBox(index, name));
            }
            drawing.lines.push_back({places[member->name], place.first->second});
        }
    }
    return drawing;
}

} // namespace

std::vector<GroupDrawing> DrawGroups(const PictureIndex& index, const std::vector<const Group*>& groups) {
    std::vector<GroupDrawing> drawings;
    for (const Group* const group : groups) {
        GroupDrawing drawing = DrawMembers(index, group->name);
        drawing.title =
            Printable(group->name) + ": " + group->state + (group->node.empty() ? "" : " on " + Printable(group->node));
        drawing.condition = group->condition;
        drawings.push_back(drawing);
    }
    return drawings;
}

std::vector<GroupDrawing> DrawCluster(const PictureIndex& index) {
    std::vector<const Group*> groups;
    for (const Group& group : index.Cluster().groups) {
        groups.push_back(&group);
    }
    std::vector<GroupDrawing> drawings = DrawGroups(index, groups);
    GroupDrawing homeless = DrawMembers(index, std::string());
    if (!homeless.boxes.empty()) {
        homeless.title = "Group not known";
        drawings.push_back(homeless);
    }
    return drawings;
}

} // namespace picture
