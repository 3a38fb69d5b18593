// smtp restart.
#ifndef CLUSCTL_SMTPCOMMANDS_H
#define CLUSCTL_SMTPCOMMANDS_H

class CommandLine;

void AddSmtpCommands(CommandLine& commandLine);

#endif
