// The record of an Exchange virtual server, read from the cluster.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "platform/ClusterApi.h"
#include "platform/Log.h"
#include "virtualserver/RecordText.h"

#include <list>

CLUS_LOG_PLACE(VirtualServerUtil, 7);

using clus::CcrType;
using clus::CopyText;
using clus::DataPathProperty;
using clus::IpAddressType;
using clus::IsProductType;
using clus::NetworkNameType;
using clus::SingleCopyType;
using clus::SmtpInstanceType;

namespace {

// The product's data path, which must be there; taken over into the record only if `keep`.
bool ReadDataPath(CClusterResource& resource, CClusterVirtualServerInfo& info, bool keep) {
    std::wstring dataPath;
    if (!resource.GetPrivateStringProperty(DataPathProperty, dataPath)) {
        LOG_WARNING(L"Cannot get KOVA_DATA_PATH property.");
        return false;
    }
    if (dataPath.empty()) {
        LOG_WARNING(L"KOVA_DATA_PATH string length is 0");
        return false;
    }
    if (keep) {
        CopyText(info.m_wsDataPath, dataPath.c_str());
    }
    return true;
}

bool IsQuorumModeKnown(HRESOURCE hResource) {
    if (ResUtilResourceTypesEqual(SingleCopyType, hResource)) {
        LOG_INFO(L"Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY");
        return true;
    }
    if (ResUtilResourceTypesEqual(CcrType, hResource)) {
        LOG_INFO(L"Quorum Mode: CLUSTER_QUORUM_CCR");
        return true;
    }
    LOG_WARNING(L"Unexpected cluster quorum mode!");
    return false;
}

// Everything of a virtual server but its SMTP instances.
bool FillVirtualServerInfo(HRESOURCE hResource, CClusterVirtualServerInfo& info, bool bGetDataPath) {
    if (!hResource) {
        LOG_ERROR(L"Resource handle is NULL, return.");
        return false;
    }
    CClusterResource resource(hResource, false);
    const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
    if (!type) {
        LOG_WARNING(L"NULL resource type");
        return false;
    }
    if (!IsProductType(type)) {
        LOG_WARNING(L"This is not a KOVA resource, its type is: %s", type);
        return false;
    }
    CClusterResource resNetworkName;
    if (!resource.GetResourceDependencyByType(resNetworkName, NetworkNameType)) {
        LOG_WARNING(L"Cannot get Network name resource");
        return false;
    }
    CClusterResource resIpAddress;
    if (!resNetworkName.GetResourceDependencyByType(resIpAddress, IpAddressType)) {
        LOG_WARNING(L"Cannot get IP address resource");
        return false;
    }
    const wchar_t* networkName = resNetworkName.GetSystemStringProperty(CClusterResource::RES_PROP_NETWORK_NAME, false);
    if (!networkName) {
        LOG_WARNING(L"Cannot get RES_PROP_NETWORK_NAME property.");
        return false;
    }
    CopyText(info.m_wsServerName, networkName);

    if (!ReadDataPath(resource, info, bGetDataPath)) {
        return false;
    }
    if (!IsQuorumModeKnown(hResource)) {
        return false;
    }
    // Read a second time on purpose: the value that counts is the one after the mode is known.
    if (bGetDataPath && !ReadDataPath(resource, info, true)) {
        return false;
    }
    const wchar_t* id = resNetworkName.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false);
    if (!id) {
        LOG_WARNING(L"Cannot get RES_PROP_GUID property.");
        return false;
    }
    CopyText(info.m_wsServerGUID, id);
    std::wstring address;
    if (!resIpAddress.GetPrivateStringProperty(L"Address", address)) {
        LOG_WARNING(L"Cannot get IP Address property.");
        return false;
    }
    CopyText(info.m_wsServerIP, address.c_str());
    return true;
}

} // namespace

CClusterVirtualServerInfo::CClusterVirtualServerInfo()
    : m_bIsOnline(false), m_nSmtpInstanceCount(-1), m_dwSmtpInstanceIds(), m_wsServerIP(), m_wsServerName(),
      m_wsDataPath(), m_wsServerGUID() {
}

bool CVirtualServerUtil::GetVirtualServerInfo(HRESOURCE hResource, CClusterVirtualServerInfo& info, bool bGetDataPath,
                                              bool bGetSmtpInstances) {
    LOG_ENTER(L"CVirtualServerUtil::GetVirtualServerInfo()");
    {
        LOG_LEAVE_AT_END(L"CVirtualServerUtil::GetVirtualServerInfo()");
        if (!FillVirtualServerInfo(hResource, info, bGetDataPath)) {
            return false;
        }
        if (!bGetSmtpInstances) {
            return true;
        }
        LOG_WARNING(L"CVirtualServerUtil::GetVirtualServerInfo(), should not get SMTP Instance IDs in PLATFORM_E2K7!");
    }
    return GetSMTPInstanceInfo(info.m_wsServerName, info);
}

bool CVirtualServerUtil::GetSMTPInstanceInfo(const wchar_t* lpwsNetworkName, CClusterVirtualServerInfo& info) {
    if (!CheckIsClusterByRegKey()) {
        info.m_nSmtpInstanceCount = -1;
        return true;
    }
    LOG_LEAVE_AT_END(L"CVirtualServerUtil::GetSMTPInstanceInfo()");
    CCluster cluster;
    std::wstring resourceName;
    if (!cluster.OpenByLPC() || !cluster.FindFirstResourceNameByNetworkName(resourceName, lpwsNetworkName)) {
        return false;
    }
    CClusterResource resNetworkName;
    if (!cluster.OpenResourceByName(resNetworkName, resourceName.c_str())) {
        return false;
    }
    std::wstring groupName;
    if (resNetworkName.GetResourceState(nullptr, &groupName) == CClusterResource::RES_STATE_UNKNOWN) {
        return false;
    }
    CClusterGroup group;
    std::list<std::wstring> instances;
    if (!cluster.OpenGroupByName(group, groupName.c_str()) ||
        !group.EnumResourceNamesInGroupByType(cluster, instances, SmtpInstanceType)) {
        return false;
    }
    info.m_nSmtpInstanceCount = 0;
    for (const std::wstring& name : instances) {
        if (info.m_nSmtpInstanceCount == CClusterVirtualServerInfo::MaxSmtpInstances) {
            return false;
        }
        CClusterResource instance;
        DWORD id = 0;
        if (!cluster.OpenResourceByName(instance, name.c_str()) ||
            !instance.GetPrivateDWORDProperty(L"ProtocolInstanceId", id)) {
            return false;
        }
        info.m_dwSmtpInstanceIds[info.m_nSmtpInstanceCount++] = id;
    }
    return true;
}
