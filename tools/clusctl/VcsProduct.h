// "vcs product create": the product's resource set of a group.
#ifndef CLUSCTL_VCSPRODUCT_H
#define CLUSCTL_VCSPRODUCT_H

#include "LogCapture.h"
#include "Report.h"
#include "VcsValues.h"

#include <clus_VeritasCluster.h>

#include <string>

struct ProductCreateOptions {
    std::wstring group;
    std::wstring mount;
    std::wstring regRep;
    std::wstring dataPath;
    bool quarantine = false;
    bool remoteConfig = false;
    std::wstring accountGroup;
    std::wstring accountUser;
    int delayOnline = 600;
    int delayOffline = 600;
    bool opens = false;
};

// The set as it is going to be.
struct PlannedProduct {
    CVeritasVirtualServerInfo info;
    VcsNames before; // all resources of the cluster
};

// Throws Failure, or WrongUsage, when the set cannot be created. Changes nothing.
PlannedProduct RequireVcsCreatable(const LogCapture& log, const ProductCreateOptions& options);

// The options without which the set of a group cannot be created, as far as VCS shows what they may be, and that which
// opens the configuration. Throws Failure when VCS cannot be asked.
ProductCreateOptions NeededOptions(const LogCapture& log, const std::wstring& group);

// Throws Failure, or WrongUsage before anything is changed.
Report CreateVcsProduct(const LogCapture& log, const ProductCreateOptions& options);

// One resource of a report: what became of it.
Json ProductRecord(const std::wstring& name, const std::wstring& service, bool existed);
extern const Columns ProductColumns;

#endif
