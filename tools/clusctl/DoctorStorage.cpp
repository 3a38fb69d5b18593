// The doctor's look at the disks of a product's resource, and at its data on them.
#include "DoctorParts.h"

#include "ClusterApi.h"
#include "CreationChecks.h"
#include "Text.h"

#include "common/Text.h"

#include <clus_VirtualServerUtil.h>

namespace {

// All that it depends on; the library asks for the first.
Names DisksOf(const CCluster& cluster, const Json& dependsOn, bool& isRead) {
    Names disks;
    isRead = dependsOn.is_array();
    for (const Json& each : isRead ? dependsOn : Json::array()) {
        const std::wstring name = common::ToUtf16(each.get<std::string>());
        const ResourceHandle handle = OpenResource(cluster, name);
        DWORD resourceClass = CLUS_RESCLASS_UNKNOWN;
        if (!handle || ReadResourceClass(handle.get(), resourceClass) != ERROR_SUCCESS) {
            isRead = false;
        } else if (resourceClass == CLUS_RESCLASS_STORAGE) {
            disks.push_back(name);
        }
    }
    return disks;
}

void DiagnosePaths(CClusterResource& disk, Findings& findings) {
    const wchar_t* const text = disk.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false);
    const std::wstring name = text == nullptr ? L"" : text;
    std::vector<std::wstring> paths;
    if (!GetDiskLettersFromResource(disk.GetResourceHandle(), paths) || paths.empty()) {
        findings.Add("disk-path-unknown", Printable(name), "None of its partitions has a path that can be told.",
                     "give the partition a drive letter, or mount it in a folder", "clusctl disk " + Quoted(name));
    }
}

// What may be mounted below a disk of the group: the cluster lets a disk depend on others of its group only.
Names MembersOf(const CCluster& cluster, const std::wstring& group) {
    try {
        return ListMembers(cluster, group);
    } catch (const Failure&) {
        return Names(); // told where the group is looked at
    }
}

// The data may be on any of the disks, as far as these tell their paths.
void DiagnosePlace(const CCluster& cluster, const Names& disks, const std::wstring& group, const std::wstring& dataPath,
                   Findings& findings) {
    const Names members = MembersOf(cluster, group);
    std::wstring first;
    std::string why;
    for (const std::wstring& name : disks) {
        const ResourceHandle disk = OpenResource(cluster, name);
        std::vector<std::wstring> paths;
        if (!disk || !GetDiskLettersFromResource(disk.get(), paths) || paths.empty()) {
            return;
        }
        try {
            RequirePathOnDisk(cluster, name, members, dataPath);
            return;
        } catch (const Failure& failure) {
            if (why.empty()) {
                first = name;
                why = AsSentence(failure.what());
            }
        }
    }
    if (!why.empty()) {
        findings.Add("data-path-off-disk", Printable(first), why,
                     "let the product's resource depend on the disk of its data path");
    }
}

} // namespace

std::string OnResource(const std::string& verb, const std::wstring& resource, const std::string& rest) {
    return "cluster res " + Quoted(resource) + " /" + verb + rest;
}

void DiagnoseStorage(const CCluster& cluster, CClusterResource& resource, const Json& detail,
                     const std::wstring& dataPath, bool isHere, Findings& findings) {
    const std::wstring name = TextMember(detail, "name");
    bool isRead = true;
    const Names disks = DisksOf(cluster, detail["dependsOn"], isRead);
    CClusterResource disk;
    if (!resource.GetResourceStorageDependency(disk)) {
        if (isRead && disks.empty()) {
            findings.Add("disk-dependency-missing", Printable(name), "It depends on no disk.",
                         OnResource("adddep", name, ":DISK"));
        } else if (detail["dependsOn"].is_array()) {
            findings.AddQuestion("product-detail-unread", Printable(name),
                                 "Whether it depends on a disk cannot be read.", "clusctl resources " + Quoted(name));
        }
        return;
    }
    if (!isHere) {
        return; // only there its paths can be told
    }
    DiagnosePaths(disk, findings);
    if (IsAbsolutePath(dataPath)) {
        DiagnosePlace(cluster, disks, TextMember(detail, "group"), dataPath, findings);
    }
}
