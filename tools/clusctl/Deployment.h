// Which deployment of the product the library goes by on this computer, and why.
#ifndef CLUSCTL_DEPLOYMENT_H
#define CLUSCTL_DEPLOYMENT_H

#include "CommandLine.h"

#include <string>

struct Deployment {
    const char* kind;   // in JSON: plain-server, single-copy-cluster, continuous-replication, cluster (of unknown mode)
    std::string reason; // the registry values that make it so
};

// As the product's registry key says, read as the library reads it.
Deployment ReadDeployment();

// For a quorum mode (CVirtualServerUtil::CLUSTER_QUORUM_MODE, or 0) of a cluster.
const char* KindOfCluster(int quorumMode);

// Adds the option --explain to a command whose answer depends on the deployment.
void AddExplain(CLI::App& command, bool& isExplained);

// Adds "deployment" to the document, and to the readable form when `isExplained`.
void AddDeployment(const Deployment& deployment, bool isExplained, Report& report);

#endif
