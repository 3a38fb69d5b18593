// Whether the product's resource of a virtual server can be created, and why it could not.
#ifndef CLUSCTL_CREATIONCHECKS_H
#define CLUSCTL_CREATIONCHECKS_H

#include "LibraryCalls.h"
#include "ServerChecks.h"

#include <string>
#include <vector>

struct CreationRequest {
    std::wstring server;
    std::wstring name;
    std::wstring dataPath; // complete; empty: not checked
    bool isSingleCopy;
    std::wstring disk; // empty: the System Attendant's
};

// Throws Failure when the product's resource cannot be created. The resources that it is going to depend on, in the
// order in which the library adds them. What could not be checked is a warning.
std::vector<std::wstring> RequireCreatable(CCluster& cluster, const CreationRequest& request, Report& report);

// After the library could not create it: tells what its last call was refused, and what is left.
[[noreturn]] void FailToCreate(CCluster& cluster, const CreationRequest& request, const LibraryCall& last,
                               const std::vector<std::wstring>& dependencies);

// What the new resource lacks that the library has told the cluster, and that the product does not work without:
// dependencies and the data path, in words; empty when it has them. `record` is the new resource in detail.
std::string MissingParts(const CreationRequest& request, const Json& record,
                         const std::vector<std::wstring>& dependencies);

// Adds a warning for each possible owner that the new resource lacks, and when it would not be restarted as the product
// wants it. `record` is the new resource in detail.
void WarnOfMissingParts(CCluster& cluster, const CreationRequest& request, const Json& record, Report& report);

// Throws Failure when a path is on none of the disk's, or on another disk that is mounted further down: of `mounted`,
// those that are online here are asked for their paths. False when it cannot be told: the disk does not tell the path
// of each of its partitions.
bool RequirePathOnDisk(const CCluster& cluster, const std::wstring& diskName, const Names& mounted,
                       const std::wstring& path);

// Whether a path begins with a drive: "F:\Zyntra Gate".
bool IsAbsolutePath(const std::wstring& path);

#endif
