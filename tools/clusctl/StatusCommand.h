// clusctl status: how the cluster and its virtual servers are, once, again and again, or for a monitoring system.
#ifndef CLUSCTL_STATUSCOMMAND_H
#define CLUSCTL_STATUSCOMMAND_H

class CommandLine;

void AddStatusCommand(CommandLine& commandLine);

#endif
