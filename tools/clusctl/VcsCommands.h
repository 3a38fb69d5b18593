// "vcs ...": the cluster of Veritas Cluster Server that this computer belongs to.
#ifndef CLUSCTL_VCSCOMMANDS_H
#define CLUSCTL_VCSCOMMANDS_H

#include <CLI/App.hpp>

class CommandLine;

void AddVcsCommands(CommandLine& commandLine);

// The parts of the family.
void AddVcsQueries(CommandLine& commandLine, CLI::App& family);
void AddVcsServerCommands(CommandLine& commandLine, CLI::App& family);
void AddVcsResourceCommands(CommandLine& commandLine, CLI::App& family);
void AddVcsProductCommands(CommandLine& commandLine, CLI::App& family);
void AddVcsSnapshot(CommandLine& commandLine, CLI::App& family);

#endif
