// The model of the cluster that a recording was made of, as far as the recording tells.
#ifndef CLUSCTL_MODELFROMRECORDING_H
#define CLUSCTL_MODELFROMRECORDING_H

#include "CommandLine.h"
#include "Json.h"

#include <Recording.h>

#include <string>
#include <vector>

struct RecordedModel {
    Json model;
    // What had to be made up, a sentence each: "the recording does not tell the type of \"EVS1 SA\": Generic Service".
    std::vector<std::string> missing;
};

// Of a failover cluster. Throws Failure when the recording holds no call.
RecordedModel ModelFromRecording(const recording::Recording& recording);

// Adds "from-recording" to the family of commands about models.
void AddModelFromRecordingCommand(CommandLine& commandLine, CLI::App& family);

#endif
