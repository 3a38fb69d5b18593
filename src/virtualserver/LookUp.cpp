// Finding the server that a name or an IP address denotes.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "core/ServerName.h"
#include "platform/ComputerName.h"
#include "platform/ControlReply.h"
#include "platform/Log.h"
#include "platform/NameEnumeration.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

CLUS_LOG_PLACE(VirtualServerUtil, 5);

using clus::ComputerName;
using clus::IsProductType;

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
    clus::NameStore names;
    ComputerName computer;
    if (!cluster.OpenByLPC() || !clus::AppendClusterNames(cluster.GetHandle(), CLUSTER_ENUM_RESOURCE, names) ||
        !computer.Read()) {
        return false;
    }
    clus::ControlReply reply;
    for (const wchar_t* name : names) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name)) {
            continue;
        }
        const wchar_t* type = reply.AskForText(resource.GetResourceHandle(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
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
