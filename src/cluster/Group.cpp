// A cluster group and the resources in it.
#include "clus_Cluster.h"

#include "core/Text.h"
#include "platform/ControlReply.h"
#include "platform/LocalBuffer.h"
#include "platform/Log.h"
#include "platform/NameEnumeration.h"
#include "platform/Owner.h"

#include <iterator>

CLUS_LOG_PLACE(Cluster, 4);

using clus::EnumerationWatch;
using clus::Equal;
using clus::GroupEnumOwner;
using clus::LastErrorKeeper;
using clus::LocalBuffer;
using clus::OnFailedEntry;
using clus::ResourceOwner;

namespace {

const DWORD CharacterSize = sizeof(wchar_t);

// EnumResourceCallback that collects the names of storage-class resources; `context` is the list.
DWORD CollectStorageResource(HCLUSTER, HGROUP, HRESOURCE resource, const wchar_t* name, void* context) {
    if (!context) {
        LOG_ERROR(L"[FIXREF-77888] pParam == NULL");
        return ERROR_INVALID_PARAMETER;
    }
    CLUS_RESOURCE_CLASS_INFO info = {};
    DWORD cb = 0;
    const DWORD code = ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_CLASS_INFO, nullptr, 0, &info,
                                              sizeof(info), &cb);
    if (code != ERROR_SUCCESS) {
        LOG_ERROR(L"[FIXREF-77888] ClusterResourceControl(CLUSCTL_RESOURCE_GET_CLASS_INFO Fail (error=%d)",
                  GetLastError());
    }
    if (info.rc == CLUS_RESCLASS_STORAGE) {
        LOG_INFO(L"[FIXREF-77888] %s is CLUS_RESCLASS_STORAGE", name);
        static_cast<std::list<std::wstring>*>(context)->push_back(name);
    }
    return 0;
}

} // namespace

CClusterGroup::CClusterGroup(HGROUP) : m_hGroup(nullptr) {
}

CClusterGroup::~CClusterGroup() {
    Close();
}

CClusterGroup& CClusterGroup::operator=(const CClusterGroup& other) {
    m_hGroup = other.m_hGroup; // shared on purpose, see the header
    return *this;
}

void CClusterGroup::Close() {
    if (m_hGroup) {
        const LastErrorKeeper keeper;
        CloseClusterGroup(
            m_hGroup); // the member keeps its value: a second Close closes again, as callers have always seen it
    }
}

HGROUP CClusterGroup::GetGroupHandle() {
    return m_hGroup;
}

void CClusterGroup::SetGroupHandle(HGROUP h) {
    m_hGroup = h;
}

bool CClusterGroup::EnumResourceNamesInGroup(std::list<std::wstring>& names) const {
    LOG_ENTER_AND_LEAVE(L"EnumResourceNamesInGroup");
    if (!m_hGroup) {
        LOG_ERROR(L"NULL == m_hGroup");
        return false;
    }
    LocalBuffer buffer;
    const GroupEnumOwner hEnum(ClusterGroupOpenEnum(m_hGroup, CLUSTER_GROUP_ENUM_CONTAINS));
    if (!hEnum) {
        LOG_ERROR(L"NULL == hEnum");
        return false;
    }
    DWORD type = 0;
    return clus::AppendNames(
        8, OnFailedEntry::Stop,
        [&](DWORD index, wchar_t* text, DWORD* cch) { return ClusterGroupEnum(hEnum.get(), index, &type, text, cch); },
        [](DWORD code) { LOG_ERROR(L"Invalid result for cluster enum, %d", code); }, buffer, names);
}

bool CClusterGroup::EnumResourceNamesInGroupByType(CCluster& cluster, std::list<std::wstring>& names,
                                                   const wchar_t* type) const {
    LOG_ENTER_AND_LEAVE(L"EnumResourceNamesInGroupByType");
    if (!type || !EnumResourceNamesInGroup(names)) {
        return false;
    }
    clus::ControlReply reply;
    for (auto name = names.begin(); name != names.end();) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name->c_str())) {
            return false;
        }
        const wchar_t* found = reply.AskForText(resource.GetResourceHandle(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
        if (!found) {
            LOG_ERROR(L"Get cluster resource type failed, skip this resource.");
        }
        name = Equal(found, type) ? std::next(name) : names.erase(name);
    }
    return true;
}

bool CClusterGroup::EnumStorageResourceNamesInGroup(CCluster& cluster, std::list<std::wstring>& names) const {
    LOG_ENTER_AND_LEAVE(L"EnumStorageResourceNamesInGroup");
    return EnumResourceInGroup(cluster.GetHandle(), CollectStorageResource, &names);
}

bool CClusterGroup::EnumResourceInGroup(HCLUSTER cluster, EnumResourceCallback callback, void* context) const {
    LOG_ENTER(L"EnumResourceInGroup");
    if (!m_hGroup) {
        LOG_ERROR(L"[FIXREF-77888] NULL == m_hGroup");
        LOG_LEAVE(L"[FIXREF-77888] EnumResourceNamesInGroup");
        return false;
    }
    LOG_LEAVE_AT_END(L"EnumResourceInGroup");
    LocalBuffer buffer;
    const GroupEnumOwner hEnum(ClusterGroupOpenEnum(m_hGroup, CLUSTER_GROUP_ENUM_CONTAINS));
    if (!hEnum) {
        LOG_ERROR(L"[FIXREF-77888] ClusterGroupOpenEnum failed (error=%d)", GetLastError());
        return true; // callers take a group that cannot be listed for an empty one
    }
    // The count that the cluster is given is the buffer's size in bytes, not in characters. The block behind it holds
    // that many characters, so that no name can pass its end.
    DWORD cbBuffer = 2048;
    buffer.EnsureCharacters(cbBuffer);
    EnumerationWatch watch;
    for (DWORD index = 0;;) {
        DWORD type = 0;
        const DWORD cchGiven = buffer.pData ? cbBuffer : 0;
        DWORD cch = cchGiven;
        const DWORD code = ClusterGroupEnum(hEnum.get(), index, &type, buffer.Text(), &cch);
        if (code == ERROR_NO_MORE_ITEMS) {
            break;
        }
        if (code == ERROR_MORE_DATA && !watch.MayGrow(cch, cchGiven)) {
            break;
        }
        if (code == ERROR_MORE_DATA && cch < MAXLONG / 8) {
            const DWORD cbGrown = ((cch + 1) / 512 + 1) * 512 * CharacterSize;
            if (buffer.EnsureCharacters(cbGrown)) {
                cbBuffer = cbGrown; // more than twice what was given, so that it ends at the longest answer
                continue;
            }
        }
        if (code != ERROR_SUCCESS || !buffer.pData) {
            LOG_ERROR(L"[FIXREF-77888] EnumGroup Fail (error=%d)", GetLastError());
            break;
        }
        const wchar_t* const name = buffer.TerminatedText();
        LOG_INFO(L"[FIXREF-77888] Enumerated object = %s", name);
        const ResourceOwner resource(OpenClusterResource(cluster, name));
        if (!resource) {
            LOG_ERROR(L"[FIXREF-77888] OpenClusterResource Fail (error=%d)", GetLastError());
        } else if (!callback) {
            LOG_ERROR(L"[FIXREF-77888] No Callback function ");
        } else if (callback(cluster, m_hGroup, resource.get(), name, context) != 0) {
            break;
        }
        ++index;
    }
    return true;
}

bool CClusterGroup::FindPhysicalDiskResourceNameByDriveLetter(CCluster& cluster, wchar_t driveLetter,
                                                              std::wstring& resourceName) const {
    LOG_ENTER_AND_LEAVE(L"FindPhysicalDiskResourceNameByDriveLetter");
    std::list<std::wstring> names;
    if (!EnumStorageResourceNamesInGroup(cluster, names)) {
        return false;
    }
    for (const std::wstring& name : names) {
        CClusterResource disk;
        if (!cluster.OpenResourceByName(disk, name.c_str())) {
            continue;
        }
        const wchar_t* device = disk.GetSystemStringProperty(CClusterResource::RES_PROP_DISK_DEVICE, false);
        if (device && device[0] != L'\0' && device[0] == driveLetter) {
            resourceName = name;
            return true;
        }
    }
    return false;
}
