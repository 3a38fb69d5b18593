// What became different between two pictures of a cluster.
#ifndef CLUSCTL_PICTURE_CHANGES_H
#define CLUSCTL_PICTURE_CHANGES_H

#include "ClusterPicture.h"

#include <string>
#include <vector>

namespace picture {

struct Change {
    const char* kind; // "node", "group" or "resource"
    std::string name;
    const char* what; // "state", "node" (where it is), "group" or "presence"
    std::string from; // empty: it was not known, or nowhere; of presence "absent" or "present"
    std::string to;
};

// Nodes first, then groups, then resources, each in the order of the later picture, those that are gone last.
std::vector<Change> ChangesBetween(const ClusterPicture& before, const ClusterPicture& after);

} // namespace picture

#endif
