// The record of an Exchange virtual server on VCS.
#include "clus_VeritasCluster.h"

#include "core/Text.h"
#include "core/VeritasNames.h"

using clus::TextOf;
using namespace clus::veritas;

CVeritasVirtualServerInfo::CVeritasVirtualServerInfo()
    : nDelayAfterOnline(600), nDelayAfterOffline(600), bGroupOnline(false) {
}

CVeritasVirtualServerInfo::CVeritasVirtualServerInfo(const wchar_t* exchangeResName, const wchar_t* groupName)
    : CVeritasVirtualServerInfo() {
    sExchangeResName = TextOf(exchangeResName);
    SetGroupAndKOVAResourceName(groupName);
}

CVeritasVirtualServerInfo::CVeritasVirtualServerInfo(const CVeritasVirtualServerInfo& other) = default;
CVeritasVirtualServerInfo& CVeritasVirtualServerInfo::operator=(const CVeritasVirtualServerInfo& other) = default;
CVeritasVirtualServerInfo::~CVeritasVirtualServerInfo() = default;

void CVeritasVirtualServerInfo::SetGroupAndKOVAResourceName(const wchar_t* groupName) {
    // A copy, since callers pass the text of sGroupName itself.
    const std::wstring group = TextOf(groupName);
    const std::wstring prefix = group + L"-";
    sGroupName = group;
    sHostServiceResName = prefix + HostService;
    sRemoteConfigResName = prefix + RemoteConfigService;
    sSAServiceResName = prefix + SAService;
    sQAVMonitorResName = prefix + QAVMonitorService;
}
