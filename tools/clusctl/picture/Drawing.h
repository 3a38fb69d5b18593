// What is drawn of groups, whatever the format: boxes, and lines from what depends to what it depends on.
#ifndef CLUSCTL_PICTURE_DRAWING_H
#define CLUSCTL_PICTURE_DRAWING_H

#include "PictureIndex.h"
#include "Layout.h"

#include <string>
#include <vector>

namespace picture {

enum class Look {
    Plain,
    Product,
    Base,   // the product rests on it
    Foreign // of another group, or one that cannot be read
};

// Texts are printable: control characters have a visible form.
struct Box {
    std::string name;
    std::string type; // empty: not known
    std::string state;
    Look look = Look::Plain;
    Condition condition = Condition::Unknown;
};

struct GroupDrawing {
    std::string title;
    Condition condition = Condition::Unknown;
    std::vector<Box> boxes;
    std::vector<Line> lines;
};

// Of some groups, in this order.
std::vector<GroupDrawing> DrawGroups(const PictureIndex& index, const std::vector<const Group*>& groups);

// Of all groups, and of the resources whose group is not known.
std::vector<GroupDrawing> DrawCluster(const PictureIndex& index);

} // namespace picture

#endif
