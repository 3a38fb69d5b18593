// Changing VCS resources: create, link, delete, switch; and awaiting the service behind one.
#include "clus_VeritasCluster.h"

#include "core/Text.h"
#include "core/VeritasNames.h"
#include "platform/Log.h"

#include "CommonUtil.h"

CLUS_LOG_PLACE(VeritasCluster, 4);

using clus::TextOf;
using namespace clus::veritas;

namespace {

// Time that a service is given to complete its own start, and between two looks at it, in milliseconds.
const DWORD ServiceSettleTime = 10000;
const DWORD ServicePollInterval = 1000;

} // namespace

bool CVeritasCluster::CreateResource(const wchar_t* resName, const wchar_t* resType, const wchar_t* groupName,
                                     const wchar_t* childResName, const NameValuePairList& params) const {
    const std::wstring resource = TextOf(resName);
    const std::wstring add = L"hares -add " + resource + L" " + TextOf(resType) + L" " + TextOf(groupName);
    ExecuteVeritasCommand_(add.c_str(), true);

    const std::wstring prefix = L"hares -modify " + resource + L" ";
    for (const auto& param : params) {
        const std::wstring modify = prefix + L" " + param.first + L" " + param.second;
        ExecuteVeritasCommand_(modify.c_str(), true);
    }
    if (childResName) {
        const std::wstring link = L"hares -link " + resource + L" " + childResName;
        ExecuteVeritasCommand_(link.c_str(), true);
    }
    return true; // callers that must know whether the resource is there ask for it
}

bool CVeritasCluster::LinkResource(const wchar_t* parent, const wchar_t* child) const {
    const std::wstring command = L"hares -link " + TextOf(parent) + L" " + TextOf(child);
    return ExecuteVeritasCommand_(command.c_str(), true);
}

bool CVeritasCluster::DeleteResource(const wchar_t* resource) const {
    const std::wstring command = L"hares -delete " + TextOf(resource);
    ExecuteVeritasCommand_(command.c_str(), true);
    return true;
}

bool CVeritasCluster::TurnOnOrOffResource(const wchar_t* resource, const wchar_t* system, bool online) const {
    ProbeAndClearFaultOnres(resource, system);
    const std::wstring command =
        (online ? L"hares -online " : L"hares -offline ") + TextOf(resource) + L" -sys " + TextOf(system);
    return ExecuteVeritasCommand_(command.c_str(), true);
}

// The fault first, on all systems; then the probe.
void CVeritasCluster::ProbeAndClearFaultOnres(const wchar_t* resource, const wchar_t* system) const {
    const std::wstring name = TextOf(resource);
    ExecuteVeritasCommand_(L"hares -clear ", name.c_str(), nullptr, true);
    if (system) {
        const std::wstring probe = L"hares -probe " + name + L" -sys ";
        ExecuteVeritasCommand_(probe.c_str(), system, nullptr, true);
    }
}

bool CVeritasCluster::WaitForServiceToStart(const wchar_t* serviceName, int timeout) const {
    if (timeout < 1) {
        return true;
    }
    bool started = false;
    try {
        CServiceManager service(serviceName, nullptr);
        for (int remaining = timeout; remaining >= 0; remaining -= static_cast<int>(ServicePollInterval)) {
            if (service.QueryServiceStatus() == SERVICE_RUNNING) {
                LOG_INFO(L"service %s started successfully.", serviceName);
                Sleep(ServiceSettleTime);
                started = true;
                break;
            }
            Sleep(ServicePollInterval);
        }
    } catch (const OS::CException& exception) {
        LOG_ERROR(L"OS::CException caught, Err code: %d", exception.GetErrorCode());
    }
    if (!started) {
        LOG_WARNING(L"unable to start service %s.", serviceName);
    }
    return started;
}

bool CVeritasCluster::EncryptVeritasPassword(const wchar_t* password, std::wstring& encrypted) const {
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(L"vcsencrypt -agent", password ? password : L"", &tokens, false)) {
        return false;
    }
    if (!tokens.empty()) {
        encrypted = tokens.front();
    }
    return true;
}
