// clusctl snapshot: the live cluster as a model file of the cluster simulator.
#ifndef CLUSCTL_SNAPSHOTCOMMAND_H
#define CLUSCTL_SNAPSHOTCOMMAND_H

#include "Json.h"

#include <string>
#include <vector>

class CommandLine;

void AddSnapshotCommand(CommandLine& commandLine);

// Replaces the secrets of a cluster's model. How many of which resource: "1 secret of "EXVS Spooler"".
std::vector<std::string> MaskSecrets(Json& model);

// The file appears complete or not at all; an existing one is replaced. Throws Failure.
void WriteModel(const std::wstring& file, const Json& model);

#endif
