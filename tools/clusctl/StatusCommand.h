// clusctl status: how the cluster and its virtual servers are, once, again and again, or for a monitoring system.
#ifndef CLUSCTL_STATUSCOMMAND_H
#define CLUSCTL_STATUSCOMMAND_H

#include "Report.h"

class CommandLine;

// The exit code of a check whose answer nobody gets.
constexpr ExitCode UnknownToMonitoring = static_cast<ExitCode>(3);

void AddStatusCommand(CommandLine& commandLine);

// Whether a monitoring system asks, which knows the check's own exit codes only.
bool IsCheck(const CommandLine& commandLine);

// The check's answer when that is why it cannot be made.
Report CheckReport(const Failure& failure);

#endif
