// What a cluster of either kind looks like at one moment: nodes, groups and resources with their states, and which of
// them are the product's. Texts are UTF-8, names as the cluster writes them.
#ifndef CLUSCTL_PICTURE_CLUSTERPICTURE_H
#define CLUSCTL_PICTURE_CLUSTERPICTURE_H

#include <string>
#include <vector>

namespace picture {

enum class Kind {
    None, // this computer is in no cluster
    Failover,
    Vcs
};

// What a state means, whatever the cluster calls it.
enum class Condition {
    Online,
    Partly, // of a group: some of its resources are online
    Pending,
    Offline,
    Failed,
    Unknown // it cannot be read, or the cluster itself does not know
};

// What a resource is to an Exchange virtual server.
enum class Role {
    Other,
    NetworkName, // carries the server's name
    Address,     // of a failover cluster: the IP address on which that rests
    Attendant,   // Exchange System Attendant
    Store,       // Exchange Information Store
    Product      // the product's own: one resource of a failover cluster, several services of VCS
};

// On VCS: the state of a group or a resource on one system, as VCS shows it: "PARTIAL|FAULTED".
struct StateOnNode {
    std::string node;
    std::string state;
};

struct Node {
    std::string name;
    std::string state; // "up", "paused", ...; of VCS "running", "exited", ...
    bool isUp = false; // takes part with all its rights: neither paused nor joining
};

struct Group {
    std::string name;
    std::string state;
    Condition condition = Condition::Unknown;
    std::string node; // where it is, or of VCS where it is at least partly online; empty: nowhere, or not known
    std::vector<StateOnNode> states; // of VCS
    bool isOwnerMisspelt = false;    // of a failover cluster: it is this computer, in another letter case
    bool isFrozenForNow = false;     // of VCS, as are the next
    bool isFrozenPersistently = false;
    std::vector<std::string> disabledOn = {}; // nodes
};

struct Resource {
    std::string name;
    std::string type;  // empty: not known
    std::string group; // empty: not known
    std::string state;
    Condition condition = Condition::Unknown;
    std::string node;                // as of a group
    std::vector<StateOnNode> states; // of VCS
    Role role = Role::Other;
    std::string networkName; // of a network name: the name that it carries; empty when it is not known
    std::string service;     // of the product's services on VCS: the Windows service
    bool isEnabled = true;   // of VCS, which looks at no other
    bool hasDependenciesRead = true;
    std::vector<std::string> dependsOn;
};

// One of the product's resources of which the library makes no server, asked on the node that owns it.
struct LeftOutResource {
    std::string name;
    std::string reason;
};

struct ClusterPicture {
    Kind kind = Kind::None;
    std::string name; // empty: not known, as of VCS without the tool that tells it
    std::vector<Node> nodes;
    std::vector<Group> groups;
    std::vector<Resource> resources; // in the cluster's order
    std::vector<std::string>
        productServices; // on VCS: the Windows services that the product has in each virtual server
    // Of a failover cluster, as far as this computer is one of its nodes:
    std::vector<LeftOutResource> leftOut;
    std::string plainNode; // this computer, when the product takes it for a plain server
};

} // namespace picture

#endif
