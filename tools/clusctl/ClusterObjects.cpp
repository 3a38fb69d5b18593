#include "ClusterObjects.h"

#include "ClusterApi.h"
#include "ProductNames.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"

#include <cstring>

namespace {

// Null when the cluster does not give it. One that is there and empty stays a text.
Json SystemProperty(CClusterResource& resource, CClusterResource::RES_PROPERTY_ID id) {
    const wchar_t* text = resource.GetSystemStringProperty(id, false);
    return text == nullptr ? Json() : Json(text);
}

Json RelatedNames(const CClusterResource& resource, DWORD enumType) {
    Names names;
    return resource.EnumNames(enumType, names) ? Json(names) : Json();
}

// A disk without a partition gives the head of its disk information instead of a device name.
Json DiskDevice(CClusterResource& resource) {
    const wchar_t* device = resource.GetSystemStringProperty(CClusterResource::RES_PROP_DISK_DEVICE, false);
    return device == nullptr || device[0] < L' ' ? Json() : Json(device);
}

// Null when the resource does not give them, or in a form that makes no sense.
Json ReadProperties(HRESOURCE resource, DWORD controlCode) {
    std::vector<unsigned char> list;
    DWORD code = 0;
    if (!QueryResource(resource, controlCode, list, code)) {
        return Json();
    }
    try {
        return PropertiesJson(list);
    } catch (const Failure&) {
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

void ReadProperties(HRESOURCE resource, Json& record) {
    const Json common = ReadProperties(resource, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES);
    const bool hasAction = common.is_object() && common.contains("RestartAction");
    record["restartAction"] = hasAction ? common["RestartAction"] : Json();
    record["restartMeaning"] = RestartMeaning(record["restartAction"]);
    record["privateProperties"] = ReadProperties(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES);
}

void ReadResourceDetail(CClusterResource& resource, Json& record) {
    record["id"] = SystemProperty(resource, CClusterResource::RES_PROP_GUID);
    record["dependsOn"] = RelatedNames(resource, CLUSTER_RESOURCE_ENUM_DEPENDS);
    record["dependants"] = RelatedNames(resource, CLUSTER_RESOURCE_ENUM_PROVIDES);
    record["possibleOwners"] = RelatedNames(resource, CLUSTER_RESOURCE_ENUM_NODES);
    ReadProperties(resource.GetResourceHandle(), record);
    if (record["type"] == Json(NetworkNameType)) {
        record["networkName"] = SystemProperty(resource, CClusterResource::RES_PROP_NETWORK_NAME);
    }
    if (ResourceClass(resource.GetResourceHandle()) == CLUS_RESCLASS_STORAGE) {
        record["diskDevice"] = DiskDevice(resource);
    }
}

} // namespace

const Columns& ResourceTitles() {
    static const Columns titles = {
        {"name", "Resource"},
        {"type", "Type"},
        {"group", "Group"},
        {"owner", "Owner"},
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

CLUSTER_GROUP_STATE ReadGroupState(HGROUP group, std::wstring& owner) {
    std::vector<wchar_t> node(64);
    for (;;) {
        auto length = static_cast<DWORD>(node.size());
        const CLUSTER_GROUP_STATE state = GetClusterGroupState(group, node.data(), &length);
        if (state != ClusterGroupStateUnknown) {
            owner = node.data();
            return state;
        }
        if (GetLastError() != ERROR_MORE_DATA || length < node.size()) {
            return state;
        }
        node.resize(length + 1);
    }
}

bool ListPreferredOwners(HGROUP group, Names& names) {
    const HGROUPENUM list = ClusterGroupOpenEnum(group, CLUSTER_GROUP_ENUM_NODES);
    if (list == nullptr) {
        return false;
    }
    std::vector<wchar_t> name(64);
    DWORD code = ERROR_SUCCESS;
    for (DWORD i = 0; code == ERROR_SUCCESS;) {
        DWORD type = 0;
        auto length = static_cast<DWORD>(name.size());
        code = ClusterGroupEnum(list, i, &type, name.data(), &length);
        if (code == ERROR_SUCCESS) {
            names.push_back(name.data());
            ++i;
        } else if (code == ERROR_MORE_DATA && length >= name.size()) {
            name.resize(length + 1);
            code = ERROR_SUCCESS;
        }
    }
    ClusterGroupCloseEnum(list);
    return code == ERROR_NO_MORE_ITEMS;
}

void OpenLocalCluster(CCluster& cluster) {
    if (!cluster.OpenByLPC()) {
        const DWORD code = GetLastError();
        Failure failure = Failure::OfCode("cannot open this computer's cluster", code);
        throw code == ERROR_ACCESS_DENIED ? failure : failure.As(Errors::NoCluster);
    }
}

void RequireResource(const CCluster& cluster, CClusterResource& resource, const std::wstring& name) {
    if (!cluster.OpenResourceByName(resource, name.c_str())) {
        throw Failure(KindOfCode(GetLastError(), Errors::ResourceNotFound),
                      "there is no resource " + Quoted(name) + " that can be opened");
    }
}

Names ListNames(const CCluster& cluster, CCluster::CCLUSTER_OBJ_ENUM kind) {
    Names names;
    if (!cluster.EnumNames(kind, names)) {
        throw Failure(Errors::Incomplete, "cannot list the cluster's objects");
    }
    return names;
}

bool QueryResource(HRESOURCE resource, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code) {
    answer.resize(512);
    for (;;) {
        DWORD needed = 0;
        code = ClusterResourceControl(resource, nullptr, controlCode, nullptr, 0, answer.data(),
                                      static_cast<DWORD>(answer.size()), &needed);
        if (code == ERROR_MORE_DATA && needed > answer.size()) {
            answer.resize(needed);
            continue;
        }
        answer.resize(code == ERROR_SUCCESS ? needed : 0);
        return code == ERROR_SUCCESS;
    }
}

DWORD ResourceClass(HRESOURCE resource) {
    std::vector<unsigned char> answer;
    DWORD code = 0;
    DWORD result = CLUS_RESCLASS_UNKNOWN;
    if (QueryResource(resource, CLUSCTL_RESOURCE_GET_CLASS_INFO, answer, code) && answer.size() >= sizeof(result)) {
        std::memcpy(&result, answer.data(), sizeof(result));
    }
    return result;
}

Json ReadResource(const CCluster& cluster, const std::wstring& name, bool detail) {
    Json record;
    record["name"] = name;
    record["type"] = nullptr;
    record["group"] = nullptr;
    record["owner"] = nullptr;
    record["state"] = "unknown";
    CClusterResource resource;
    if (!cluster.OpenResourceByName(resource, name.c_str())) {
        return record;
    }
    record["type"] = SystemProperty(resource, CClusterResource::RES_PROP_TYPE);
    std::wstring owner;
    std::wstring group;
    const CClusterResource::RES_STATE state = resource.GetResourceState(&owner, &group);
    if (state != CClusterResource::RES_STATE_UNKNOWN) {
        record["group"] = group;
        record["owner"] = owner;
        record["state"] = StateWord(state);
    }
    if (detail) {
        const Json storedName = SystemProperty(resource, CClusterResource::RES_PROP_NAME);
        if (!storedName.is_null()) {
            record["name"] = storedName; // the caller's letter case may differ
        }
        ReadResourceDetail(resource, record);
    }
    return record;
}

Json ReadGroup(CCluster& cluster, const std::wstring& name, bool detail) {
    Json record;
    record["name"] = name;
    record["owner"] = nullptr;
    record["state"] = "unknown";
    record["resources"] = nullptr;
    CClusterGroup group;
    if (!cluster.OpenGroupByName(group, name.c_str())) {
        return record;
    }
    std::wstring owner;
    const CLUSTER_GROUP_STATE state = ReadGroupState(group.GetGroupHandle(), owner);
    if (state != ClusterGroupStateUnknown) {
        record["owner"] = owner;
    }
    record["state"] = StateWord(state);
    Names members;
    if (group.EnumResourceNamesInGroup(members)) {
        record["resources"] = members.size();
    }
    if (detail) {
        record["members"] = members;
        Names disks;
        record["disks"] = group.EnumStorageResourceNamesInGroup(cluster, disks) ? Json(disks) : Json();
    }
    return record;
}
