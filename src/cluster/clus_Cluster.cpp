#include "clus_Cluster.h"

#define CLUS_SOURCE_TAG ".\\clus_Cluster.cpp"
#include "clus_ComputerName.h"
#include "clus_LocalBuffer.h"
#include "clus_Log.h"
#include "clus_NameEnumeration.h"
#include "clus_Owner.h"
#include "clus_PropertyList.h"
#include "clus_ResourceTypes.h"
#include "clus_ValueList.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <iterator>

using clus::ClusterEnumOwner;
using clus::ClusterOwner;
using clus::ComputerName;
using clus::GroupEnumOwner;
using clus::LastErrorKeeper;
using clus::LocalBuffer;
using clus::LocalMemoryOwner;
using clus::NetworkNameType;
using clus::OnFailedEntry;
using clus::ResourceEnumOwner;
using clus::ResourceOwner;

namespace {

const DWORD CharacterSize = sizeof(wchar_t);

// Exact comparison; null equals nothing.
bool Equal(const wchar_t* left, const wchar_t* right) {
    return left && right && std::wcscmp(left, right) == 0;
}

// How a system string property is asked for and where its text stands in the answer.
struct SystemProperty {
    DWORD controlCode;
    bool searchesValueList;
    std::uint32_t syntax;   // of the entry searched
    std::size_t textOffset; // in that entry, in bytes
};

// By RES_PROPERTY_ID. The device name follows the partition entry's syntax, length and flags.
const SystemProperty SystemProperties[] = {
    {CLUSCTL_RESOURCE_GET_NAME, false, 0, 0},
    {CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, false, 0, 0},
    {CLUSCTL_RESOURCE_GET_NETWORK_NAME, false, 0, 0},
    {CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, true, clus::SyntaxPartitionInfo, 12},
    {CLUSCTL_RESOURCE_GET_ID, false, 0, 0},
};

// ClusterResourceControl on the owner node, without input: the bytes of data in `out`, 0 on failure.
DWORD QueryResourceControl(HRESOURCE resource, DWORD code, LocalBuffer& out) {
    const DWORD cbStart = 128;
    DWORD cb = 0;
    out.Ensure(cbStart);
    DWORD result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, out.pData, out.Bytes(), &cb);
    if (result == ERROR_MORE_DATA && cb <= MAXLONG && out.Ensure(cb)) {
        DWORD cbCheck = 0;
        result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, out.pData, out.Bytes(), &cbCheck);
        if (cbCheck != cb) {
            LOG_ERROR(L"dwSizeCheck != dwSize");
            if (cbCheck < cb && out.pData) {
                std::memset(static_cast<unsigned char*>(out.pData) + cbCheck, 0,
                            cb - cbCheck); // not written by the service
            }
        }
    }
    if (result != ERROR_SUCCESS) {
        LOG_ERROR(L"Calling ClusterResourceControl returns error, code:%d", result);
        return 0;
    }
    return std::min(cb, out.cbSize);
}

// The text of a system property in the bytes that answered its control code. A value list without the entry searched
// gives the text at its start: callers get a text for a disk without partitions, not a failure.
std::wstring SystemPropertyText(const SystemProperty& property, const void* data, DWORD cb) {
    if (property.searchesValueList) {
        clus::ValueListReader reader(data, cb);
        while (reader.Next()) {
            if (reader.Syntax() == property.syntax) {
                return reader.TextAt(property.textOffset);
            }
        }
    }
    return clus::TextInBuffer(data, cb, 0);
}

CClusterResource::RES_STATE StateOf(CLUSTER_RESOURCE_STATE state) {
    switch (state) {
    case ClusterResourceInitializing:
        return CClusterResource::RES_STATE_INITIALIZING;
    case ClusterResourceOnline:
        return CClusterResource::RES_STATE_ONLINE;
    case ClusterResourceOffline:
        return CClusterResource::RES_STATE_OFFLINE;
    case ClusterResourceFailed:
        return CClusterResource::RES_STATE_FAILED;
    case ClusterResourcePending:
        return CClusterResource::RES_STATE_PENDING;
    case ClusterResourceOnlinePending:
        return CClusterResource::RES_STATE_ONLINE_PENDING;
    case ClusterResourceOfflinePending:
        return CClusterResource::RES_STATE_OFFLINE_PENDING;
    default:
        LOG_ERROR(L"Unknow resource state");
        return CClusterResource::RES_STATE_UNKNOWN;
    }
}

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

// CCluster ------------------------------------------------------------------------------------------------------

CCluster::CCluster() : m_hCluster(nullptr) {
}

CCluster::~CCluster() {
    Close();
}

bool CCluster::OpenByLPC() {
    LOG_ENTER(L"CCluster::OpenByLPC()");
    if (m_hCluster) {
        LOG_WARNING(L"Warning, the cluster has already been opened, return success.");
        LOG_LEAVE(L"CCluster::OpenByLPC()");
        return true;
    }
    m_hCluster = OpenCluster(nullptr);
    if (!m_hCluster) {
        LOG_LEAVE(L"CCluster::OpenByLPC(), err=%d", GetLastError()); // a node without a cluster is no error here
    }
    LOG_LEAVE(L"CCluster::OpenByLPC()");
    return m_hCluster != nullptr;
}

bool CCluster::OpenByRPC(const wchar_t* lpcwClusterName) {
    if (!lpcwClusterName) {
        LOG_ERROR(L"lpcwClusterName is NULL, cannot open RPC handle");
        return false;
    }
    if (m_hCluster) {
        LOG_ERROR(L"Already opened, return false");
        return false;
    }
    m_hCluster = OpenCluster(lpcwClusterName);
    return m_hCluster != nullptr;
}

void CCluster::Close() {
    if (m_hCluster) {
        const LastErrorKeeper keeper;
        CloseCluster(m_hCluster);
        m_hCluster = nullptr;
    }
}

HCLUSTER CCluster::GetHandle() const {
    return m_hCluster;
}

bool CCluster::GetClusterName(std::wstring& name) {
    LocalBuffer buffer;
    buffer.EnsureCharacters(16);
    DWORD cch = buffer.Characters();
    const DWORD first = GetClusterInformation(m_hCluster, buffer.Text(), &cch, nullptr);
    if (first == ERROR_MORE_DATA) {
        ++cch;
        if (buffer.EnsureCharacters(cch)) {
            GetClusterInformation(m_hCluster, buffer.Text(), &cch, nullptr);
        }
    }
    // The first call alone decides: callers rely on names of more than 15 characters being refused.
    if (first != ERROR_SUCCESS || !buffer.pData) {
        LOG_ERROR(L"CCluster::GetClusterName() returns error, code:%d", GetLastError());
        return false;
    }
    name = buffer.Text();
    return true;
}

bool CCluster::GetClusterNameResourceGUID(std::wstring& clusterName, std::wstring& resourceId) {
    LOG_ENTER_AND_LEAVE(L"CCluster::GetClusterNameResourceGUID()");
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_WARNING(L"Cannot cluster.OpenByLPC()");
        return false;
    }
    std::wstring name;
    if (!cluster.GetClusterName(name)) {
        LOG_WARNING(L"cluster.GetClusterName");
        return false;
    }
    CClusterResource resNetworkName;
    if (!cluster.OpenNetworkNameResourceByNetworkName(resNetworkName, name.c_str())) {
        LOG_WARNING(L"cannot cluster.OpenNetworkNameResourceByNetworkName()");
        return false;
    }
    const wchar_t* id = resNetworkName.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false);
    if (!id) {
        LOG_WARNING(L"cannot resNetworkName.GetSystemStringProperty()");
        return false;
    }
    resourceId = id;
    clusterName.swap(name);
    return true;
}

bool CCluster::EnumNames(CCLUSTER_OBJ_ENUM kind, std::list<std::wstring>& names) const {
    if (!m_hCluster) {
        return false;
    }
    DWORD mask = 0;
    switch (kind) {
    case CCLUSTER_OBJ_RESOURCE:
        mask = CLUSTER_ENUM_RESOURCE;
        break;
    case CCLUSTER_OBJ_NODE:
        mask = CLUSTER_ENUM_NODE;
        break;
    case CCLUSTER_OBJ_GROUP:
        mask = CLUSTER_ENUM_GROUP;
        break;
    default:
        LOG_ERROR(L"Warning, unexpected type_enum value:%d", static_cast<int>(kind));
        break;
    }
    LocalBuffer buffer;
    const ClusterEnumOwner hEnum(ClusterOpenEnum(m_hCluster, mask));
    if (!hEnum) {
        LOG_ERROR(L"calling ClusterOpenEnum failed");
        return false;
    }
    DWORD type = 0;
    return clus::AppendNames(
        256, OnFailedEntry::GoOn,
        [&](DWORD index, wchar_t* text, DWORD* cch) { return ClusterEnum(hEnum.get(), index, &type, text, cch); },
        [](DWORD) { LOG_ERROR(L"Unexpected result for cluster enum"); }, buffer, names);
}

bool CCluster::EnumResourceNamesByType(const wchar_t* resourceType, std::list<std::wstring>& names) {
    if (!EnumNames(CCLUSTER_OBJ_RESOURCE, names)) {
        return false;
    }
    for (auto name = names.begin(); name != names.end();) {
        CClusterResource resource;
        const bool stays =
            OpenResourceByName(resource, name->c_str()) &&
            Equal(resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false), resourceType);
        name = stays ? std::next(name) : names.erase(name);
    }
    LOG_LEAVE(L"CCluster::EnumResourceNamesByType()");
    return true;
}

bool CCluster::OpenResourceByName(CClusterResource& resource, const wchar_t* name) const {
    if (resource.m_hResource) {
        LOG_ERROR(L"resource has alreay been opened.");
        return false;
    }
    resource.SetResourceHandle(OpenClusterResource(m_hCluster, name));
    if (!resource.m_hResource) {
        LOG_ERROR(L"Open resource failed:%s, err=%d", name, GetLastError());
        return false;
    }
    return true;
}

bool CCluster::OpenGroupByName(CClusterGroup& group, const wchar_t* name) const {
    if (group.m_hGroup) {
        LOG_ERROR(L"Group has already been opened.");
        return false;
    }
    group.SetGroupHandle(OpenClusterGroup(m_hCluster, name));
    if (!group.m_hGroup) {
        LOG_ERROR(L"Open group failed, code:%d", GetLastError());
        return false;
    }
    return true;
}

bool CCluster::OpenNodeByName(CClusterNode& node, const wchar_t* name) const {
    HNODE hNode = OpenClusterNode(m_hCluster, name);
    if (!hNode) {
        return false;
    }
    node.m_hNode = hNode;
    return true;
}

bool CCluster::FindFirstResourceNameByNetworkName(std::wstring& resourceName, const wchar_t* networkName) {
    LOG_ENTER(L"CCluster::FindFirstResourceNameByNetworkName");
    LOG_LEAVE_AT_END(
        L"CClusterResource::FindFirstResourceNameByNetworkName"); // the class word differs, as in every release
    std::wstring wanted(networkName ? networkName : L"");
    std::transform(wanted.begin(), wanted.end(), wanted.begin(),
                   [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c; });
    if (!m_hCluster) {
        LOG_ERROR(L"Cluster handle is NULL");
        return false;
    }
    std::list<std::wstring> names;
    if (!EnumNames(CCLUSTER_OBJ_RESOURCE, names)) {
        LOG_ERROR(L"EnumNames failed");
        return false;
    }
    for (const std::wstring& name : names) {
        CClusterResource resource;
        if (!OpenResourceByName(resource, name.c_str())) {
            LOG_ERROR(L"Unable to open resource: %s", name.c_str());
            continue;
        }
        const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
        if (!type) {
            LOG_ERROR(L"Unable to get resource type for res: %s", name.c_str());
            continue;
        }
        if (!Equal(type, NetworkNameType)) {
            continue;
        }
        const wchar_t* found = resource.GetSystemStringProperty(CClusterResource::RES_PROP_NETWORK_NAME, false);
        if (!found) {
            LOG_ERROR(L"Unable to get resource property NETWORK NAME for res: %s", name.c_str());
            continue;
        }
        if (networkName && Equal(found, wanted.c_str())) {
            resourceName = name;
            LOG_INFO(L"Network name found: %s for res:", name.c_str(), name.c_str());
            return true;
        }
    }
    return false;
}

bool CCluster::OpenNetworkNameResourceByNetworkName(CClusterResource& resource, const wchar_t* networkName) {
    LOG_ENTER_AND_LEAVE(L"CCluster::OpenNetworkNameResourceByNetworkName");
    std::wstring resourceName;
    return FindFirstResourceNameByNetworkName(resourceName, networkName) &&
           OpenResourceByName(resource, resourceName.c_str());
}

bool CCluster::OpenGroupByNetworkName(CClusterGroup& group, const wchar_t* networkName) {
    CClusterResource resNetworkName;
    if (!OpenNetworkNameResourceByNetworkName(resNetworkName, networkName)) {
        return false;
    }
    std::wstring groupName;
    if (resNetworkName.GetResourceState(nullptr, &groupName) == CClusterResource::RES_STATE_UNKNOWN) {
        return false;
    }
    return OpenGroupByName(group, groupName.c_str());
}

bool CCluster::CreateResource(CClusterGroup& group, CClusterResource& resource, const wchar_t* name,
                              const wchar_t* type) {
    LOG_ENTER_AND_LEAVE(L"CCluster::CreateResource");
    HRESOURCE hResource = CreateClusterResource(group.GetGroupHandle(), name, type, 0);
    if (!hResource) {
        LOG_ERROR(L"Cannot create resource:%s type:%s", name, type);
        return false;
    }
    resource.SetResourceHandle(hResource);
    return true;
}

// CClusterResource ----------------------------------------------------------------------------------------------

CClusterResource::CClusterResource(HRESOURCE h, bool autoClose) : m_hResource(h), m_bAutoClose(autoClose) {
}

CClusterResource::~CClusterResource() {
    Close();
}

void CClusterResource::Close() {
    if (!m_bAutoClose || !m_hResource) {
        return;
    }
    const LastErrorKeeper keeper;
    if (!CloseClusterResource(m_hResource)) {
        LOG_ERROR(L"Warning, calling CloseClusterResource returns FALSE");
    }
    SetResourceHandle(nullptr);
}

void CClusterResource::SetResourceHandle(HRESOURCE h) {
    m_hResource = h;
    for (std::wstring& text : m_propertyCache) {
        text.clear();
    }
}

void CClusterResource::SetAutoClose(bool autoClose) {
    m_bAutoClose = autoClose;
}

HRESOURCE CClusterResource::GetResourceHandle() {
    return m_hResource;
}

const wchar_t* CClusterResource::GetStateString(int state) {
    static const wchar_t* const texts[] = {L"[INITIALIZING]",    L"[ONLINE]",     L"[OFFLINE]",
                                           L"[FAILED]",          L"[PENDING]",    L"[ONLINE_PENDING]",
                                           L"[OFFLINE_PENDING]", L"RES_STATE_END"};
    return texts[state];
}

CClusterResource::RES_STATE CClusterResource::GetResourceState(std::wstring* nodeName, std::wstring* groupName) {
    if (!m_hResource) {
        LOG_ERROR(L"NULL == m_hResource");
        return RES_STATE_UNKNOWN;
    }
    const DWORD cchNodeMax = 16; // a node name has 15 characters at most
    const DWORD cchGroupMax = 256;
    wchar_t node[cchNodeMax] = {};
    wchar_t group[cchGroupMax] = {};
    DWORD cchNode = nodeName ? cchNodeMax : 0;
    DWORD cchGroup = groupName ? cchGroupMax : 0;
    const CLUSTER_RESOURCE_STATE state = GetClusterResourceState(m_hResource, nodeName ? node : nullptr, &cchNode,
                                                                 groupName ? group : nullptr, &cchGroup);
    if (state == ClusterResourceStateUnknown) {
        LOG_ERROR(L"ClusterResourceStateUnknown == 0");
        return RES_STATE_UNKNOWN;
    }
    if (nodeName) {
        if (cchNode == 0) {
            LOG_ERROR(L"dwCChNode <= 0");
            return RES_STATE_UNKNOWN;
        }
        node[cchNodeMax - 1] = L'\0';
        *nodeName = node;
    }
    if (groupName) {
        if (cchGroup == 0) {
            LOG_ERROR(L"dwCChGroup <= 0");
            return RES_STATE_UNKNOWN;
        }
        group[cchGroupMax - 1] = L'\0';
        *groupName = group;
    }
    return StateOf(state);
}

CClusterResource::RES_STATE CClusterResource::OnlineResource() {
    LOG_ENTER_AND_LEAVE(L"OnlineResource");
    if (!m_hResource) {
        LOG_ERROR(L"Resource handle is NULL");
        return RES_STATE_UNKNOWN;
    }
    switch (OnlineClusterResource(m_hResource)) {
    case ERROR_SUCCESS:
        return RES_STATE_ONLINE;
    case ERROR_IO_PENDING:
        return RES_STATE_ONLINE_PENDING;
    default:
        LOG_ERROR(L"Unexected return value: %d", GetLastError());
        return RES_STATE_UNKNOWN;
    }
}

CClusterResource::RES_STATE CClusterResource::OfflineResource() {
    LOG_ENTER(L"OfflineResource");
    if (!m_hResource) {
        return RES_STATE_UNKNOWN;
    }
    LOG_LEAVE_AT_END(L"OfflineResource");
    switch (OfflineClusterResource(m_hResource)) {
    case ERROR_SUCCESS:
        return RES_STATE_OFFLINE;
    case ERROR_IO_PENDING:
        return RES_STATE_OFFLINE_PENDING;
    default:
        LOG_ERROR(L"Unexected return value: %d", GetLastError());
        return RES_STATE_UNKNOWN;
    }
}

bool CClusterResource::IsOnlineOnCurrentNode(std::wstring* groupName) {
    LOG_ENTER_AND_LEAVE(L"CClusterResource::IsOnlineOnCurrentNode");
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"Cannot get computer name, code:%d", GetLastError());
        return false;
    }
    LOG_INFO(L"Local node name:%s", computer.c_str());
    std::wstring owner;
    if (GetResourceState(&owner, groupName) != RES_STATE_ONLINE) {
        LOG_INFO(L"Resource is not online, return false");
        return false;
    }
    LOG_INFO(L"Local node name:%s", owner.c_str()); // the owner, under the same text
    return owner == computer.c_str();
}

bool CClusterResource::IsOnCurrentNode(std::wstring* groupName) {
    LOG_ENTER_AND_LEAVE(L"CClusterResource::IsOnCurrentNode");
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"Cannot get computer name, code:%d", GetLastError());
        return false;
    }
    std::wstring owner;
    GetResourceState(&owner, groupName);
    return owner == computer.c_str();
}

const wchar_t* CClusterResource::GetSystemStringProperty(RES_PROPERTY_ID id, bool refresh) {
    if (!m_hResource) {
        LOG_ERROR(L"Resource handle is NULL.");
        LOG_LEAVE(L"CClusterResource::GetSystemStringProperty");
        return nullptr;
    }
    std::wstring& cached = m_propertyCache[id];
    if (!refresh && !cached.empty()) {
        return cached.c_str();
    }
    const SystemProperty& property = SystemProperties[id];
    LocalBuffer buffer;
    const DWORD cb = QueryResourceControl(m_hResource, property.controlCode, buffer);
    if (cb == 0) {
        LOG_ERROR(L"0 == dwSize");
        return nullptr;
    }
    if (!buffer.pData) {
        LOG_ERROR(L"NULL == lpStringStart");
        return nullptr;
    }
    cached = SystemPropertyText(property, buffer.pData, cb);
    return cached.c_str();
}

bool CClusterResource::GetPrivateStringProperty(const wchar_t* name, std::wstring& value) {
    LocalBuffer buffer;
    if (QueryResourceControl(m_hResource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, buffer) == 0) {
        return false;
    }
    wchar_t* text = nullptr;
    if (ResUtilFindSzProperty(buffer.pData, buffer.Bytes(), name, &text) != ERROR_SUCCESS) {
        return false;
    }
    const LocalMemoryOwner textOwner(text);
    value = text;
    return true;
}

bool CClusterResource::GetPrivateDWORDProperty(const wchar_t* name, DWORD& value) {
    LocalBuffer buffer;
    return QueryResourceControl(m_hResource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, buffer) != 0 &&
           ResUtilFindDwordProperty(buffer.pData, buffer.Bytes(), name, &value) == ERROR_SUCCESS;
}

bool CClusterResource::SetDWORDProperty(DWORD controlCode, const wchar_t* name, DWORD value) {
    LOG_ENTER(L"CClusterResource::SetDWORDProperty, %d,%s,%d", controlCode, name, value);
    LOG_LEAVE_AT_END(L"CClusterResource::SetDWORDProperty");
    const std::size_t cchName = name ? std::wcslen(name) : 0;
    const DWORD cb = static_cast<DWORD>(clus::DwordPropertyListSize(cchName));
    LocalMemoryOwner block(LocalAlloc(LPTR, cb));
    if (!block) {
        LOG_ERROR(L"LocalAlloc %d bytes fail", cb);
        return false;
    }
    clus::WriteDwordPropertyList(static_cast<unsigned char*>(block.get()), name, cchName, value);
    const DWORD code = ClusterResourceControl(m_hResource, nullptr, controlCode, block.get(), cb, nullptr, 0, nullptr);
    block.reset();
    if (code != ERROR_SUCCESS) {
        LOG_ERROR(L"CClusterResource::SetDWORDProperty failed, code:%d", code);
        return false;
    }
    return true;
}

bool CClusterResource::AddDependency(HRESOURCE dependsOn) {
    LOG_ENTER(L"CClusterResource::AddDependency");
    const DWORD code = AddClusterResourceDependency(m_hResource, dependsOn);
    if (code != ERROR_SUCCESS) {
        LOG_ERROR(L"calling AddClusterResourceDependency returns error, code:%d", code);
    }
    return code == ERROR_SUCCESS;
}

DWORD CClusterResource::AddOwner(HNODE node) {
    LOG_ENTER(L"CClusterResource::AddOwnder");
    const DWORD code = AddClusterResourceNode(m_hResource, node);
    if (code != ERROR_SUCCESS) {
        LOG_ERROR(L"CClusterResource::AddOwnder fail, code:%d", code);
    }
    return code;
}

bool CClusterResource::DeleteResource() {
    LOG_ENTER(L"CClusterResource::DeleteResource");
    if (!m_hResource) {
        LOG_ERROR(L"Resource handle is NULL");
        LOG_LEAVE(L"CCluster::DeleteResource");
        return false;
    }
    const DWORD code = DeleteClusterResource(m_hResource);
    if (code != ERROR_SUCCESS) {
        LOG_WARNING(L"Calling DeleteClusterResource error, code: %d", code);
        return false;
    }
    Close();
    return true;
}

bool CClusterResource::GetResourceStorageDependency(CClusterResource& storage) {
    LOG_ENTER_AND_LEAVE(L"GetResourceStorageDependency");
    const ClusterOwner cluster(GetClusterFromResource(m_hResource));
    HRESOURCE found = nullptr;
    if (cluster) {
        CLUS_RESOURCE_CLASS_INFO info = {};
        info.rc = CLUS_RESCLASS_STORAGE;
        found = ResUtilGetResourceDependencyByClass(cluster.get(), m_hResource, &info, FALSE);
    }
    if (!found) {
        LOG_ERROR(L"[FIXREF-77888] GetClusterFromResource Fail(%d)",
                  GetLastError()); // either call; support greps for this text
        return false;
    }
    storage.SetResourceHandle(found);
    return true;
}

bool CClusterResource::GetResourceDependencyByType(CClusterResource& dependency, const wchar_t* type) {
    LOG_ENTER(L"GetResourceDependencyByType");
    if (dependency.m_hResource) {
        LOG_ERROR(L"Resource handle is not NULL");
        return false;
    }
    dependency.SetResourceHandle(ResUtilGetResourceDependency(m_hResource, type));
    if (!dependency.m_hResource) {
        LOG_ERROR(L"Calling ResUtilGetResourceDEpendency error, resname:%s code:%d", type, GetLastError());
        return false;
    }
    return true;
}

bool CClusterResource::GetDependentNetworkName(std::wstring& networkName) {
    LOG_ENTER_AND_LEAVE(L"GetDependentNetworkName");
    CClusterResource resNetworkName;
    if (!GetResourceDependencyByType(resNetworkName, NetworkNameType)) {
        return false;
    }
    const wchar_t* text = resNetworkName.GetSystemStringProperty(RES_PROP_NETWORK_NAME, false);
    if (!text) {
        return false;
    }
    networkName = text;
    return true;
}

bool CClusterResource::EnumNames(DWORD enumType, std::list<std::wstring>& names) const {
    if (!m_hResource) {
        return false;
    }
    LocalBuffer buffer;
    const ResourceEnumOwner hEnum(ClusterResourceOpenEnum(m_hResource, enumType));
    if (!hEnum) {
        LOG_ERROR(L"calling ClusterResourceOpenEnum failed");
        return false;
    }
    DWORD type = 0;
    return clus::AppendNames(
        256, OnFailedEntry::GoOn,
        [&](DWORD index, wchar_t* text, DWORD* cch) {
            return ClusterResourceEnum(hEnum.get(), index, &type, text, cch);
        },
        [](DWORD) { LOG_ERROR(L"Unexpected result for ClusterResourceEnum"); }, buffer, names);
}

// CClusterGroup -------------------------------------------------------------------------------------------------

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
    for (auto name = names.begin(); name != names.end();) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name->c_str())) {
            return false;
        }
        const wchar_t* found = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
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
    for (DWORD index = 0;;) {
        DWORD type = 0;
        DWORD cch = buffer.pData ? cbBuffer : 0;
        const DWORD code = ClusterGroupEnum(hEnum.get(), index, &type, buffer.Text(), &cch);
        if (code == ERROR_NO_MORE_ITEMS) {
            break;
        }
        if (code == ERROR_MORE_DATA && cch < MAXLONG / 8) {
            const DWORD cbGrown = ((cch + 1) / 512 + 1) * 512 * CharacterSize;
            if (buffer.EnsureCharacters(cbGrown)) {
                cbBuffer = std::max(cbBuffer, cbGrown);
                continue;
            }
        }
        if (code != ERROR_SUCCESS || !buffer.pData) {
            LOG_ERROR(L"[FIXREF-77888] EnumGroup Fail (error=%d)", GetLastError());
            break;
        }
        LOG_INFO(L"[FIXREF-77888] Enumerated object = %s", buffer.Text());
        const ResourceOwner resource(OpenClusterResource(cluster, buffer.Text()));
        if (!resource) {
            LOG_ERROR(L"[FIXREF-77888] OpenClusterResource Fail (error=%d)", GetLastError());
        } else if (!callback) {
            LOG_ERROR(L"[FIXREF-77888] No Callback function ");
        } else if (callback(cluster, m_hGroup, resource.get(), buffer.Text(), context) != 0) {
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

// CClusterNode --------------------------------------------------------------------------------------------------

CClusterNode::CClusterNode() : m_hNode(nullptr) {
}

CClusterNode::~CClusterNode() {
    if (m_hNode) {
        const LastErrorKeeper keeper;
        CloseClusterNode(m_hNode);
    }
}

CClusterNode& CClusterNode::operator=(const CClusterNode& other) {
    m_hNode = other.m_hNode; // shared on purpose, see the header
    return *this;
}

HNODE CClusterNode::GetNodeHandle() const {
    return m_hNode;
}
