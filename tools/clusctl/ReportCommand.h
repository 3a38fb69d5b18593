// clusctl report: the cluster as one page for a browser.
#ifndef CLUSCTL_REPORTCOMMAND_H
#define CLUSCTL_REPORTCOMMAND_H

class CommandLine;

void AddReportCommand(CommandLine& commandLine);

#endif
