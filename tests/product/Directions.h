// Both directions of switching the product's resources, described alike so that one test holds for both.
#ifndef DIRECTIONS_H
#define DIRECTIONS_H

#include "ProductServer.h"

namespace harness {

const DWORD PollInterval = 1000;

// What the two directions do not have in common.
struct Direction {
    const char* name;
    bool (*run)(const wchar_t* server, bool wait, DWORD timeout);
    const char* call;
    const char* innerLog;
    const char* from;
    const char* target;
    int targetState;
    const char* pending;
    const char* progress;
    const char* reached;
    const char* pendingLine;
    const char* success;
    const char* failure;
};

const Direction On = {"TurnOnKOVAResourceOnCurrentNode",
                      &CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode,
                      "OnlineClusterResource",
                      "OnlineResource",
                      "Offline",
                      "Online",
                      2,
                      "OnlinePending",
                      "I online-ing resource: KOVA...",
                      "I Resource KOVA is on-line.",
                      "I Resource KOVA is on-line pending.",
                      "I Resource: KOVA, is online/online pending",
                      "E Fail to bring resource: KOVA online"};

const Direction Off = {"CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode",
                       &CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode,
                       "OfflineClusterResource",
                       "OfflineResource",
                       "Online",
                       "Offline",
                       3,
                       "OfflinePending",
                       "I offline-ing resource: KOVA...",
                       "I Resource KOVA is off-line.",
                       "I Resource KOVA is off-line pending.",
                       "I Resource: KOVA, is offline/offline pending",
                       "E Fail to bring resource: KOVA offline"};

const Direction BothDirections[] = {On, Off};

inline std::string Replaced(std::string text, const std::string& what, const std::string& with) {
    const std::size_t at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

// Messages up to the group's listing, progress included.
const Texts Finding = {"I Network name: EVS1",
                       "I Opening cluster...",
                       "I Performing FindFirstResourceNameByNetworkName...",
                       "I Network name found: EVS1 Name for res:",
                       "I Opening resource by name:EVS1 Name...",
                       "I Getting resource state...",
                       "I Opening group: EVS1...",
                       "I Performing EnumResourceNamesInGroupByType..."};

// The server with its product in the state from which this direction starts.
inline ModelBuilder ServerFor(const Direction& direction) {
    return ProductServer().State(direction.from);
}

// The messages of switching one resource; `rest` comes from a direction, which speaks of KOVA.
inline Texts Attempt(const Direction& direction, const std::string& name, const Texts& rest) {
    Texts messages = {"I Open resource: " + name, Replaced(direction.progress, "KOVA", name)};
    for (const std::string& line : rest) {
        messages.push_back(Replaced(line, "KOVA", name));
    }
    return messages;
}

} // namespace harness

#endif
