// A Windows service that takes half a second to start and runs until it is stopped, for a minute at most.
#include <windows.h>

namespace {

SERVICE_STATUS_HANDLE StatusHandle;
HANDLE StopEvent;

void Report(DWORD state) {
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    status.dwWaitHint = 10000;
    SetServiceStatus(StatusHandle, &status);
}

DWORD WINAPI Control(DWORD control, DWORD, void*, void*) {
    if (control == SERVICE_CONTROL_STOP) {
        SetEvent(StopEvent);
    }
    return NO_ERROR;
}

void WINAPI Run(DWORD, LPWSTR* arguments) {
    StopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    StatusHandle = RegisterServiceCtrlHandlerExW(arguments[0], &Control, nullptr);
    Report(SERVICE_START_PENDING);
    Sleep(500);
    Report(SERVICE_RUNNING);
    WaitForSingleObject(StopEvent, 60000);
    Report(SERVICE_STOPPED);
}

} // namespace

int main() {
    wchar_t anyName[] = L"";
    const SERVICE_TABLE_ENTRYW table[] = {{anyName, &Run}, {nullptr, nullptr}};
    return StartServiceCtrlDispatcherW(table) ? 0 : 1;
}
