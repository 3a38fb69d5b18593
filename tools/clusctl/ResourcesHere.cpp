#include "ResourcesHere.h"

#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"

namespace {

// The names of the resources in a group, if this node owns it.
Names ListMembersHere(const CCluster& cluster, const std::wstring& name, Report& report) {
    Names members;
    const GroupHandle group = OpenGroup(cluster, name);
    std::wstring owner;
    if (!group || ReadGroupState(group.get(), owner) == ClusterGroupStateUnknown) {
        MarkUnread(report, "cannot tell whether the group " + Quoted(name) + " is on this node", GetLastError());
        return members;
    }
    if (!IsThisComputer(owner)) {
        return members;
    }
    const DWORD code = ListInGroup(group.get(), CLUSTER_GROUP_ENUM_CONTAINS, members);
    if (code != ERROR_SUCCESS) {
        MarkUnlisted(report, "cannot list the resources of the group " + Quoted(name), code);
    }
    return members;
}

} // namespace

Json ReadResourcesHere(const CCluster& cluster, const std::wstring& type, Report& report) {
    Json records = Json::array();
    for (const std::wstring& group : ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
        for (const std::wstring& name : ListMembersHere(cluster, group, report)) {
            const Json found = ReadResourceType(cluster, name, report);
            if (found.is_string() && common::IsSameName(common::ToUtf16(found.get<std::string>()), type)) {
                records.push_back(ReadResource(cluster, name, ResourceParts::Line, report));
            }
        }
    }
    return records;
}
