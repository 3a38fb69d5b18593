// A cluster resource: its handle, state, switching, owners and dependencies.
#include "clus_Cluster.h"

#include "core/ResourceTypes.h"
#include "platform/ComputerName.h"
#include "platform/LocalBuffer.h"
#include "platform/Log.h"
#include "platform/NameEnumeration.h"
#include "platform/Owner.h"

CLUS_LOG_PLACE(Cluster, 2);

using clus::ClusterOwner;
using clus::ComputerName;
using clus::LastErrorKeeper;
using clus::LocalBuffer;
using clus::NetworkNameType;
using clus::OnFailedEntry;
using clus::ResourceEnumOwner;

namespace {

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

} // namespace

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
