// What a probe sees of systems and nodes that do not run.
#ifndef CLUSCTL_PROBEDOWN_H
#define CLUSCTL_PROBEDOWN_H

#include "Probe.h"

// "vcs-down-systems". What `ask` throws goes through.
void LookAtDownSystems(const AskTool& ask, ProbeAnswers& answers);

#endif
