// What is wrong with a configuration that can be read.
#ifndef VCSSIM_CONFIGURATIONCHECK_H
#define VCSSIM_CONFIGURATIONCHECK_H

#include "Cluster.h"

#include <string>
#include <vector>

namespace vcssim {

struct Problem {
    std::string what;                // a sentence
    std::size_t at = 0;              // where in the text of the configuration
    bool isUnknownAttribute = false; // a simulator that knows the type less well takes it
};

// What the cluster does not take, in the order of the configuration.
std::vector<Problem> ProblemsOf(const Cluster& cluster);

// What is taken and has no effect: the clauses that are not understood.
std::vector<Problem> NotesOn(const Cluster& cluster);

} // namespace vcssim

#endif
