// How a cluster and its Exchange virtual servers are: what is not as it should be, and how bad that is.
#ifndef CLUSCTL_PICTURE_HEALTH_H
#define CLUSCTL_PICTURE_HEALTH_H

#include "ClusterPicture.h"

#include <cstddef>
#include <string>
#include <vector>

namespace picture {

// From the best to the worst.
enum class Level {
    Ok,
    Warning,
    Unknown, // it cannot be told
    Critical
};

// "ok", "warning", "unknown" or "critical".
const char* NameOf(Level level);

struct Problem {
    Level level = Level::Warning;
    std::string object;     // the name of a node, group or resource
    std::string text;       // what is wrong with it
    const char* code = "";  // one of the doctor's, which judges by the same rule
    std::string group = {}; // that it is in; empty of what is in none
    bool isOfGroup = false; // the object is the group
    std::string node = {};  // of VCS: where it is so, if it is not where the group is
};

// One of the product's resources of a virtual server, or one that should be there.
struct ProductPart {
    std::string name;    // of one that is not there on VCS, the name that it would have; empty on a failover cluster
    std::string service; // of VCS
    std::string state;   // "missing" when it is not there
    Condition condition = Condition::Unknown;
    bool isThere = false;
};

struct VirtualServer {
    std::string name; // the network name, or the group's when that is not known
    std::string group;
    std::string state; // of the group
    std::string node;
    Level level = Level::Ok;  // the worst problem in the group
    std::string product;      // "online", "offline", "failed", "pending", "missing", "incomplete" or "unknown"
    bool isInOrder = true;    // the product's resources that are there rest on the network name and the store
    bool isProtected = false; // all that has to be there is online, the server too
    std::vector<ProductPart> parts;
};

struct Health {
    Level level = Level::Ok;
    std::vector<Problem> problems;      // the worst first
    std::vector<VirtualServer> servers; // the worst first
    std::size_t nodesUp = 0;
    std::size_t serversOnline = 0;
    std::size_t serversProtected = 0;
    std::size_t resourcesFailed = 0;
    std::size_t resourcesPending = 0;
};

// `isComplete`: whether all of the picture could be read; otherwise what is not known may be bad.
Health HealthOf(const ClusterPicture& cluster, bool isComplete);

// One line as monitoring systems take it: a verdict, then figures behind '|'.
std::string MonitoringLine(const ClusterPicture& cluster, const Health& health);

} // namespace picture

#endif
