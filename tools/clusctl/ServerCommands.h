// clusctl servers, query, smtp-instances, store-online: what the product asks the library.
#ifndef CLUSCTL_SERVERCOMMANDS_H
#define CLUSCTL_SERVERCOMMANDS_H

class CommandLine;

void AddServerCommands(CommandLine& commandLine);

#endif
