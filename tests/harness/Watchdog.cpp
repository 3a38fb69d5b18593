#include "Watchdog.h"

#include <cwchar>

namespace harness {

DWORD LongestTest() {
    wchar_t seconds[16] = {};
    const DWORD length = GetEnvironmentVariableW(L"CLUSUTIL_TEST_SECONDS", seconds, 16);
    return length > 0 && length < 16 ? static_cast<DWORD>(std::wcstoul(seconds, nullptr, 10)) * 1000 : 90000;
}

Watchdog::Watchdog(const std::string& testName, DWORD milliseconds)
    : m_message("watchdog: " + testName + " hangs\n"), m_milliseconds(milliseconds),
      m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_thread(CreateThread(nullptr, 0, &Watch, this, 0, nullptr)) {
}

Watchdog::~Watchdog() {
    SetEvent(m_stop);
    WaitForSingleObject(m_thread, INFINITE);
    CloseHandle(m_thread);
    CloseHandle(m_stop);
}

DWORD WINAPI Watchdog::Watch(void* context) {
    const Watchdog& self = *static_cast<const Watchdog*>(context);
    if (WaitForSingleObject(self.m_stop, self.m_milliseconds) == WAIT_TIMEOUT) {
        // Straight to the handle: the hanging thread may hold the streams' locks.
        DWORD written = 0;
        WriteFile(GetStdHandle(STD_ERROR_HANDLE), self.m_message.data(), static_cast<DWORD>(self.m_message.size()),
                  &written, nullptr);
        TerminateProcess(GetCurrentProcess(), WatchdogExitCode);
    }
    return 0;
}

} // namespace harness
