// Ends the process with a code of its own when a test hangs, and says which one.
#ifndef HARNESS_WATCHDOG_H
#define HARNESS_WATCHDOG_H

#include <winsock2.h>
#include <windows.h>

#include <string>

namespace harness {

const UINT WatchdogExitCode = 99;

// 90,000 milliseconds, or what the environment variable CLUSUTIL_TEST_SECONDS says.
DWORD LongestTest();

class Watchdog {
public:
    explicit Watchdog(const std::string& testName, DWORD milliseconds = LongestTest());
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    static DWORD WINAPI Watch(void* context);

    std::string m_message;
    DWORD m_milliseconds;
    HANDLE m_stop;
    HANDLE m_thread;
};

} // namespace harness

#endif
