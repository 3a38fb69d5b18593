// What is so at the moment, kept beside the main.cf: configuration mode, states, probes.
#ifndef VCSSIM_STATE_H
#define VCSSIM_STATE_H

#include "Progress.h"

#include <map>
#include <set>
#include <stdexcept>
#include <string>

namespace vcssim {

class StateError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct State {
    typedef std::map<std::string, std::map<std::string, std::string>> Table; // object -> system -> state
    typedef std::map<std::string, std::set<std::string>> Marks;              // resource -> systems

    bool writable = false;
    Table resources;                            // "ONLINE", "OFFLINE", "FAULTED" or any other text
    Table groups;                               // only where it shall not follow from the resources: "PARTIAL|FAULTED"
    std::map<std::string, std::string> systems; // other than RUNNING
    Marks probed;
    Marks failing;                 // going online ends in FAULTED
    bool isEngineStopped = false;  // for the tools of this computer
    bool takesDownSystems = false; // something may be online where nothing runs; else no such state is read
    std::string settings;          // of the product, as JSON, which the tools know nothing of; empty without any
    Progress progress;

    void Forget(const std::string& resource);
    void ForgetGroup(const std::string& group);
};

State ReadState(const std::string& json); // throws StateError
std::string WriteState(const State& state);

} // namespace vcssim

#endif
