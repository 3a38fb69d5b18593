#include "Services.h"

#include "Deadline.h"
#include "Progress.h"
#include "SimulatedServices.h"
#include "StateNames.h"
#include "Text.h"

namespace {

const char NotInstalled[] = "not installed here";
const char Running[] = "running";

} // namespace

std::string ServiceStateHere(const std::wstring& service) {
    if (SimulatedServices::AreInForce()) {
        const bool runs = SimulatedServices::IsRunning(service);
        return runs ? Running : SimulatedServices::IsInstalled(service) ? "stopped" : NotInstalled;
    }
    std::string state = NotInstalled;
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE handle =
        manager == nullptr ? nullptr : OpenServiceW(manager, service.c_str(), SERVICE_QUERY_STATUS);
    SERVICE_STATUS status = {};
    if (handle != nullptr && QueryServiceStatus(handle, &status)) {
        state = ServiceStateWord(status.dwCurrentState);
    }
    if (handle != nullptr) {
        CloseServiceHandle(handle);
    }
    if (manager != nullptr) {
        CloseServiceHandle(manager);
    }
    return state;
}

bool IsRunningHere(const std::wstring& service) {
    return ServiceStateHere(service) == Running;
}

bool AwaitService(const LogCapture& log, const std::wstring& service, std::uint32_t seconds) {
    const Progress progress(log,
                            [service]() { return "service " + Printable(service) + ": " + ServiceStateHere(service); });
    const Deadline deadline(seconds);
    for (std::string state = ServiceStateHere(service); state != Running; state = ServiceStateHere(service)) {
        if (state == NotInstalled || deadline.IsOver()) {
            return false;
        }
        Pause();
    }
    return true;
}
