// The events of a rehearsal, as words of a command line.
#ifndef CLUSCTL_REHEARSALEVENTS_H
#define CLUSCTL_REHEARSALEVENTS_H

#include "Simulation.h"

#include <string>
#include <vector>

struct RehearsalEvent {
    std::string word;               // "move"
    std::vector<std::string> names; // "EVS1", "NODE2"

    // "move EVS1 NODE2", printable.
    std::string Text() const;
};

// Throws WrongUsage for a word that is no event, or none of this kind of cluster, and for one without its names.
std::vector<RehearsalEvent> ParseEvents(const std::vector<std::wstring>& words, Answering asked);

// "node-down NAME, node-up NAME, ...", for help texts.
std::string KnownEvents();

#endif
