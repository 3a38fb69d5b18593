// Dependencies as a tree of lines, for a terminal.
#ifndef CLUSCTL_PICTURE_TREE_H
#define CLUSCTL_PICTURE_TREE_H

#include "PictureIndex.h"

#include <string>
#include <vector>

namespace picture {

enum class Direction {
    DependsOn, // below a resource stands what it depends on
    NeededBy   // below a resource stands what depends on it
};

struct TreeLine {
    std::string branches; // what leads to the name
    std::string name;
    const Resource* resource = nullptr; // null: one that the picture does not hold
    bool isRepeated = false;            // what belongs below it stands further up, below the same name
};

// The trees of some resources, one below the other. Each resource has what is below it once, so that there are no more
// lines than dependencies and roots. The picture has to outlive the lines.
std::vector<TreeLine> TreeOf(const PictureIndex& index, const std::vector<std::string>& roots, Direction direction);

// The members of a group on which no other member depends, and one of each circle, which no cluster should have. The
// product's come first, those that depend on nothing behind the others.
std::vector<std::string> RootsOf(const PictureIndex& index, const std::string& group);

} // namespace picture

#endif
