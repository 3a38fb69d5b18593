// resource create, online, offline and delete: the product's resource of a virtual server.
#ifndef CLUSCTL_PRODUCTRESOURCECOMMANDS_H
#define CLUSCTL_PRODUCTRESOURCECOMMANDS_H

class CommandLine;

void AddProductResourceCommands(CommandLine& commandLine);

#endif
