// Which deployment of the product the library goes by on this computer, and why.
#ifndef CLUSCTL_DEPLOYMENT_H
#define CLUSCTL_DEPLOYMENT_H

#include "CommandLine.h"

#include <string>

struct Deployment {
    // In JSON: plain-server, single-copy-cluster, continuous-replication, cluster (of unknown mode), vcs.
    const char* kind;
    std::string reason; // the registry values that make it so, and what else does
};

// Of a kind that the option --mode names.
constexpr char ModeReason[] = "--mode says so";

// As the product's registry key says, read as the library reads it; vcs while VCS is asked.
Deployment ReadDeployment();

// The same, and why a failover cluster is asked, where whichever there is may be.
Deployment DeploymentAsked();

// Whether the product's key says that this computer is to be a node of a failover cluster. Also an account that may
// only read the key learns it; the library takes such a computer for a plain server.
enum class IntendedCluster {
    None,
    NotInstalled,
    One,
    Unknown // the key cannot be read
};
IntendedCluster ReadIntendedCluster();

// For a quorum mode (CVirtualServerUtil::CLUSTER_QUORUM_MODE, or 0) of a cluster.
const char* KindOfCluster(int quorumMode);

// Adds the option --explain to a command whose answer depends on the deployment.
void AddExplain(CLI::App& command, bool& isExplained);
CLI::Option& AddExplain(CLI::App& command);

// Whether a command's answer depends on the deployment, and whether the user asked which it is.
bool DependsOnDeployment(const CLI::App& command);
bool IsExplained(const CLI::App& command);

// What a command that could not do its work went by.
Deployment DeploymentOf(const CLI::App& command);

Json DeploymentJson(const Deployment& deployment);

// Adds "deployment" to the document, and to the readable form when `isExplained`.
void AddDeployment(const Deployment& deployment, bool isExplained, Report& report);

#endif
