// Windows services of this computer: their states, and waiting for them.
#ifndef CLUSCTL_SERVICES_H
#define CLUSCTL_SERVICES_H

#include "LogCapture.h"

#include <cstdint>
#include <string>

// How long VCS takes at most to show a resource online whose service runs, in seconds.
constexpr std::uint32_t SettleTime = 10;

struct ServiceState {
    std::string word; // "running", "start pending", "stopped", "not running", "not installed here" or "unreadable"
    unsigned long code = 0; // Win32 code: why it is unreadable

    bool IsRunning() const;
    bool IsInstalled() const;
    // The word, with the code if there is one.
    std::string Text() const;
};

ServiceState ServiceStateHere(const std::wstring& service);

// Waits until the service runs, and shows its state on a terminal meanwhile; 0 seconds: not at all. One that is not
// installed here, or unreadable, is not waited for. Its state then.
ServiceState AwaitService(const LogCapture& log, const std::wstring& service, std::uint32_t seconds);

#endif
