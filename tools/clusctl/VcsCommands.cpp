#include "VcsCommands.h"

#include "CommandLine.h"

void AddVcsCommands(CommandLine& commandLine) {
    CLI::App& family =
        commandLine.AddFamily("Veritas Cluster Server", "vcs", "Ask and change the VCS cluster of this computer");
    AddVcsQueries(commandLine, family);
    AddVcsServerCommands(commandLine, family);
    AddVcsResourceCommands(commandLine, family);
    AddVcsProductCommands(commandLine, family);
    AddVcsSnapshot(commandLine, family);
}
