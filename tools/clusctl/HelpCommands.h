// clusctl help, completion, manual: what the program tells about itself.
#ifndef CLUSCTL_HELPCOMMANDS_H
#define CLUSCTL_HELPCOMMANDS_H

class CommandLine;

void AddHelpCommands(CommandLine& commandLine);

#endif
