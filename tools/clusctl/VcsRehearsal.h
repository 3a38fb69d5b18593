// What a dry run of "vcs product ..." shows.
#ifndef CLUSCTL_VCSREHEARSAL_H
#define CLUSCTL_VCSREHEARSAL_H

#include "Report.h"
#include "ToolRuns.h"
#include "VcsDryRun.h"

#include <vector>

// The commands that ran, and what changed in the configuration.
Report RehearsalReport(const std::vector<ToolRun>& runs, const VcsDryRun& dryRun);

#endif
