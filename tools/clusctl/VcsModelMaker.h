// The model of the VCS cluster that a recording was made of, as far as the recording tells.
#ifndef CLUSCTL_VCSMODELMAKER_H
#define CLUSCTL_VCSMODELMAKER_H

#include "Json.h"

#include <Recording.h>

#include <cstddef>
#include <string>
#include <vector>

struct RecordedVcsModel {
    std::string mainCf;
    Json states; // docs/vcs-simulator.md
    std::size_t systems = 0;
    std::size_t groups = 0;
    std::size_t resources = 0;
    std::vector<std::string> missing; // what had to be made up, or left out, a sentence each
};

// What "vcs snapshot" makes of what the tools show. Throws vcssim::CfError when that is no configuration.
RecordedVcsModel MakeVcsModel(const recording::Recording& recording);

#endif
