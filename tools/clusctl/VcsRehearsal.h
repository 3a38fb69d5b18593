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

// Switches the new resources on in the order in which the library does it. It is the library's rule, repeated because
// the library goes on to wait for the host service of this computer, for as long as the resources' delay says, which
// the rehearsal has to show. The tests compare the commands of both.
void RehearseSwitchingOn(const ProductCreateOptions& options, const CVeritasVirtualServerInfo& info);

// The commands that ran, and what changed in the configuration.
Report RehearsalReport(const std::vector<ToolRun>& runs, const VcsDryRun& dryRun);

#endif
