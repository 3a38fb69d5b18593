// clusctl doctor: why a server is served on this node, or not.
#ifndef CLUSCTL_DOCTORCOMMAND_H
#define CLUSCTL_DOCTORCOMMAND_H

class CommandLine;

void AddDoctorCommand(CommandLine& commandLine);

#endif
