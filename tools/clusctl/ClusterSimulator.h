// The cluster simulator that this process has loaded, driven through its control functions.
#ifndef CLUSCTL_CLUSTERSIMULATOR_H
#define CLUSCTL_CLUSTERSIMULATOR_H

#include "Json.h"

#include <string>
#include <vector>

// What the cluster did: "at" (milliseconds since 1601, UTC), "kind", "name", "what", "why".
typedef std::vector<Json> ClusterEvents;

namespace ClusterSimulator {

// Whether the clusapi.dll of this process is the simulator's. All below throw Failure when it is not.
bool IsLoaded();

// From now on the model answers, in memory. Throws Failure with the reason when it contradicts itself.
void Load(const std::string& model);

// The model as it is by now.
std::string Read();

// From now on the model's file is this process's alone, which writes it at last, and not with each change.
void KeepFile();
// Throws Failure when it cannot be written.
void WriteKeptFile();

// The answers are those on this node until the next call, or for "" as they were. The loaded model must not be changed
// meanwhile.
void SeeFrom(const std::string& node);

// A word of the cluster's events, and its names; empty ones that it does not have. The code of the cluster API, 997
// while something goes on. Throws Failure when there is nothing of that name.
unsigned long Happen(const std::string& event, const std::string& name, const std::string& node);

// Of the model's own clock, which is written when there is a file.
void AdvanceClock(unsigned milliseconds);

void RecordEvents();
// Since the last time.
ClusterEvents TakeEvents();

// The calls of this process, a JSON object a line.
void RecordCalls();
std::string ReadCalls();

// How many calls each fault has matched so far, a number a line.
std::string ReadFaultCounts();

// Whether it is a fault as the simulator knows them.
bool IsFault(const std::string& text);

} // namespace ClusterSimulator

#endif
