// clusctl support-bundle: everything that support asks for, in one archive.
#ifndef CLUSCTL_SUPPORTBUNDLECOMMAND_H
#define CLUSCTL_SUPPORTBUNDLECOMMAND_H

class CommandLine;

void AddSupportBundleCommand(CommandLine& commandLine);

#endif
