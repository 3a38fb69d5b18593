#include "Services.h"

#include "Deadline.h"
#include "Progress.h"
#include "SimulatedServices.h"
#include "StateNames.h"
#include "Text.h"

namespace {

const char NotInstalled[] = "not installed here";
const char Running[] = "running";
const char Unreadable[] = "unreadable";

class ManagerHandle {
public:
    explicit ManagerHandle(SC_HANDLE handle) : m_handle(handle) {
    }
    ~ManagerHandle() {
        if (m_handle != nullptr) {
            CloseServiceHandle(m_handle);
        }
    }
    ManagerHandle(const ManagerHandle&) = delete;
    ManagerHandle& operator=(const ManagerHandle&) = delete;

    SC_HANDLE get() const {
        return m_handle;
    }

private:
    const SC_HANDLE m_handle;
};

ServiceState UnreadableNow() {
    return {Unreadable, GetLastError()};
}

ServiceState SimulatedState(const std::wstring& service) {
    const bool runs = SimulatedServices::IsRunning(service);
    return {runs ? Running : SimulatedServices::IsInstalled(service) ? "stopped" : NotInstalled};
}

} // namespace

bool ServiceState::IsRunning() const {
    return word == Running;
}

bool ServiceState::IsInstalled() const {
    return word != NotInstalled;
}

std::string ServiceState::Text() const {
    return code == 0 ? word : word + ": " + ErrorText(code);
}

ServiceState ServiceStateHere(const std::wstring& service) {
    if (SimulatedServices::AreInForce()) {
        return SimulatedState(service);
    }
    const ManagerHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (manager.get() == nullptr) {
        return UnreadableNow();
    }
    const ManagerHandle handle(OpenServiceW(manager.get(), service.c_str(), SERVICE_QUERY_STATUS));
    if (handle.get() == nullptr) {
        return GetLastError() == ERROR_SERVICE_DOES_NOT_EXIST ? ServiceState{NotInstalled} : UnreadableNow();
    }
    SERVICE_STATUS status = {};
    return QueryServiceStatus(handle.get(), &status) ? ServiceState{ServiceStateWord(status.dwCurrentState)}
                                                     : UnreadableNow();
}

ServiceState AwaitService(const LogCapture& log, const std::wstring& service, std::uint32_t seconds) {
    const Progress progress(
        log, [service]() { return "service " + Printable(service) + ": " + ServiceStateHere(service).Text(); });
    const Deadline deadline(seconds);
    ServiceState state = ServiceStateHere(service);
    while (!state.IsRunning() && state.IsInstalled() && state.code == 0 && !deadline.IsOver()) {
        Pause();
        state = ServiceStateHere(service);
    }
    return state;
}
