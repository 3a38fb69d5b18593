// What a dry run of "vcs product create" does differently, and shows.
#ifndef CLUSCTL_VCSREHEARSAL_H
#define CLUSCTL_VCSREHEARSAL_H

#include "Report.h"
#include "ToolRuns.h"
#include "VcsDryRun.h"
#include "VcsProduct.h"
#include "VcsValues.h"

#include <clus_VeritasCluster.h>

#include <vector>

// Switches the new resources on in the library's order, but does not go on, as it does, to wait for the host service of
// this computer: a rehearsal has none.
void RehearseSwitchingOn(const ProductCreateOptions& options, const CVeritasVirtualServerInfo& info);

// The commands that ran, and what changed in the configuration.
Report RehearsalReport(const std::vector<ToolRun>& runs, const VcsDryRun& dryRun);

#endif
