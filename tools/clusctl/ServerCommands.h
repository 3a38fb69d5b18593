// clusctl servers, query, smtp-instances, store-online: what the product asks the library.
#ifndef CLUSCTL_SERVERCOMMANDS_H
#define CLUSCTL_SERVERCOMMANDS_H

#include "Report.h"

class CommandLine;

void AddServerCommands(CommandLine& commandLine);

// The servers that this node serves, as "servers" has them. What the list lacks is told to the report.
Json ReadServers(Report& report);

#endif
