// Every public operation of the library, with arguments at random.
#ifndef HOSTILE_OPERATIONS_H
#define HOSTILE_OPERATIONS_H

#include "Attack.h"

#include "clus_Cluster.h"
#include "clus_VeritasCluster.h"
#include "clus_VirtualServerUtil.h"

#include <memory>
#include <vector>

namespace hostile {

// Of the protected members, too.
struct ServerUtil : CVirtualServerUtil {
    using CVirtualServerUtil::GetHomeDir;
};

// What many operations work on, one after another, until all of it is made anew.
struct SharedObjects {
    CCluster cluster;
    CClusterResource resources[4];
    CClusterGroup groups[3];
    CVeritasCluster veritas;
    ServerUtil servers;
};

struct Operation {
    const char* name;
    void (*run)(SharedObjects& shared);
};

const std::vector<Operation>& ClusterOperations();
const std::vector<Operation>& ServerOperations();
const std::vector<Operation>& VeritasOperations();

// Runs one with objects of its own, in the middle of another one; no deeper than that.
void Reenter();

} // namespace hostile

#endif
