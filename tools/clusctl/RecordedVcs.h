// What a recording tells of a VCS cluster: its systems, groups and resources, with what its tools showed of each.
#ifndef CLUSCTL_RECORDEDVCS_H
#define CLUSCTL_RECORDEDVCS_H

#include "HeardObjects.h"

#include <Recording.h>

#include <string>
#include <vector>

struct RecordedVcs {
    typedef std::vector<std::string> Row;

    HeardObjects cluster; // one object without a name
    HeardObjects systems;
    HeardObjects groups;
    HeardObjects resources;
    std::vector<Row> groupLinks;    // as ShownConfiguration has them
    std::vector<Row> resourceLinks; // the one made last first
    bool areGroupLinksTold = false; // all of them
    bool areResourceLinksTold = false;
    bool hasChanged = false; // by what was recorded
};

RecordedVcs HearVcsRecording(const recording::Recording& recording);

#endif
