// What the engine knows of a cluster's configuration. Systems, groups and the resources of a group are named by their
// places in the lists.
#ifndef VCSSIM_ENGINEMODEL_H
#define VCSSIM_ENGINEMODEL_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vcssim {

typedef std::int64_t Seconds;

const std::size_t NoPlace = static_cast<std::size_t>(-1);

// Vectors of it are by system. The defaults are those of VCS.
struct ResourceModel {
    std::string name;
    bool persistent = false; // never brought online or offline
    bool critical = true;
    std::vector<bool> enabled;
    std::vector<bool> autoStart;
    std::vector<bool> failing;         // going online ends in a fault
    std::vector<std::size_t> children; // what it requires
    std::vector<std::size_t> parents;  // what requires it
    Seconds onlineTime = 0;            // how long it takes
    Seconds offlineTime = 0;
    Seconds onlineTimeout = 300; // how long it may take
    Seconds offlineTimeout = 300;
    int onlineRetryLimit = 0; // further attempts to go online
    int restartLimit = 0;     // restarts before a fault is one
    Seconds confInterval = 600;
};

// A system of the group's SystemList.
struct GroupPlace {
    std::size_t system = 0;
    int priority = 0; // the lower, the sooner
    int zone = -1;    // of its SystemZones; -1: in none
    bool enabled = true;
};

struct GroupDependency {
    enum Location {
        Local,
        Global,
        Remote
    };
    enum Rigidity {
        Soft,
        Firm,
        Hard
    };

    std::size_t child = 0;
    bool offline = false; // "offline local": never both on a system; else the child has to be online
    Location location = Local;
    Rigidity rigidity = Firm;
};

struct GroupModel {
    enum Policy {
        Priority,
        RoundRobin,
        Load
    };

    std::string name;
    bool parallel = false;
    int autoFailOver = 1; // 2: only to systems of the same zone
    Policy policy = Priority;
    bool autoStart = true;
    bool autoRestart = true;
    std::vector<std::size_t> autoStartList;
    int onlineRetryLimit = 0; // of the whole group, on the same system
    Seconds onlineRetryInterval = 0;
    bool faultPropagation = true;
    int load = 0;
    std::map<std::string, int> prerequisites;
    std::vector<GroupPlace> places;
    std::vector<ResourceModel> resources;
    std::vector<GroupDependency> dependencies; // on other groups, without a loop
};

struct SystemModel {
    std::string name;
    int capacity = 100;
    std::map<std::string, int> limits;
};

struct EngineModel {
    std::vector<SystemModel> systems;
    std::vector<GroupModel> groups;
    bool actsOnUnfreeze = true;    // on faults that came while a group was frozen
    bool faultsSlowOffline = true; // a resource that does not go offline in time is cleaned and faulted; else it stays
};

} // namespace vcssim

#endif
