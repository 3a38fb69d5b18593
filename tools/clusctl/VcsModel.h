// The live VCS cluster as a model of the VCS simulator: a main.cf, the types that it includes, and the states.
#ifndef CLUSCTL_VCSMODEL_H
#define CLUSCTL_VCSMODEL_H

#include "LogCapture.h"
#include "NewFile.h"

#include <cstddef>
#include <string>
#include <vector>

struct VcsModelSource {
    // The folder of the cluster's own main.cf; empty for that of this system (VCS_HOME), or of the simulator.
    std::wstring configuration;
    bool isMadeOfTools = false; // without looking at any main.cf
    bool showsSecrets = false;
};

struct VcsModel {
    std::vector<NewFolderFile> files;
    std::wstring copied; // the main.cf that was copied; empty when it was made of what the tools show
    std::size_t systems = 0;
    std::size_t groups = 0;
    std::size_t resources = 0;
    std::size_t masked = 0;            // secrets of the configuration
    std::vector<std::string> warnings; // why the cluster's own main.cf was not copied
    std::vector<std::string> doubts;   // what may not be as in the cluster, or is missing
};

// Asks the tools for configuration and states; nothing is changed. The configuration is a copy of the cluster's own
// main.cf where that can be read and names the same groups and resources as the tools, and is made of what these show
// otherwise. Throws Failure when the tools do not tell, or a folder was named and its main.cf is not that of the
// cluster.
VcsModel ReadVcsModel(const LogCapture& log, const VcsModelSource& source);

#endif
