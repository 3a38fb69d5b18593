// The product's set of resources on VCS: creating, completing and listing it.
#include "clus_VeritasCluster.h"

#include "core/Text.h"
#include "core/VeritasNames.h"
#include "platform/Log.h"
#include "settings/ProductSettings.h"

#include <algorithm>
#include <limits>

CLUS_LOG_PLACE(VeritasCluster, 6);

using clus::TextOf;
using namespace clus::veritas;

namespace {

const std::size_t HostServicePosition = 1; // in the order of switching on
const wchar_t EmptyQuotes[] = L"\"\"";

// Positions in the default attribute lists.
enum RegRepParam {
    RegRepMountResName,
    RegRepReplicationDirectory,
    RegRepKeys,
    RegRepParamCount = 6
};
enum ServiceParam {
    ServiceDelayAfterOnline,
    ServiceDelayAfterOffline,
    ServiceUserAccount,
    ServicePassword,
    ServiceDomain,
    ServiceLanmanResName,
    ServiceUseVirtualName,
    ServiceServiceName,
    ServiceParamCount = 10
};

std::wstring Quoted(const std::wstring& text) {
    return L"\"" + text + L"\"";
}

// No less than 0 and no more than an int holds.
int MillisecondsFromSeconds(int seconds) {
    return static_cast<int>(std::min<long long>(1000LL * std::max(seconds, 0), std::numeric_limits<int>::max()));
}

// Creates a service's resource and brings it online on the virtual server's system.
bool CreateServiceAndTurnItOn(const CVeritasCluster& cluster, const CVeritasVirtualServerInfo& info,
                              const wchar_t* resName, const wchar_t* childResName, const NameValuePairList& params) {
    if (!cluster.CreateResource(resName, GenericServiceType, info.sGroupName.c_str(), childResName, params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", resName);
        return false;
    }
    if (!cluster.TurnOnOrOffResource(resName, info.sOnlineNode.c_str(), true)) {
        LOG_WARNING(L"failed to turn res: %s online.", resName);
        return false;
    }
    return true;
}

// The account of the remote configuration service; incomplete, it stays the default one.
void SetAccount(const CVeritasCluster& cluster, const wchar_t* group, const wchar_t* user, const wchar_t* password,
                NameValuePairList& params) {
    if (!password || !user || !group) {
        LOG_WARNING(L"szRemoteConfigPassword or szRemoteConfigUsername or szRemoteConfigGroup is NULL");
        return;
    }
    std::wstring encrypted;
    params[ServiceUserAccount].second = Quoted(user);
    cluster.EncryptVeritasPassword(password, encrypted);
    params[ServicePassword].second = Quoted(encrypted);
    params[ServiceDomain].second = Quoted(group);
}

} // namespace

void CVeritasCluster::MakeDefaultCreateRegRepResoruceParams(NameValuePairList& params) const {
    params.clear();
    params.reserve(RegRepParamCount);
    params.emplace_back(L"MountResName", L"");
    params.emplace_back(ReplicationDirectoryAttribute, L"");
    // An association of the key with an empty option.
    params.emplace_back(KeysAttribute, Quoted(GetDefaultRegRepRegKey()) + L" " + EmptyQuotes);
    params.emplace_back(L"RestoreLocally", L"1");
    params.emplace_back(L"Critical", L"0");
    params.emplace_back(L"Enabled", L"1");
}

void CVeritasCluster::MakeDefaultCreateGenericServiceResoruceParams(NameValuePairList& params) const {
    params.clear();
    params.reserve(ServiceParamCount);
    params.emplace_back(L"DelayAfterOnline", L"600");
    params.emplace_back(L"DelayAfterOffline", L"600");
    params.emplace_back(L"UserAccount", L"LocalSystem");
    params.emplace_back(L"Password", EmptyQuotes);
    params.emplace_back(L"Domain", Quoted(L"NT Authority"));
    params.emplace_back(L"LanmanResName", EmptyQuotes);
    params.emplace_back(L"UseVirtualName", L"1");
    params.emplace_back(ServiceNameAttribute, EmptyQuotes);
    params.emplace_back(L"Critical", L"0");
    params.emplace_back(L"Enabled", L"1");
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers link against the signature by value
bool CVeritasCluster::CreateKOVAResources(CVeritasVirtualServerInfo info, bool bCreateQAV, bool bCreateRemoteConfig,
                                          const wchar_t* szRemoteConfigGroup, const wchar_t* szRemoteConfigUsername,
                                          const wchar_t* szRemoteConfigPassword) const {
    LOG_ENTER_AND_LEAVE(L"CreateKOVAResources");
    const wchar_t* const group = info.sGroupName.c_str();
    const wchar_t* const regRep = info.sRegRepResName.c_str();
    const wchar_t* const host = info.sHostServiceResName.c_str();
    const wchar_t* const attendant = info.sSAServiceResName.c_str();
    const wchar_t* const monitor = info.sQAVMonitorResName.c_str();
    const wchar_t* const remoteConfig = info.sRemoteConfigResName.c_str();

    // The registry replication first, since the services depend on it.
    NameValuePairList params;
    MakeDefaultCreateRegRepResoruceParams(params);
    params[RegRepMountResName].second = info.sMountResName;
    params[RegRepReplicationDirectory].second = GetDefaultRegRepReplicationDirectory(info.sDataPath.c_str());
    if (!CreateResource(regRep, RegRepType, group, info.sMountResName.c_str(), params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", regRep);
        return false;
    }

    MakeDefaultCreateGenericServiceResoruceParams(params);
    params[ServiceDelayAfterOnline].second = std::to_wstring(info.nDelayAfterOnline);
    params[ServiceDelayAfterOffline].second = std::to_wstring(info.nDelayAfterOffline);
    params[ServiceLanmanResName].second = info.sLanmanResName;
    LOG_INFO(L"Creating %s...", host);
    params[ServiceServiceName].second = HostService;
    if (!CreateResource(host, GenericServiceType, group, info.sExchangeResName.c_str(), params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", host);
        return false;
    }
    LinkResource(host, regRep);

    LOG_INFO(L"Creating %s...", attendant);
    params[ServiceServiceName].second = SAService;
    if (!CreateResource(attendant, GenericServiceType, group, regRep, params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", attendant);
        return false;
    }
    if (bCreateQAV) {
        LOG_INFO(L"Creating %s...", monitor);
        params[ServiceServiceName].second = QAVMonitorService;
        if (!CreateResource(monitor, GenericServiceType, group, regRep, params)) {
            LOG_WARNING(L"Creating veritas res for %s failed.", monitor);
            return false;
        }
    }
    if (bCreateRemoteConfig) {
        LOG_INFO(L"Creating %s...", remoteConfig);
        params[ServiceServiceName].second = RemoteConfigService;
        SetAccount(*this, szRemoteConfigGroup, szRemoteConfigUsername, szRemoteConfigPassword, params);
        if (!CreateResource(remoteConfig, GenericServiceType, group, host, params)) {
            LOG_WARNING(L"Creating veritas res for %s failed.", remoteConfig);
            return false;
        }
    }

    if (info.bGroupOnline) {
        // Failing to come online is no failure: the resources are there.
        const std::vector<std::wstring> names = KOVAResourcesInSwitchOnOrder(info, bCreateQAV, bCreateRemoteConfig);
        for (const std::wstring& name : names) {
            LOG_INFO(L"Turning on %s...", name.c_str());
            const bool isTurnedOn = TurnOnOrOffResource(name.c_str(), info.sOnlineNode.c_str(), true);
            if (isTurnedOn && &name == &names[HostServicePosition]) {
                LOG_INFO(L"Waiting for service %s to go online", host);
                WaitForServiceToStart(HostService, MillisecondsFromSeconds(info.nDelayAfterOnline));
            }
        }
    }
    return true;
}

std::vector<std::wstring> CVeritasCluster::KOVAResourcesInSwitchOnOrder(const CVeritasVirtualServerInfo& info,
                                                                        bool bCreateQAV, bool bCreateRemoteConfig) {
    std::vector<std::wstring> names = {info.sSAServiceResName, info.sHostServiceResName};
    if (bCreateQAV) {
        names.push_back(info.sQAVMonitorResName);
    }
    if (bCreateRemoteConfig) {
        names.push_back(info.sRemoteConfigResName);
    }
    return names;
}

bool CVeritasCluster::CheckIfGenericServiceResourceExistsAndTurnItOn(const wchar_t* groupName,
                                                                     const wchar_t* serviceName,
                                                                     const wchar_t* nodeName, int timeout) const {
    std::wstring resName;
    if (!GetGenericServiceResNameByServiceName(groupName, serviceName, resName)) {
        LOG_WARNING(L"call to GetGenericServiceResNameByServiceName failed");
        return false;
    }
    if (resName.empty()) {
        return false;
    }
    if (TurnOnOrOffResource(resName.c_str(), nodeName, true)) {
        WaitForServiceToStart(TextOf(serviceName).c_str(), timeout);
    } else {
        LOG_WARNING(L"failed to turn res: %s online.", resName.c_str());
    }
    return true; // it exists, online or not
}

bool CVeritasCluster::CreateQAVResourceAndTurnItOn(const wchar_t* virtualName, int timeout) const {
    LOG_ENTER_AND_LEAVE(L"CreateQAVResource");
    CVeritasVirtualServerInfo info;
    if (!CollectEVSInfo(virtualName, info)) {
        return true; // no such server: nothing to do, and no failure
    }
    std::wstring regRep;
    if (!FindExistingKOVARegRepResName(info.sGroupName.c_str(), regRep)) {
        return true;
    }
    if (CheckIfGenericServiceResourceExistsAndTurnItOn(info.sGroupName.c_str(), QAVMonitorService,
                                                       info.sOnlineNode.c_str(), timeout)) {
        return true;
    }
    NameValuePairList params;
    MakeDefaultCreateGenericServiceResoruceParams(params);
    const wchar_t* const monitor = info.sQAVMonitorResName.c_str();
    LOG_INFO(L"Creating %s...", monitor);
    params[ServiceServiceName].second = QAVMonitorService;
    params[ServiceLanmanResName].second = info.sLanmanResName;
    if (!CreateServiceAndTurnItOn(*this, info, monitor, regRep.c_str(), params)) {
        return false;
    }
    WaitForServiceToStart(QAVMonitorService, timeout);
    return true;
}

bool CVeritasCluster::CreateRemoteConfigResourceAndTurnItOn(const wchar_t* virtualName,
                                                            const wchar_t* szRemoteConfigGroup,
                                                            const wchar_t* szRemoteConfigUsername,
                                                            const wchar_t* szRemoteConfigPassword, int timeout) const {
    LOG_ENTER_AND_LEAVE(L"CreateRemoteConfigResource");
    CVeritasVirtualServerInfo info;
    if (!CollectEVSInfo(virtualName, info)) {
        LOG_WARNING(L"Unable to Collect EVS info");
        return false;
    }
    if (CheckIfGenericServiceResourceExistsAndTurnItOn(info.sGroupName.c_str(), RemoteConfigService,
                                                       info.sOnlineNode.c_str(), timeout)) {
        return true;
    }
    std::wstring host;
    if (!GetGenericServiceResNameByServiceName(info.sGroupName.c_str(), HostService, host)) {
        LOG_WARNING(L"Unable to GetKOVAResoruceNameInGroup");
        return false;
    }
    NameValuePairList params;
    MakeDefaultCreateGenericServiceResoruceParams(params);
    const wchar_t* const remoteConfig = info.sRemoteConfigResName.c_str();
    LOG_INFO(L"Creating %s...", remoteConfig);
    params[ServiceServiceName].second = RemoteConfigService;
    params[ServiceDomain].second = Quoted(TextOf(szRemoteConfigGroup));
    params[ServiceUserAccount].second = Quoted(TextOf(szRemoteConfigUsername));
    std::wstring encrypted;
    EncryptVeritasPassword(szRemoteConfigPassword, encrypted);
    params[ServicePassword].second = Quoted(encrypted);
    params[ServiceLanmanResName].second = info.sLanmanResName;
    if (!CreateServiceAndTurnItOn(*this, info, remoteConfig, host.c_str(), params)) {
        return false;
    }
    WaitForServiceToStart(RemoteConfigService, timeout);
    return true;
}

bool CVeritasCluster::CollectKOVAResNames(std::vector<std::wstring>& resNames) const {
    return CollectKOVAResNames(NameValuePairList(), resNames);
}

bool CVeritasCluster::CollectKOVAResNames(const wchar_t* groupName, std::vector<std::wstring>& resNames) const {
    const NameValuePairList filter = {{GroupAttribute, TextOf(groupName)}};
    return CollectKOVAResNames(filter, resNames);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool CVeritasCluster::CollectKOVAResNames(const NameValuePairList filter, std::vector<std::wstring>& resNames) const {
    LOG_ENTER_AND_LEAVE(L"CollectKOVAResNames");
    for (const wchar_t* service : {HostService, RemoteConfigService, SAService, QAVMonitorService}) {
        NameValuePairList conditions(filter);
        conditions.emplace_back(TypeAttribute, GenericServiceType);
        conditions.emplace_back(ServiceNameAttribute, service);
        if (!EnumResourceNamesW(resNames, &conditions)) {
            return false;
        }
    }
    NameValuePairList conditions(filter);
    conditions.emplace_back(TypeAttribute, RegRepType);
    conditions.emplace_back(ReplicationDirectoryAttribute,
                            GetDefaultRegRepReplicationDirectory(clus::DataRootPath().c_str()));
    return EnumResourceNamesW(resNames, &conditions);
}
