#include "ClusterObjects.h"

#include "ClusterApi.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"

#include "common/AnswerRoom.h"
#include "core/ResourceTypes.h"
#include "core/ValueList.h"

namespace {

// Null, and said, when the cluster does not give it. One that is there and empty stays a text. `what` is worded only
// when it is needed: there are many resources.
template <typename What> Json ReadWorded(HRESOURCE resource, DWORD controlCode, const What& what, Report& report) {
    std::vector<unsigned char> answer;
    DWORD code = 0;
    if (!QueryResource(resource, controlCode, answer, code)) {
        MarkUnread(report, what(), code);
        return Json();
    }
    return clus::TextInBuffer(answer.data(), answer.size(), 0);
}

Json ReadText(HRESOURCE resource, DWORD controlCode, const std::string& what, Report& report) {
    return ReadWorded(
        resource, controlCode, [&what]() { return what; }, report);
}

Json ReadType(HRESOURCE resource, const std::wstring& name, Report& report) {
    return ReadWorded(
        resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, [&name]() { return "cannot read the type of " + Quoted(name); },
        report);
}

// Null when a list was not read; what was read of it is no list.
Json NamesOrNull(DWORD code, const Names& names, const std::string& what, Report& report) {
    if (code == ERROR_SUCCESS) {
        return Json(names);
    }
    MarkUnlisted(report, what, code);
    return Json();
}

Json RelatedNames(HRESOURCE resource, DWORD kind, const std::string& what, Report& report) {
    Names names;
    const DWORD code = ListRelated(resource, kind, names);
    return NamesOrNull(code, names, what, report);
}

// The device name of the first partition. Null also of a storage that is no disk.
Json ReadDiskDevice(HRESOURCE resource, const std::string& what, Report& report) {
    std::vector<unsigned char> list;
    DWORD code = 0;
    if (!QueryResource(resource, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, list, code)) {
        if (code != ERROR_INVALID_FUNCTION) {
            MarkUnread(report, what, code);
        }
        return Json();
    }
    try {
        const Json partitions = DiskJson(list)["partitions"];
        return partitions.empty() ? Json() : partitions[0]["device"];
    } catch (const Failure& malformed) {
        report.MarkIncomplete(what + ": " + malformed.what());
        return Json();
    }
}

// Null, and said, when the resource does not give them, or in a form that makes no sense.
Json ReadProperties(HRESOURCE resource, DWORD controlCode, const std::string& what, Report& report) {
    std::vector<unsigned char> list;
    DWORD code = 0;
    if (!QueryResource(resource, controlCode, list, code)) {
        MarkUnread(report, what, code);
        return Json();
    }
    try {
        return PropertiesJson(list);
    } catch (const Failure& malformed) {
        report.MarkIncomplete(what + ": " + malformed.what());
        return Json();
    }
}

Json RestartMeaning(const Json& action) {
    if (action == ClusterResourceDontRestart) {
        return "no restart";
    }
    if (action == ClusterResourceRestartNoNotify) {
        return "restart, without failing the group over";
    }
    if (action == ClusterResourceRestartNotify) {
        return "restart, then fail the group over";
    }
    return action.is_null() ? Json() : Json("unknown");
}

void ReadResourceDetail(HRESOURCE resource, ResourceParts parts, Json& record, Report& report) {
    const std::string of = " of " + Quoted(record["name"].get<std::string>());
    const Json storedName =
        ReadText(resource, CLUSCTL_RESOURCE_GET_NAME, "cannot read the name as it is stored" + of, report);
    if (!storedName.is_null()) {
        record["name"] = storedName; // the caller's letter case may differ
    }
    record["id"] = ReadText(resource, CLUSCTL_RESOURCE_GET_ID, "cannot read the ID" + of, report);
    record["dependsOn"] =
        RelatedNames(resource, CLUSTER_RESOURCE_ENUM_DEPENDS, "cannot list the dependencies" + of, report);
    record["dependants"] =
        RelatedNames(resource, CLUSTER_RESOURCE_ENUM_PROVIDES, "cannot list the dependants" + of, report);
    record["possibleOwners"] =
        RelatedNames(resource, CLUSTER_RESOURCE_ENUM_NODES, "cannot list the possible owners" + of, report);
    const Json common = ReadProperties(resource, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES,
                                       "cannot read the common properties" + of, report);
    const bool hasAction = common.is_object() && common.contains("RestartAction");
    record["restartAction"] = hasAction ? common["RestartAction"] : Json();
    record["restartMeaning"] = RestartMeaning(record["restartAction"]);
    Json properties = ReadProperties(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES,
                                     "cannot read the private properties" + of, report);
    if (parts != ResourceParts::DetailWithSecrets) {
        MaskSecretProperties(properties);
    }
    record["privateProperties"] = properties;
    if (record["type"] == Json(clus::NetworkNameType)) {
        record["networkName"] =
            ReadText(resource, CLUSCTL_RESOURCE_GET_NETWORK_NAME, "cannot read the network name" + of, report);
    }
    DWORD resourceClass = CLUS_RESCLASS_UNKNOWN;
    const DWORD code = ReadResourceClass(resource, resourceClass);
    if (code != ERROR_SUCCESS) {
        MarkUnread(report, "cannot tell whether it is a disk" + of, code);
    } else if (resourceClass == CLUS_RESCLASS_STORAGE) {
        record["diskDevice"] = ReadDiskDevice(resource, "cannot read the disk information" + of, report);
    }
}

// Reads names one by one until there are no more. The code of the one that could not be read.
template <typename Read> DWORD ReadNames(const Read& read, Names& names) {
    std::vector<wchar_t> name(64);
    for (DWORD i = 0;;) {
        auto length = static_cast<DWORD>(name.size());
        const DWORD code = read(i, name.data(), &length);
        if (code == ERROR_SUCCESS) {
            names.push_back(common::NameIn(name));
            ++i;
        } else if (code != ERROR_MORE_DATA || !common::GrowForName(name, length)) {
            return code == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : code;
        }
    }
}

struct ObjectKind {
    CCluster::CCLUSTER_OBJ_ENUM kind;
    DWORD mask;
    const char* plural;
};

const ObjectKind ObjectKinds[] = {
    {CCluster::CCLUSTER_OBJ_RESOURCE, CLUSTER_ENUM_RESOURCE, "resources"},
    {CCluster::CCLUSTER_OBJ_NODE, CLUSTER_ENUM_NODE, "nodes"},
    {CCluster::CCLUSTER_OBJ_GROUP, CLUSTER_ENUM_GROUP, "groups"},
};

const ObjectKind& Find(CCluster::CCLUSTER_OBJ_ENUM kind) {
    for (const ObjectKind& known : ObjectKinds) {
        if (known.kind == kind) {
            return known;
        }
    }
    throw Failure("there is no such kind of object");
}

// The storage resources among the members of a group.
Json ReadDisks(const CCluster& cluster, const Names& members, Report& report) {
    Json disks = Json::array();
    for (const std::wstring& name : members) {
        const ResourceHandle resource = OpenResource(cluster, name);
        DWORD resourceClass = CLUS_RESCLASS_UNKNOWN;
        const DWORD code = resource ? ReadResourceClass(resource.get(), resourceClass) : GetLastError();
        if (code != ERROR_SUCCESS) {
            MarkUnread(report, "cannot tell whether " + Quoted(name) + " is a disk", code);
        } else if (resourceClass == CLUS_RESCLASS_STORAGE) {
            disks.push_back(name);
        }
    }
    return disks;
}

} // namespace

void MarkUnread(Report& report, const std::string& what, DWORD code) {
    report.MarkIncomplete(code == ERROR_SUCCESS ? what : what + ": " + ErrorText(code));
    if (IsLost(code)) {
        report.MarkLost(code);
    }
}

void MarkUnlisted(Report& report, const std::string& what, DWORD code) {
    MarkUnread(report, what, code);
    if (code == ERROR_INVALID_HANDLE) {
        report.MarkLost(code);
    }
}

Failure FailureOfList(const std::string& what, DWORD code, const ErrorKind& otherwise) {
    return Failure::OfCode(what, code, code == ERROR_INVALID_HANDLE ? Errors::ClusterLost : otherwise);
}

const Columns& ResourceTitles() {
    static const Columns titles = {
        {"name", "Resource"},
        {"type", "Type"},
        {"group", "Group"},
        {"owner", "Owner"},
        {"ownerState", "Owner is"},
        {"state", "State"},
        {"id", "ID"},
        {"dependsOn", "Depends on"},
        {"dependants", "Needed by"},
        {"possibleOwners", "Possible owners"},
        {"restartAction", "Restart action"},
        {"restartMeaning", "Restart action means"},
        {"privateProperties", "Private properties"},
        {"networkName", "Network name"},
        {"diskDevice", "Disk device"},
    };
    return titles;
}

DWORD ListInGroup(HGROUP group, DWORD kind, Names& names) {
    const HGROUPENUM list = ClusterGroupOpenEnum(group, kind);
    if (list == nullptr) {
        return GetLastError();
    }
    DWORD type = 0;
    const DWORD code = ReadNames(
        [&](DWORD i, wchar_t* name, DWORD* length) { return ClusterGroupEnum(list, i, &type, name, length); }, names);
    ClusterGroupCloseEnum(list);
    return code;
}

Names ListMembers(const CCluster& cluster, const std::wstring& groupName) {
    const GroupHandle group = RequireGroup(cluster, groupName);
    Names names;
    const DWORD code = ListInGroup(group.get(), CLUSTER_GROUP_ENUM_CONTAINS, names);
    if (code != ERROR_SUCCESS) {
        throw FailureOfList("cannot list the resources of the group " + Quoted(groupName), code, Errors::Incomplete);
    }
    return names;
}

DWORD ListRelated(HRESOURCE resource, DWORD kind, Names& names) {
    const HRESENUM list = ClusterResourceOpenEnum(resource, kind);
    if (list == nullptr) {
        return GetLastError();
    }
    DWORD type = 0;
    const DWORD code = ReadNames(
        [&](DWORD i, wchar_t* name, DWORD* length) { return ClusterResourceEnum(list, i, &type, name, length); },
        names);
    ClusterResourceCloseEnum(list);
    return code;
}

void OpenLocalCluster(CCluster& cluster) {
    if (!cluster.OpenByLPC()) {
        throw FailureToOpenCluster(GetLastError());
    }
}

ResourceHandle OpenResource(const CCluster& cluster, const std::wstring& name) {
    return ResourceHandle(OpenClusterResource(cluster.GetHandle(), name.c_str()));
}

GroupHandle OpenGroup(const CCluster& cluster, const std::wstring& name) {
    return GroupHandle(OpenClusterGroup(cluster.GetHandle(), name.c_str()));
}

NodeHandle OpenNode(const CCluster& cluster, const std::wstring& name) {
    return NodeHandle(OpenClusterNode(cluster.GetHandle(), name.c_str()));
}

ResourceHandle RequireResource(const CCluster& cluster, const std::wstring& name) {
    ResourceHandle resource = OpenResource(cluster, name);
    if (!resource) {
        throw Failure::OfCode("there is no resource " + Quoted(name) + " that can be opened", GetLastError(),
                              Errors::ResourceNotFound);
    }
    return resource;
}

GroupHandle RequireGroup(const CCluster& cluster, const std::wstring& name) {
    GroupHandle group = OpenGroup(cluster, name);
    if (!group) {
        throw Failure::OfCode("there is no group " + Quoted(name) + " that can be opened", GetLastError(),
                              Errors::GroupNotFound);
    }
    return group;
}

Names ListObjects(const CCluster& cluster, DWORD mask, const char* plural) {
    Names names;
    DWORD code = ERROR_SUCCESS;
    const HCLUSENUM list = ClusterOpenEnum(cluster.GetHandle(), mask);
    if (list == nullptr) {
        code = GetLastError();
    } else {
        DWORD type = 0;
        code = ReadNames(
            [&](DWORD i, wchar_t* name, DWORD* length) { return ClusterEnum(list, i, &type, name, length); }, names);
        ClusterCloseEnum(list);
    }
    if (code != ERROR_SUCCESS) {
        throw FailureOfList(std::string("cannot list the cluster's ") + plural, code, Errors::Incomplete);
    }
    return names;
}

Names ListNames(const CCluster& cluster, CCluster::CCLUSTER_OBJ_ENUM kind) {
    const ObjectKind& known = Find(kind);
    return ListObjects(cluster, known.mask, known.plural);
}

Names ListResourceTypes(const CCluster& cluster) {
    return ListObjects(cluster, CLUSTER_ENUM_RESTYPE, "resource types");
}

std::wstring ReadClusterName(const CCluster& cluster) {
    std::vector<wchar_t> name(64);
    for (;;) {
        auto length = static_cast<DWORD>(name.size());
        const DWORD code = GetClusterInformation(cluster.GetHandle(), name.data(), &length, nullptr);
        if (code == ERROR_SUCCESS) {
            return common::NameIn(name);
        }
        if (code != ERROR_MORE_DATA || !common::GrowForName(name, length)) {
            throw Failure::OfCode("cannot read the cluster's name", code);
        }
    }
}

Json ReadResource(const CCluster& cluster, const std::wstring& name, ResourceParts parts, Report& report) {
    Json record;
    record["name"] = name;
    record["type"] = nullptr;
    record["group"] = nullptr;
    record["owner"] = nullptr;
    record["state"] = "unknown";
    const ResourceHandle resource = OpenResource(cluster, name);
    if (!resource) {
        MarkUnread(report, "cannot open the resource " + Quoted(name), GetLastError());
        return record;
    }
    const HRESOURCE handle = resource.get();
    record["type"] = ReadType(handle, name, report);
    std::wstring owner;
    std::wstring group;
    const CLUSTER_RESOURCE_STATE state = ReadResourceState(handle, owner, group);
    if (state == ClusterResourceStateUnknown) {
        MarkUnread(report, "cannot read the state of " + Quoted(name), GetLastError());
    } else {
        record["group"] = group;
        record["owner"] = owner;
        record["state"] = StateWord(state);
    }
    if (parts != ResourceParts::Line) {
        ReadResourceDetail(handle, parts, record, report);
    }
    return record;
}

Json ReadResourceType(const CCluster& cluster, const std::wstring& name, Report& report) {
    const ResourceHandle resource = OpenResource(cluster, name);
    if (!resource) {
        MarkUnread(report, "cannot open the resource " + Quoted(name), GetLastError());
        return Json();
    }
    return ReadType(resource.get(), name, report);
}

Json ReadGroup(const CCluster& cluster, const std::wstring& name, bool detail, Report& report) {
    Json record;
    record["name"] = name;
    record["owner"] = nullptr;
    record["state"] = "unknown";
    record["resources"] = nullptr;
    const GroupHandle group = OpenGroup(cluster, name);
    if (!group) {
        MarkUnread(report, "cannot open the group " + Quoted(name), GetLastError());
        return record;
    }
    std::wstring owner;
    const CLUSTER_GROUP_STATE state = ReadGroupState(group.get(), owner);
    if (state == ClusterGroupStateUnknown) {
        MarkUnread(report, "cannot read the state of the group " + Quoted(name), GetLastError());
    } else {
        record["owner"] = owner;
    }
    record["state"] = StateWord(state);
    Names members;
    const DWORD code = ListInGroup(group.get(), CLUSTER_GROUP_ENUM_CONTAINS, members);
    const Json list = NamesOrNull(code, members, "cannot list the resources of the group " + Quoted(name), report);
    record["resources"] = list.is_null() ? Json() : Json(list.size());
    if (detail) {
        record["members"] = list;
        record["disks"] = list.is_null() ? Json() : ReadDisks(cluster, members, report);
    }
    return record;
}

Json ReadNodes(const CCluster& cluster, Report& report) {
    Json records = Json::array();
    for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_NODE)) {
        Json record = {{"name", name}, {"state", "unknown"}};
        const NodeHandle node = OpenNode(cluster, name);
        const CLUSTER_NODE_STATE state = node ? GetClusterNodeState(node.get()) : ClusterNodeStateUnknown;
        if (state == ClusterNodeStateUnknown) {
            MarkUnread(report, "cannot read the state of the node " + Quoted(name), GetLastError());
        }
        record["state"] = StateWord(state);
        records.push_back(record);
    }
    return records;
}
