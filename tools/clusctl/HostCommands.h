// clusctl host: where the product keeps its settings and data on this computer.
#ifndef CLUSCTL_HOSTCOMMANDS_H
#define CLUSCTL_HOSTCOMMANDS_H

class CommandLine;

void AddHostCommands(CommandLine& commandLine);

#endif
