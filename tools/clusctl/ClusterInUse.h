// Which cluster answers a command that asks whichever cluster there is.
#ifndef CLUSCTL_CLUSTERINUSE_H
#define CLUSCTL_CLUSTERINUSE_H

#include "Simulation.h"

#include <string>

// For this process, once: the kind of cluster that `asked` means. Answering::Either is the kind of the model of --model
// (`model`, empty without one), or of the simulated cluster that the environment names; else VCS when the product is
// configured for it, or when its tools are on the search path and no failover cluster answers; else a failover cluster,
// whether there is one or not. Without a model the libraries have to be loaded. Throws Failure when the model cannot be
// read.
Answering ChooseCluster(Answering asked, const std::wstring& model);

// What was chosen.
Answering ClusterInUse();

// Why, as a part of a sentence; empty when the product's settings alone say so, or every failover cluster would do.
const std::string& WhyClusterInUse();

#endif
