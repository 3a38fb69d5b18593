// The calls of the cluster that a rehearsed command made, as the simulator's journal has them.
#ifndef CLUSCTL_CLUSTERCALLS_H
#define CLUSCTL_CLUSTERCALLS_H

#include <string>
#include <vector>

struct ClusterCall {
    std::string call;           // "AddClusterResourceNode"
    std::size_t occurrence = 0; // from 1: which of the calls of this name it is
    std::string text;           // with the objects' names in place of handles: "AddClusterResourceNode(EVS1 SA, NODE2)"
    unsigned long code = 0;     // why it failed; 0 when it did not
    bool changes = false;       // what is asked for is a change
    bool isTool = false;        // the run of a VCS tool: `code` is its exit code
    std::string said;           // the first line of what a tool printed that failed
};

// Of the lines of a journal, in their order. Lines that are none are passed over.
std::vector<ClusterCall> ReadClusterCalls(const std::string& journal);

// How many calls faults have matched: numbers, one a line.
std::vector<std::size_t> ReadFaultCounts(const std::string& lines);

// What there is to be said of the faults that did not come about.
std::vector<std::string> FaultsNotMet(const std::vector<std::string>& faults, const std::vector<std::size_t>& matched);

// What a call fails with when nothing else is told.
unsigned long UsualCodeOf(const std::string& call);

#endif
