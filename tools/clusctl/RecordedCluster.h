// What a recording tells of a failover cluster: its objects, with what was read of each.
#ifndef CLUSCTL_RECORDEDCLUSTER_H
#define CLUSCTL_RECORDEDCLUSTER_H

#include "Json.h"
#include "RecordedObjects.h"

#include <Recording.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

struct RecordedCluster {
    RecordedPart name;
    RecordedPart version;                               // the major number
    std::map<std::string, Json> classes;                // of types that were asked for it: [class, subclass]
    std::vector<RecordedObject> objects[RecordedKinds]; // in the cluster's order
    bool isListed[RecordedKinds] = {};                  // all that there are
    bool hasChanged = false;                            // by what was recorded

    const std::vector<RecordedObject>& Of(RecordedKind kind) const {
        return objects[static_cast<std::size_t>(kind)];
    }
};

// The parts: of nodes, networks and interfaces "state" (a number); of interfaces also "node" and "network"; of groups
// "owner", "ownerByResource", "preferredOwners", "common"; of resources "state", "group", "type", "id", "dependsOn",
// "possibleOwners", "common", "private", "class", "disk" and "flags" (whether it is the cluster's own). Of all "open",
// which is never told but may be refused.
RecordedCluster HearRecording(const recording::Recording& recording);

#endif
