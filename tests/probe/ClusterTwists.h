// What of the simulated cluster can be otherwise, one thing at a time: a switch of its model, or a call of this program
// that answers differently.
#ifndef CLUSTERTWISTS_H
#define CLUSTERTWISTS_H

#include "Probe.h"

#include <functional>
#include <string>
#include <vector>

// Runs the probe on a model.
typedef std::function<ProbeAnswers(const std::string& model)> RunProbe;

struct Twist {
    const char* rule; // which is to differ
    std::function<ProbeAnswers(const RunProbe&, const std::string& model)> run;
};

const std::vector<Twist>& ClusterTwists();

// Rules that reading does not show, and why.
struct Unreadable {
    const char* rule;
    const char* reason;
};

#endif
