// What the members that create, switch and delete the product's own cluster resource lean on.
#ifndef CLUS_PRODUCTRESOURCE_H
#define CLUS_PRODUCTRESOURCE_H

#include "clus_Cluster.h"

namespace clus {

// What finding the product's resources logs for switching and for deletion.
struct FindTexts {
    bool showsProgress;
    const wchar_t* noNetworkName;
    const wchar_t* cannotEnum;
    const wchar_t* noneFound;
    const wchar_t* severalFound;
};

extern const FindTexts FindToSwitch;
extern const FindTexts FindToDelete;

// The product resources in a virtual server's group: those of the single-copy type, or the CCR ones when there are
// none. Opens the cluster.
bool FindProductResources(CCluster& cluster, const wchar_t* networkName, const FindTexts& texts,
                          std::list<std::wstring>& names);

// What switching the product's resources on and switching them off do not have in common.
struct ResourceSwitch {
    CClusterResource::RES_STATE (CClusterResource::*operation)();
    CClusterResource::RES_STATE reached;
    CClusterResource::RES_STATE pending;
    const wchar_t* progressText;
    const wchar_t* reachedText;
    const wchar_t* pendingText;
    const wchar_t* successText;
    const wchar_t* failureText;
};

extern const ResourceSwitch SwitchOn;
extern const ResourceSwitch SwitchOff;

// Switches every product resource of a virtual server. Once false the result stays false, and the later ones still get
// their attempt. `timeout` is in milliseconds.
bool SwitchProductResources(const wchar_t* networkName, bool wait, DWORD timeout, const ResourceSwitch& how);

// First pass of the deletion: deletes what this node owns; names of resources that refuse are kept and these taken
// offline.
bool DeleteOwnedResources(CCluster& cluster, const std::list<std::wstring>& names, std::list<std::wstring>& refusing);

// Second pass: deletes the refusing resources as they come offline. One that does not in time stays, which is no
// failure.
bool DeleteWhenOffline(CCluster& cluster, const std::list<std::wstring>& names);

// Makes the node a possible owner of the resource. A cluster that keeps refusing is given up on: the node is left out.
void AddPossibleOwner(CClusterResource& resource, const CClusterNode& node, const wchar_t* nodeName);

} // namespace clus

#endif
