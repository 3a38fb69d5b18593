// What became different between two pictures of a cluster.
#ifndef CLUSCTL_PICTURE_CHANGES_H
#define CLUSCTL_PICTURE_CHANGES_H

#include "ClusterPicture.h"
#include "Health.h"

#include <string>
#include <vector>

namespace picture {

struct Change {
    const char* kind; // "node", "group", "resource", "server" or "problem"
    std::string name;
    const char* what; // "state", "node" (where it is), "group" or "presence", of servers also "name", "product" and
                      // "protected", of a problem its code
    std::string from; // empty: it was not known, nowhere, or no problem; of presence "absent" or "present"
    std::string to;
};

// Nodes first, then groups, then resources, each in the order of the later picture, those that are gone last.
std::vector<Change> ChangesBetween(const ClusterPicture& before, const ClusterPicture& after);

// Servers first, which are the same as long as their group is, then problems: "critical: the resource is failed".
std::vector<Change> ChangesBetween(const Health& before, const Health& after);

// Fills what could not be read of what was there before: a node's, group's or resource's state, a resource's type,
// group and dependencies.
void KeepKnown(const ClusterPicture& before, ClusterPicture& now);

} // namespace picture

#endif
