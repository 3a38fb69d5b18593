// Windows services of this computer: their states, and waiting for them.
#ifndef CLUSCTL_SERVICES_H
#define CLUSCTL_SERVICES_H

#include "LogCapture.h"

#include <cstdint>
#include <string>

// How long VCS takes at most to show a resource online whose service runs, in seconds.
constexpr std::uint32_t SettleTime = 10;

// "running", "start pending", "stopped", "not running" or "not installed here".
std::string ServiceStateHere(const std::wstring& service);

bool IsRunningHere(const std::wstring& service);

// Waits until the service runs, and shows its state on a terminal meanwhile; 0 seconds: not at all. One that is not
// installed here is not waited for. Whether it runs then.
bool AwaitService(const LogCapture& log, const std::wstring& service, std::uint32_t seconds);

#endif
