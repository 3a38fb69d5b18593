#include "clus_VirtualServerUtil.h"

#define CLUS_SOURCE_TAG ".\\clus_VirtualServerUtil.cpp"
#include "clus_Cluster.h"
#include "clus_ComputerName.h"
#include "clus_Log.h"
#include "clus_Platform.h"
#include "clus_ProductRegistry.h"
#include "clus_ProductResource.h"
#include "clus_PropertyList.h"
#include "clus_ResourceTypes.h"
#include "clus_ServerName.h"
#include "clus_SmtpRestart.h"

#include "CommonUtil.h"
#include "WebServerUtil.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <list>
#include <vector>

using clus::CcrType;
using clus::ComputerName;
using clus::CriticalSectionGuard;
using clus::DefaultProductRegistryKey;
using clus::InformationStoreType;
using clus::IpAddressType;
using clus::LoadProductRegistryKey;
using clus::NetworkNameType;
using clus::ProductRegistryKey;
using clus::RegistryKey;
using clus::SettingsLock;
using clus::SingleCopyType;
using clus::SmtpInstanceType;
using clus::SystemAttendantType;

namespace {

const wchar_t DataPathProperty[] = L"KOVA_DATA_PATH";

// Registry texts are read into 2,048 characters; how many bytes of that may be filled differs by value.
const DWORD RegistryTextCharacters = 2048;
const DWORD ShortRegistryTextBytes = 2048; // 1,023 characters and their terminator

std::atomic<bool> IsClusterCached(false);
std::atomic<bool> IsClusterChecked(false);

unsigned int InstanceCount = 0;

// Counts an instance, and starts Windows Sockets with the first; undone unless the instance is completed.
class InstanceStart {
public:
    InstanceStart() {
        if (InstanceCount++ == 0) {
            WSADATA data;
            WSAStartup(MAKEWORD(2, 2), &data);
        }
    }
    ~InstanceStart() {
        if (!m_completed) {
            Undo();
        }
    }
    InstanceStart(const InstanceStart&) = delete;
    InstanceStart& operator=(const InstanceStart&) = delete;

    void Complete() {
        m_completed = true;
    }
    static void Undo() {
        if (--InstanceCount == 0) {
            WSACleanup();
        }
    }

private:
    bool m_completed = false;
};

// Copies a text into a record member: cut to the member, terminated, the rest zero.
template <std::size_t Size> void CopyText(wchar_t (&member)[Size], const wchar_t* text) {
    const std::size_t length = std::min(std::wcslen(text), Size - 1);
    std::copy_n(text, length, member);
    std::fill(member + length, member + Size, L'\0');
}

// "HomeDir", from the open product key.
bool ReadHomeDir(const RegistryKey& key, wchar_t (&text)[RegistryTextCharacters]) {
    if (!key.ReadText(L"HomeDir", text, RegistryTextCharacters, ShortRegistryTextBytes)) {
        LOG_ERROR(L"Cannot get home directory");
        return false;
    }
    return true;
}

bool IsProductType(const wchar_t* type) {
    return std::wcscmp(type, SingleCopyType) == 0 || std::wcscmp(type, CcrType) == 0;
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

    const auto readDataPath = [&]() {
        std::wstring dataPath;
        if (!resource.GetPrivateStringProperty(DataPathProperty, dataPath)) {
            LOG_WARNING(L"Cannot get KOVA_DATA_PATH property.");
            return false;
        }
        if (dataPath.empty()) {
            LOG_WARNING(L"KOVA_DATA_PATH string length is 0");
            return false;
        }
        if (bGetDataPath) {
            CopyText(info.m_wsDataPath, dataPath.c_str());
        }
        return true;
    };
    if (!readDataPath()) {
        return false;
    }
    if (ResUtilResourceTypesEqual(SingleCopyType, hResource)) {
        LOG_INFO(L"Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY");
    } else if (ResUtilResourceTypesEqual(CcrType, hResource)) {
        LOG_INFO(L"Quorum Mode: CLUSTER_QUORUM_CCR");
    } else {
        LOG_WARNING(L"Unexpected cluster quorum mode!");
        return false;
    }
    // Read a second time on purpose: the value that counts is the one after the mode is known.
    if (bGetDataPath && !readDataPath()) {
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

CVirtualServerUtil::CVirtualServerUtil() : m_bIsCluster(false) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::CVirtualServerUtil()");
    InstanceStart start;
    m_bIsCluster = CheckIsClusterByRegKey();
    if (!m_bIsCluster) {
        GetNormalServerInfo(m_normalServer);
    }
    start.Complete();
}

CVirtualServerUtil::~CVirtualServerUtil() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::~CVirtualServerUtil()");
    InstanceStart::Undo();
}

// Settings ------------------------------------------------------------------------------------------------------

bool CVirtualServerUtil::CheckIsClusterByRegKey() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::CheckIsClusterByRegKey()");
    if (!IsClusterChecked) {
        const CriticalSectionGuard guard(SettingsLock);
        if (!IsClusterChecked) {
            LoadProductRegistryKey();
            DWORD value = 0;
            const RegistryKey key(ProductRegistryKey.c_str(), KEY_ALL_ACCESS);
            if (key) {
                key.ReadDword(L"IsCluster", value);
            }
            IsClusterCached = value == 1;
            IsClusterChecked = true; // a key that cannot be opened settles the answer too
        }
    }
    return IsClusterCached;
}

int CVirtualServerUtil::GetClusterQuorumModeByRegKey() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::GetClusterQuorumModeByRegKey()");
    LoadProductRegistryKey();
    DWORD mode = 0;
    const RegistryKey key(ProductRegistryKey.c_str(), KEY_READ);
    if (key && !key.ReadDword(L"ClusterQuorumMode", mode)) {
        LOG_WARNING(L"CVirtualServerUtil::GetClusterQuorumModeByRegKey(), cannot read key value ClusterQuorumMode!");
    }
    return static_cast<int>(mode);
}

std::wstring CVirtualServerUtil::GetDataRootPath() {
    wchar_t text[RegistryTextCharacters] = {};
    {
        // The compiled-in key on purpose, whatever the settings file names.
        const RegistryKey key(DefaultProductRegistryKey, KEY_READ);
        if (key) {
            key.ReadText(L"DataRootPath", text, RegistryTextCharacters, sizeof(text));
        } else {
            LOG_WARNING(L"Cannot open registry %s, Last err:%d", DefaultProductRegistryKey, GetLastError());
        }
    }
    LOG_INFO(L"GetVeritasDiskPath: returns: %s", text);
    return text;
}

bool CVirtualServerUtil::GetHomeDir(std::wstring& homeDir) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::GetHomeDir()");
    LoadProductRegistryKey();
    const RegistryKey key(ProductRegistryKey.c_str(), KEY_READ);
    if (!key) {
        return false;
    }
    wchar_t text[RegistryTextCharacters] = {};
    if (!ReadHomeDir(key, text)) {
        return false;
    }
    homeDir = text;
    return true;
}

int CVirtualServerUtil::QueryIISSiteID() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::CheckIsClusterByRegKey()"); // the text it shares since its first release
    LoadProductRegistryKey();
    const RegistryKey key(ProductRegistryKey.c_str(), KEY_READ);
    if (!key) {
        return -1;
    }
    wchar_t homeDir[RegistryTextCharacters] = {};
    if (!ReadHomeDir(key, homeDir)) {
        return -1;
    }
    const int iisServerType = 0;
    CWebServer webServer(homeDir);
    if (webServer.GetServerType() != iisServerType) {
        return -1;
    }
    const int siteId = webServer.GetIISSiteID();
    LOG_INFO(L"Got IIS web site id: %d", siteId);
    return siteId;
}

void CVirtualServerUtil::ConcatCCRDataPath(const wchar_t* dataRoot, const wchar_t* serverName, std::wstring& path) {
    path = NS_StringUtils::concatPath(NS_StringUtils::concatPath(dataRoot ? dataRoot : L"", L"CCRVSDB"),
                                      serverName ? serverName : L"");
}

// The plain server ----------------------------------------------------------------------------------------------

bool CVirtualServerUtil::GetNormalServerInfo(CClusterVirtualServerInfo& info) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::GetNormalServerInfo()");
    LoadProductRegistryKey();
    {
        const RegistryKey key(ProductRegistryKey.c_str(), KEY_ALL_ACCESS);
        if (key) {
            wchar_t text[RegistryTextCharacters] = {};
            if (!ReadHomeDir(key, text)) {
                return false;
            }
            CopyText(info.m_wsDataPath, text);

            if (key.ReadText(L"ServerIP", text, RegistryTextCharacters, ShortRegistryTextBytes)) {
                CopyText(info.m_wsServerIP, text);
                LOG_INFO(L"Got server IP from registry: %s", text);
            } else {
                LOG_ERROR(L"Cannot get ServerIP, assume 127.0.0.1");
                CopyText(info.m_wsServerIP, L"127.0.0.1");
            }

            if (key.ReadText(L"SERVERGUID", text, RegistryTextCharacters, ShortRegistryTextBytes)) {
                CopyText(info.m_wsServerGUID, text);
                LOG_INFO(L"Got server guid from registry: %s", text);
            } else {
                LOG_ERROR(L"Cannot get SERVER GUID, assume NULL server guid");
                CopyText(info.m_wsServerGUID, L"00000000-0000-0000-0000-000000000000");
            }
        }
    }
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"CServerPathLocatorBase::Init(), cannot get computer name");
        return false;
    }
    CopyText(info.m_wsServerName, computer.c_str());
    info.m_nSmtpInstanceCount = -1;
    info.m_bIsOnline = true;

    const std::wstring dataRoot = GetDataRootPath();
    LOG_INFO(L"Root data path got: %s", dataRoot.c_str());
    if (dataRoot.empty()) {
        LOG_INFO(L"Skip update Root data path.");
    } else {
        LOG_INFO(L"Root data path.");
        CopyText(info.m_wsDataPath, dataRoot.c_str());
    }
    LOG_INFO(L"Got Normal Server: %s, %s, %s", info.m_wsServerName, info.m_wsDataPath, info.m_wsServerGUID);
    return true;
}

// Look-up -------------------------------------------------------------------------------------------------------

bool CVirtualServerUtil::IsTheSameVirtualServer(const wchar_t* lpwsNameOrIP, const CClusterVirtualServerInfo& info) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::IsTheSameVirtualServer()");
    LOG_INFO(L"Finding %s", lpwsNameOrIP);
    if (!lpwsNameOrIP) {
        return false;
    }
    if (std::wcscmp(lpwsNameOrIP, info.m_wsServerIP) == 0) {
        LOG_INFO(L"lpwsNameOrIP == info.m_wsServerIP, return true)");
        return true;
    }
    const std::wstring wanted = clus::WideUpper(lpwsNameOrIP);
    const std::wstring server = clus::WideUpper(info.m_wsServerName);
    if (wanted == server) {
        return true;
    }
    if (wanted == L"LOCALHOST") {
        ComputerName computer;
        if (!computer.Read()) {
            return false;
        }
        if (server == computer.c_str()) {
            return true;
        }
    }
    if (clus::StartsLikeHostName(lpwsNameOrIP)) {
        return clus::UpperFirstLabel(lpwsNameOrIP) == server;
    }

    const std::size_t cchWanted = std::wcslen(lpwsNameOrIP);
    std::vector<char> address(cchWanted + 1);
    if (std::wcstombs(address.data(), lpwsNameOrIP, address.size()) != cchWanted) {
        LOG_ERROR(L"Call wcstombs failed");
        return false;
    }
    const unsigned long binaryAddress = inet_addr(address.data());
    const hostent* host = gethostbyaddr(reinterpret_cast<const char*>(&binaryAddress), 4, AF_INET);
    if (WSAGetLastError() != 0 || !host || !host->h_name) {
        return false;
    }
    // The converted count includes the terminator and so never equals the length: an address that is not the record's
    // own does not match through its host name. Callers rely on that.
    const std::size_t cbHost = std::strlen(host->h_name);
    std::size_t cchConverted = 0;
    mbstowcs_s(&cchConverted, nullptr, 0, host->h_name, 0);
    std::vector<wchar_t> hostName(cchConverted);
    mbstowcs_s(&cchConverted, hostName.data(), hostName.size(), host->h_name, hostName.size());
    if (cchConverted != cbHost) {
        LOG_ERROR(L"Call wcstombs failed");
    }
    return false;
}

bool CVirtualServerUtil::QueryServerInfo(const CClusterVirtualServerLookupRequest& request,
                                         CClusterVirtualServerInfo& info) {
    return m_bIsCluster ? QueryServerInfoFromCluster_(request, info) : QueryServerInfoFromRegistry_(request, info);
}

bool CVirtualServerUtil::QueryServerInfoFromRegistry_(const CClusterVirtualServerLookupRequest& request,
                                                      CClusterVirtualServerInfo& info) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::QueryServerInfoFromRegistry_()");
    const bool found = IsTheSameVirtualServer(request.m_wsNameOrIP.c_str(), m_normalServer);
    if (found) {
        info = m_normalServer;
    }
    return found;
}

bool CVirtualServerUtil::QueryServerInfoFromCluster_(const CClusterVirtualServerLookupRequest& request,
                                                     CClusterVirtualServerInfo& info) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::QueryServerInfoFromCluster_()");
    info.m_bIsOnline = false;
    CCluster cluster;
    std::list<std::wstring> names;
    ComputerName computer;
    if (!cluster.OpenByLPC() || !cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names) || !computer.Read()) {
        return false;
    }
    for (const std::wstring& name : names) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            continue;
        }
        const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
        if (!type || !IsProductType(type)) {
            continue;
        }
        std::wstring owner;
        const CClusterResource::RES_STATE state = resource.GetResourceState(&owner, nullptr);
        if (owner != computer.c_str()) {
            continue;
        }
        info.m_bIsOnline = state == CClusterResource::RES_STATE_ONLINE;
        if (GetVirtualServerInfo(resource.GetResourceHandle(), info, true, false) &&
            IsTheSameVirtualServer(request.m_wsNameOrIP.c_str(), info)) {
            return true;
        }
    }
    return false;
}

// Enumeration ---------------------------------------------------------------------------------------------------

CVirtualServerUtil::ENUM_VS_RESULT CVirtualServerUtil::EnumServersOnCurrentNode(CClusterVirtualServerInfo* pBuffer,
                                                                                int* pCount) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumServersOnCurrentNode()");
    if (m_bIsCluster) {
        LOG_INFO(L"m_bIsCluster is true, enumerating virtual servers.");
        return EnumVirtualServerOnCurrentNode_(pBuffer, pCount);
    }
    LOG_INFO(L"m_bIsCluster is false, enumerating normal servers.");
    return EnumNormalServerOnCurrentNode_(pBuffer, pCount);
}

CVirtualServerUtil::ENUM_VS_RESULT
CVirtualServerUtil::EnumNormalServerOnCurrentNode_(CClusterVirtualServerInfo* pBuffer, int* pCount) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumNormalServerOnCurrentNode_()");
    const bool fits = *pCount >= 1;
    *pCount = 1;
    if (!fits) {
        return ENUM_VS_RESULT_MORE_DATA;
    }
    pBuffer[0] = m_normalServer;
    return ENUM_VS_RESULT_SUCCESS;
}

CVirtualServerUtil::ENUM_VS_RESULT
CVirtualServerUtil::EnumVirtualServerOnCurrentNode_(CClusterVirtualServerInfo* pBuffer, int* pCount) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()");
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_ERROR(L"Cannot open cluster by LPC.");
        return ENUM_VS_RESULT_FAIL;
    }
    std::list<std::wstring> names;
    if (!cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names)) {
        LOG_ERROR(L"Cannot enum names on the cluster");
        return ENUM_VS_RESULT_FAIL;
    }
    LOG_INFO(L"EnumNames, returns %d resources.", static_cast<int>(names.size()));
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"Cannot GetComputerName, code: %d", GetLastError());
        return ENUM_VS_RESULT_FAIL;
    }
    LOG_INFO(L"Current node is: %s", computer.c_str());

    std::list<CClusterVirtualServerInfo> servers; // records are large: a list never holds them twice while it grows
    for (const std::wstring& name : names) {
        LOG_INFO(L"Opening resource:");
        LOG_INFO(L"%s", name.c_str());
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            LOG_WARNING(L"Warning, open resource %s fail, code: %d", name.c_str(), GetLastError());
            continue;
        }
        const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
        if (!type) {
            LOG_WARNING(L"cannot get resource type for res:%s, skip this resource.", name.c_str());
            continue;
        }
        if (!IsProductType(type)) {
            LOG_INFO(L"Skip resource %s:%s", name.c_str(), type);
            continue;
        }
        LOG_INFO(L"Process resource %s:%s...", name.c_str(), type);
        std::wstring owner;
        const CClusterResource::RES_STATE state = resource.GetResourceState(&owner, nullptr);
        if (owner != computer.c_str()) {
            LOG_INFO(L"This resource: %s is online on node:%s, skip.", name.c_str(), owner.c_str());
            continue;
        }
        servers.emplace_back();
        servers.back().m_bIsOnline = state == CClusterResource::RES_STATE_ONLINE;
        if (!GetVirtualServerInfo(resource.GetResourceHandle(), servers.back(), true, false)) {
            LOG_WARNING(L"Warning, GetVirtualServerInfo for server %s fail, code: %d", name.c_str(), GetLastError());
            servers.pop_back();
            continue;
        }
        LOG_INFO(L"adding resource %s to the return server list.", name.c_str());
    }

    const int count = static_cast<int>(servers.size());
    if (!pBuffer) {
        *pCount = count;
        LOG_INFO(L"Returning virtual server count %d only.", count);
        return ENUM_VS_RESULT_MORE_DATA;
    }
    if (*pCount < count) {
        *pCount = count; // before the line is logged, so that both numbers in it are the count
        LOG_INFO(L"The buffer is supplied with %d space, but %d is needed, returning ENUM_VS_RESULT_MORE_DATA", *pCount,
                 count);
        return ENUM_VS_RESULT_MORE_DATA;
    }
    *pCount = count;
    std::copy(servers.begin(), servers.end(), pBuffer);
    LOG_INFO(L"Returning %d virtual servers data.", count);
    return ENUM_VS_RESULT_SUCCESS;
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

bool CVirtualServerUtil::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::IsAtLeastOneExchangeResourceDLLOnlineOnCurrentNode()");
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_WARNING(L"Calling CCluster::OpenByLPC() fail");
        return false;
    }
    std::list<std::wstring> stores;
    if (!cluster.EnumResourceNamesByType(InformationStoreType, stores)) {
        LOG_WARNING(L"Calling CCluster::EnumResourceNamesByType fail");
        return false;
    }
    ComputerName computer;
    if (!computer.Read()) {
        LOG_WARNING(L"Calling GetComputerName fail");
        return false;
    }
    LOG_INFO(L"Got computer name:: %s", computer.c_str());
    for (const std::wstring& name : stores) {
        LOG_INFO(L"Found store: %s", name.c_str());
        CClusterResource store;
        if (!cluster.OpenResourceByName(store, name.c_str())) {
            LOG_WARNING(L"cannot open store: %s, skip this one", name.c_str());
            continue;
        }
        std::wstring owner;
        const CClusterResource::RES_STATE state = store.GetResourceState(&owner, nullptr);
        if (owner != computer.c_str()) {
            LOG_INFO(L"Skip this store, reason: the node is on node: %s", owner.c_str());
            continue;
        }
        if (state == CClusterResource::RES_STATE_ONLINE) {
            return true;
        }
        LOG_INFO(L"Skip this store, reason: the node is not online");
    }
    return false;
}

// The product's own resource ------------------------------------------------------------------------------------

bool CVirtualServerUtil::CreateKOVAResource(const wchar_t* lpwsDataRootPath, const wchar_t* lpwsKOVAResourceName,
                                            const wchar_t* lpwsDataPath, const wchar_t* lpwsVirtualServerName,
                                            const wchar_t* szVirtualDiskLetter, int nQuorumMode) {
    LOG_ENTER_AND_LEAVE(L"CreateKOVAResource_");
    CCluster cluster;
    CClusterResource created;
    // Deletes what was created, on failure and when an exception passes. Without a resource the deletion fails
    // harmlessly.
    struct RollBack {
        CClusterResource& created;
        bool success;
        ~RollBack() {
            if (!success) {
                LOG_INFO(L"Deleting unsuccessfully created resource.");
                created.DeleteResource();
            }
        }
    } rollBack = {created, false};
    rollBack.success = CreateKOVAResource_(cluster, created, lpwsDataRootPath, lpwsKOVAResourceName, lpwsDataPath,
                                           lpwsVirtualServerName, szVirtualDiskLetter, nQuorumMode);
    return rollBack.success;
}

bool CVirtualServerUtil::CreateKOVAResource_(CCluster& cluster, CClusterResource& created,
                                             const wchar_t* lpwsDataRootPath, const wchar_t* lpwsKOVAResourceName,
                                             const wchar_t* lpwsDataPath, const wchar_t* lpwsVirtualServerName,
                                             const wchar_t* szVirtualDiskLetter, int nQuorumMode) {
    const bool singleCopy = nQuorumMode == CLUSTER_QUORUM_SINGLE_COPY;
    if (!lpwsKOVAResourceName) {
        LOG_ERROR(L"NULL KOVA resource name");
        return false;
    }
    if (!lpwsVirtualServerName) {
        LOG_ERROR(L"NULL virtual server name");
        return false;
    }
    if (singleCopy && !szVirtualDiskLetter) {
        LOG_ERROR(L"Quorum mode is single copy cluster but szVirtualDiskLetter is NULL!");
        return false;
    }
    if (!cluster.OpenByLPC()) {
        LOG_ERROR(L"Cannot open cluster");
        return false;
    }
    std::wstring resourceName;
    if (!cluster.FindFirstResourceNameByNetworkName(resourceName, lpwsVirtualServerName)) {
        LOG_ERROR(L"cannot Find network name");
        return false;
    }
    CClusterResource networkName;
    if (!cluster.OpenResourceByName(networkName, resourceName.c_str())) {
        LOG_ERROR(L"Cannot open network name resource:%s", resourceName.c_str());
        return false;
    }
    std::wstring groupName;
    if (!networkName.IsOnlineOnCurrentNode(&groupName)) {
        LOG_ERROR(L"The virtual sever is offline, cannot create resource");
        return false;
    }
    LOG_INFO(L"Get group %s ", groupName.c_str());
    CClusterGroup group;
    if (!cluster.OpenGroupByName(group, groupName.c_str())) {
        LOG_ERROR(L"Cannot open group:%s", groupName.c_str());
        return false;
    }

    // A group holds at most one product resource of either type.
    std::list<std::wstring> existing;
    if (!group.EnumResourceNamesInGroupByType(cluster, existing, SingleCopyType)) {
        LOG_ERROR(L"Cannot enum KOVA SCC resources for group:%s", groupName.c_str());
        return false;
    }
    if (!existing.empty()) {
        LOG_ERROR(L"There's already other KOVA resources present, abort resource creating.");
        return false;
    }
    if (!group.EnumResourceNamesInGroupByType(cluster, existing, CcrType)) {
        LOG_ERROR(L"Cannot enum KOVA CCR attendant resources for group:%s", groupName.c_str());
        return false;
    }
    if (!existing.empty()) {
        LOG_ERROR(L"There's already other KOVA resources present, abort resource creating.");
        return false;
    }

    std::list<std::wstring> attendants;
    if (!group.EnumResourceNamesInGroupByType(cluster, attendants, SystemAttendantType)) {
        LOG_ERROR(L"Cannot enum System attendant resources for group:%s", groupName.c_str());
        return false;
    }
    if (attendants.empty()) {
        LOG_ERROR(L"No system attendant resource found in group:%s, cannot create KOVA resource", groupName.c_str());
        return false;
    }
    if (attendants.size() > 1) {
        LOG_INFO(L"Warning, more than 1 system attendant found, use the 1st one");
    }
    LOG_INFO(L"Get system attendant %s ", attendants.front().c_str());
    CClusterResource attendant;
    if (!cluster.OpenResourceByName(attendant, attendants.front().c_str())) {
        LOG_ERROR(L"Cannot open system attendant resource:%s, abort", attendants.front().c_str());
        return false;
    }

    std::list<std::wstring> stores;
    if (!group.EnumResourceNamesInGroupByType(cluster, stores, InformationStoreType)) {
        LOG_ERROR(L"Cannot enum store resources for group:%s", groupName.c_str());
        return false;
    }
    if (stores.empty()) {
        LOG_ERROR(L"No store resource found in group:%s, cannot create KOVA resource", groupName.c_str());
        return false;
    }
    if (stores.size() > 1) {
        LOG_INFO(L"Warning, more than 1 store found, use the 1st one");
    }
    LOG_INFO(L"Get Store: %s ", stores.front().c_str());
    CClusterResource store;
    if (!cluster.OpenResourceByName(store, stores.front().c_str())) {
        LOG_ERROR(L"Cannot open store resource:%s, abort", stores.front().c_str());
        return false;
    }

    CClusterResource disk;
    if (singleCopy) {
        if (szVirtualDiskLetter[0] != L'\0') {
            if (!cluster.OpenResourceByName(disk, szVirtualDiskLetter)) {
                return false;
            }
        } else if (!attendant.GetResourceStorageDependency(disk)) {
            LOG_ERROR(L"Cannot open cluster disk, abort");
            return false;
        }
        if (!disk.IsOnlineOnCurrentNode(nullptr)) {
            LOG_ERROR(L"Shared disk is not online on current node, abort");
            return false;
        }
    }

    if (!singleCopy && nQuorumMode != CLUSTER_QUORUM_CCR) {
        LOG_ERROR(L"Unexpected cluster quorum type %d", nQuorumMode);
        return false;
    }
    if (!CCluster::CreateResource(group, created, lpwsKOVAResourceName, singleCopy ? SingleCopyType : CcrType)) {
        LOG_ERROR(L"Cannot create KOVA resource, abort");
        return false;
    }
    if (singleCopy && !created.AddDependency(disk.GetResourceHandle())) {
        LOG_ERROR(L"Cannot add disk dependency,abort");
        return false;
    }
    if (!created.AddDependency(store.GetResourceHandle())) {
        LOG_ERROR(L"Cannot add store dependency,abort");
        return false;
    }
    if (!created.AddDependency(networkName.GetResourceHandle())) {
        LOG_ERROR(L"Cannot add network name dependency,abort");
        return false;
    }

    std::list<std::wstring> nodes;
    if (!attendant.EnumNames(CLUSTER_RESOURCE_ENUM_NODES, nodes)) {
        LOG_ERROR(L"Cannot enum nodes in the cluster,abort");
        return false;
    }
    for (const std::wstring& nodeName : nodes) {
        LOG_INFO(L"Adding node %s as its possible owner", nodeName.c_str());
        CClusterNode node;
        if (!cluster.OpenNodeByName(node, nodeName.c_str())) {
            LOG_ERROR(L"Error Opening node:%s", nodeName.c_str());
            return false;
        }
        clus::AddPossibleOwner(created, node, nodeName.c_str());
    }

    std::wstring ccrDataPath;
    const wchar_t* dataPath = lpwsDataPath;
    if (!singleCopy) {
        if (lpwsDataRootPath) {
            ConcatCCRDataPath(lpwsDataRootPath, lpwsVirtualServerName, ccrDataPath);
        }
        dataPath = lpwsDataRootPath ? ccrDataPath.c_str() : nullptr;
    }
    if (!SetKOVAProeprty_(created.GetResourceHandle(), DataPathProperty, dataPath)) {
        LOG_ERROR(L"Cannot set private property KOVA_DATA_PATH to %s", dataPath ? dataPath : L"");
        return false;
    }
    // The text names another action than the value sets; both are what installations have.
    if (!created.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 1)) {
        LOG_ERROR(L"Cannot set common property RestartAction to ClusterResourceDontRestart");
    }
    return true;
}

int CVirtualServerUtil::SetKOVAProeprty_(HRESOURCE hResource, const wchar_t* lpwsName, const wchar_t* lpwsValue) {
    LOG_ENTER_AND_LEAVE(L"SetKOVAProeprty_");
    if (!lpwsName || !lpwsValue) {
        return 0;
    }
    const std::size_t cchName = std::wcslen(lpwsName);
    const std::size_t cchValue = std::wcslen(lpwsValue);
    const DWORD cb = static_cast<DWORD>(clus::TextPropertyListSize(cchName, cchValue));
    const clus::LocalMemoryOwner block(LocalAlloc(LPTR, cb));
    if (!block) {
        LOG_ERROR(L"Error calling local alloc:%d", GetLastError());
        return 0;
    }
    clus::WriteTextPropertyList(static_cast<unsigned char*>(block.get()), lpwsName, cchName, lpwsValue, cchValue);
    return ClusterResourceControl(hResource, nullptr, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, block.get(), cb, nullptr,
                                  0, nullptr) == ERROR_SUCCESS
               ? 1
               : 0;
}

bool CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(const wchar_t* lpwsVirtualServerName, bool bWait,
                                                         DWORD dwWaitTimeout) {
    LOG_ENTER_AND_LEAVE(L"TurnOnKOVAResourceOnCurrentNode");
    return clus::SwitchProductResources(lpwsVirtualServerName, bWait, dwWaitTimeout, clus::SwitchOn);
}

bool CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode(const wchar_t* lpwsVirtualServerName, bool bWait,
                                                          DWORD dwWaitTimeout) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode");
    return clus::SwitchProductResources(lpwsVirtualServerName, bWait, dwWaitTimeout, clus::SwitchOff);
}

bool CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(const wchar_t* lpwsVirtualServerName) {
    LOG_ENTER_AND_LEAVE(L"DeleteKOVAResurceOnCurrentNode");
    CCluster cluster;
    std::list<std::wstring> names;
    std::list<std::wstring> refusing;
    return clus::FindProductResources(cluster, lpwsVirtualServerName, clus::FindToDelete, names) &&
           clus::DeleteOwnedResources(cluster, names, refusing) && clus::DeleteWhenOffline(cluster, refusing);
}

bool CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode() {
    LOG_ENTER(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource()");
    const bool bSuccess = clus::RestartFirstSmtpInstanceOfThisNode();
    LOG_LEAVE(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), bSuccess=%d", bSuccess);
    return bSuccess;
}
