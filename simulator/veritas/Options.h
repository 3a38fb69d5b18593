// What the environment says: files, and the switches for what is not known about the real tools' output.
#ifndef VCSSIM_OPTIONS_H
#define VCSSIM_OPTIONS_H

#include <string>

namespace vcssim {

struct Options {
    bool warnsOfNoMatch = false;       // no-match=warning|nothing
    bool blanksInLists = false;        // separator=blanks|tabs
    bool bareEmptyValues = false;      // empty=bare|padded
    bool encryptPrompts = false;       // encrypt=prompt|bare
    std::string lineEnd = "\r\n";      // lineend=crlf|lf|cr
    bool engineIsUp = true;            // engine=up|down|starting
    bool engineStarts = false;         // not ready yet
    bool shortSummary = false;         // summary=known|full
    bool bareClusterState = false;     // cluster-state=bare|table
    bool actsOnUnfreeze = true;        // unfreeze=acts|waits
    bool keepsScope = false;           // scope=keeps|follows
    bool refusesRegistration = false;  // registration=refused|accepted
    bool faultsSlowOffline = true;     // slow-offline=fault|stuck
    std::string nodeState = "RUNNING"; // node=RUNNING|LEAVING|REMOTE_BUILD|ADMIN_WAIT: of the one that the tools run on
};

struct Environment {
    std::wstring mainCf;
    std::wstring journal;
    std::wstring faults;
    Options options;
};

// Throws std::invalid_argument that names the switch it does not know.
Options ParseOptions(const std::string& list);
Environment ReadEnvironment();

} // namespace vcssim

#endif
