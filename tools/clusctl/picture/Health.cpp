#include "Health.h"

#include "Dependencies.h"
#include "Printable.h"
#include "Problems.h"

#include <algorithm>
#include <set>

namespace picture {

namespace {

std::string Quoted(const std::string& name) {
    return "\"" + Printable(name) + "\"";
}

// Of several conditions, the one that tells most of what is wrong.
Condition WorstOf(const std::vector<ProductPart>& parts) {
    for (const Condition bad : {Condition::Failed, Condition::Unknown, Condition::Offline, Condition::Pending}) {
        for (const ProductPart& part : parts) {
            if (part.isThere && part.condition == bad) {
                return bad;
            }
        }
    }
    return Condition::Online;
}

const char* WordOf(Condition condition) {
    switch (condition) {
    case Condition::Online:
        return "online";
    case Condition::Pending:
        return "pending";
    case Condition::Offline:
        return "offline";
    case Condition::Failed:
        return "failed";
    default:
        return "unknown";
    }
}

bool IsFaulted(const StateOnNode& state) {
    return state.state.find("FAULTED") != std::string::npos;
}

class Examination {
public:
    Examination(const ClusterPicture& cluster, bool isComplete) : m_cluster(cluster), m_index(cluster) {
        for (const Resource& resource : cluster.resources) {
            if (resource.type.empty() || resource.group.empty()) {
                m_groupsNotWhole.insert(resource.group);
            }
        }
        ExamineNodes();
        for (const Group& group : cluster.groups) {
            ExamineGroup(group);
        }
        m_group.clear();
        if (!cluster.plainNode.empty() && !m_health.servers.empty()) {
            Add("cluster-not-deployed", cluster.plainNode,
                "the product takes the node for a plain server, for IsCluster is not 1: no virtual server is served "
                "there");
        }
        if (!isComplete) {
            Add("cluster-unread", cluster.name, "not all of the cluster can be read");
        }
        Finish();
    }

    Health Result() {
        return m_health;
    }

private:
    void Add(const char* code, const std::string& object, const std::string& text) {
        m_health.problems.push_back({LevelOf(code), object, text, code, m_group});
    }
    void AddOfGroup(const char* code, const std::string& group, const std::string& text) {
        Add(code, group, text);
        m_health.problems.back().isOfGroup = true;
    }

    const char* OfKind(const char* failover, const char* vcs) const {
        return m_cluster.kind == Kind::Vcs ? vcs : failover;
    }

    void ExamineNodes() {
        for (const Node& node : m_cluster.nodes) {
            if (node.isUp) {
                ++m_health.nodesUp;
                continue;
            }
            const char* const code = node.state == "unknown"       ? "node-unread"
                                     : m_cluster.kind == Kind::Vcs ? "vcs-system-down"
                                     : node.state == "paused"      ? "node-paused"
                                     : node.state == "joining"     ? "node-joining"
                                                                   : "node-down";
            Add(code, node.name, "the node is " + Printable(node.state));
        }
    }

    void ExamineGroup(const Group& group) {
        const Members& members = m_index.MembersOf(group.name);
        const bool isServer = std::any_of(members.begin(), members.end(), [](const Resource* member) {
            return member->role == Role::Store || member->role == Role::Attendant || member->role == Role::Product;
        });
        const std::size_t before = m_health.problems.size();
        m_group = group.name;
        ExamineStates(group, members, isServer);
        ExamineElsewhere(group, members);
        if (isServer) {
            ExamineSwitches(group, members);
            AddServer(group, members);
            VirtualServer& server = m_health.servers.back();
            for (std::size_t i = before; i < m_health.problems.size(); ++i) {
                server.level = std::max(server.level, m_health.problems[i].level);
            }
            if (IsOnPlainNode(group)) { // told once, of the node
                server.level = Level::Critical;
            }
        }
    }

    // What is down with its whole group is told once, as the group.
    void ExamineStates(const Group& group, const Members& members, bool isServer) {
        const std::string what = isServer ? "the virtual server is " : "the group is ";
        const std::size_t before = m_health.problems.size();
        const bool isOffline = group.condition == Condition::Offline;
        const bool isOneOnline = std::any_of(members.begin(), members.end(), [](const Resource* member) {
            return member->condition == Condition::Online;
        });
        const bool isDown = isOffline || (group.condition == Condition::Unknown && !isOneOnline);
        for (const Resource* const member : members) {
            ExamineResource(*member, isDown, isServer);
        }
        const bool isExplained = m_health.problems.size() != before;
        if (group.condition == Condition::Failed) {
            AddOfGroup(OfKind("group-failed", "vcs-group-faulted"), group.name, what + group.state);
        } else if (isOffline && isServer) {
            AddOfGroup(OfKind("group-offline", "vcs-group-offline"), group.name, what + group.state);
        } else if (group.condition == Condition::Pending && !isExplained) {
            AddOfGroup("resource-pending", group.name, what + group.state);
        } else if (group.condition == Condition::Unknown) {
            AddOfGroup("group-unread", group.name, "its state is not known");
        }
    }

    // What is faulted where the group is not shows when the group has to go there.
    void ExamineElsewhere(const Group& group, const Members& members) {
        if (group.node.empty()) {
            return;
        }
        std::set<std::string> told;
        for (const StateOnNode& state : group.states) {
            if (state.node != group.node && IsFaulted(state)) {
                told.insert(state.node);
                AddOfGroup("vcs-group-faulted-elsewhere", group.name,
                           "it cannot go to " + Printable(state.node) + ", where it is faulted");
                m_health.problems.back().node = state.node;
            }
        }
        for (const Resource* const member : members) {
            for (const StateOnNode& state : member->states) {
                if (state.node != group.node && IsFaulted(state) && told.count(state.node) == 0) {
                    Add("vcs-resource-faulted-elsewhere", member->name,
                        "the resource is faulted on " + Printable(state.node));
                    m_health.problems.back().node = state.node;
                }
            }
        }
    }

    // What somebody has switched off in VCS.
    void ExamineSwitches(const Group& group, const Members& members) {
        if (group.isFrozenForNow || group.isFrozenPersistently) {
            AddOfGroup("vcs-group-frozen", group.name, "the group is frozen: VCS does nothing when it fails");
        }
        for (const std::string& node : group.disabledOn) {
            AddOfGroup("vcs-group-disabled", group.name,
                       "the group is disabled on " + Printable(node) + ", and cannot come online there");
            m_health.problems.back().node = node;
        }
        for (const Resource* const member : members) {
            if (!member->isEnabled && member->role != Role::Other) {
                Add("vcs-resource-disabled", member->name, "the resource is disabled: VCS does not look at it");
            }
        }
    }

    void ExamineResource(const Resource& resource, bool isGroupDown, bool isOfServer) {
        const bool isProduct = resource.role == Role::Product;
        switch (resource.condition) {
        case Condition::Failed:
            ++m_health.resourcesFailed;
            Add(OfKind(isProduct ? "product-failed" : "resource-failed", "vcs-resource-faulted"), resource.name,
                "the resource is " + resource.state);
            break;
        case Condition::Pending:
            ++m_health.resourcesPending;
            Add(isProduct ? "product-pending" : "resource-pending", resource.name, "the resource is " + resource.state);
            break;
        case Condition::Offline:
            if (!isGroupDown && isOfServer && !isProduct) { // the product's are told by themselves
                const bool isPart = resource.role != Role::Other && resource.role != Role::Address;
                Add(isPart ? "server-part-offline" : "resource-offline", resource.name,
                    "the resource is offline, and its virtual server is not");
            }
            break;
        case Condition::Unknown:
            Add(OfKind("resource-unread", "vcs-resource-not-probed"), resource.name, "its state is not known");
            break;
        default:
            break;
        }
    }

    void AddServer(const Group& group, const Members& members) {
        VirtualServer server;
        server.name = NetworkName(members);
        server.name = server.name.empty() ? group.name : server.name;
        server.group = group.name;
        server.state = group.state;
        server.node = group.node;
        for (const Resource* const member : members) {
            if (member->role == Role::Product) {
                server.parts.push_back({member->name, member->service, member->state, member->condition, true});
            }
        }
        AddMissing(group, server);
        Judge(group, members, server);
        m_health.servers.push_back(server);
    }

    // That on which the store, or what there is of Exchange or the product, rests; the group may hold others.
    std::string NetworkName(const Members& members) const {
        for (const Role role : {Role::Store, Role::Attendant, Role::Product}) {
            for (const Resource* const member : members) {
                if (member->role != role) {
                    continue;
                }
                const std::set<std::string> base = m_index.BaseOf(*member);
                for (const Resource* const other : members) {
                    if (other->role == Role::NetworkName && base.count(other->name) != 0) {
                        return other->networkName;
                    }
                }
            }
        }
        return std::string();
    }

    // Whether a resource that is not known to be anything may be what the group lacks.
    bool IsWhole(const Group& group) const {
        return m_groupsNotWhole.count(group.name) == 0 && m_groupsNotWhole.count(std::string()) == 0;
    }

    void AddMissing(const Group& group, VirtualServer& server) const {
        if (m_cluster.kind == Kind::Failover) {
            if (server.parts.empty()) {
                server.parts.push_back(
                    {std::string(), std::string(), IsWhole(group) ? "missing" : "unknown", Condition::Unknown, false});
            }
            return;
        }
        for (const std::string& service : m_cluster.productServices) {
            const bool isThere = std::any_of(server.parts.begin(), server.parts.end(),
                                             [&service](const ProductPart& part) { return part.service == service; });
            if (!isThere) {
                server.parts.push_back({group.name + "-" + service, service, "missing", Condition::Unknown, false});
            }
        }
    }

    void Judge(const Group& group, const Members& members, VirtualServer& server) {
        const bool isServerUp = group.condition == Condition::Online || group.condition == Condition::Partly;
        m_health.serversOnline += isServerUp ? 1 : 0;
        const bool hasName = HasNetworkName(group, members);
        const bool hasStore = HasStore(group, members);
        const auto there = std::count_if(server.parts.begin(), server.parts.end(),
                                         [](const ProductPart& part) { return part.isThere; });
        if (there == 0) {
            server.product = IsWhole(group) ? "missing" : "unknown";
            if (IsWhole(group)) {
                AddOfGroup(OfKind("product-resource-missing", "vcs-product-missing"), server.group,
                           "the product's resources are missing in the virtual server's group");
            }
            return;
        }
        const Condition worst = WorstOf(server.parts);
        const bool isWhole = static_cast<std::size_t>(there) == server.parts.size();
        server.product = isWhole || worst != Condition::Online ? WordOf(worst) : "incomplete";
        if (!isWhole) {
            AddOfGroup("vcs-service-missing", server.group, "the product's " + MissingNames(server) + " is missing");
        }
        for (const ProductPart& part : server.parts) {
            if (part.isThere && part.condition == Condition::Offline && isServerUp) {
                Add(OfKind("product-offline", "vcs-resource-offline"), part.name,
                    "the product's resource is offline, and its virtual server is not");
            }
        }
        const bool isOwned = JudgeOwner(group, server);
        const bool isFound = JudgeOrder(members, hasName, server);
        const bool isListed = JudgeList(group, hasName && isFound);
        server.isProtected = hasName && hasStore && isOwned && isFound && isListed && isWhole &&
                             worst == Condition::Online && isServerUp;
        m_health.serversProtected += server.isProtected ? 1 : 0;
    }

    bool HasNetworkName(const Group& group, const Members& members) {
        const bool hasOne = std::any_of(members.begin(), members.end(),
                                        [](const Resource* member) { return member->role == Role::NetworkName; });
        if (hasOne || !IsWhole(group)) {
            return true;
        }
        AddOfGroup(OfKind("network-name-missing", "vcs-lanman-missing"), group.name,
                   "the virtual server has no network name");
        return m_cluster.kind == Kind::Vcs; // whose services run all the same
    }

    // The library compares letter for letter, and serves nothing of an owner that is spelled otherwise.
    bool JudgeOwner(const Group& group, const VirtualServer& server) {
        for (const ProductPart& part : server.parts) {
            if (group.isOwnerMisspelt && part.isThere) {
                Add("owner-case", part.name,
                    "its owner " + Quoted(group.node) +
                        " is this computer in another letter case: the library serves nothing of it here");
            }
        }
        return !group.isOwnerMisspelt;
    }

    // On VCS that is how the library finds a server.
    bool HasStore(const Group& group, const Members& members) {
        const bool hasOne = std::any_of(members.begin(), members.end(),
                                        [](const Resource* member) { return member->role == Role::Store; });
        if (m_cluster.kind != Kind::Vcs || hasOne) {
            return true;
        }
        AddOfGroup("vcs-store-missing", group.name,
                   "none of its resources is the Information Store: the library finds no server");
        return false;
    }

    // What the library itself says of the server. Why it finds none may be told already.
    bool JudgeList(const Group& group, bool isFound) {
        bool isListed = !IsOnPlainNode(group);
        for (const LeftOutResource& resource : m_cluster.leftOut) {
            const Resource* const found = m_index.ResourceNamed(resource.name);
            if (found == nullptr || found->group != group.name) {
                continue;
            }
            isListed = false;
            if (isFound) {
                Add("server-left-out", resource.name, "the library leaves its server out: " + resource.reason);
            }
        }
        return isListed;
    }

    bool IsOnPlainNode(const Group& group) const {
        return !group.node.empty() && group.node == m_cluster.plainNode;
    }

    static std::string MissingNames(const VirtualServer& server) {
        std::string names;
        for (const ProductPart& part : server.parts) {
            names += part.isThere ? "" : (names.empty() ? "" : ", ") + Quoted(part.name);
        }
        return names;
    }

    // False when the library finds no server for want of a dependency.
    bool JudgeOrder(const Members& members, bool hasName, VirtualServer& server) {
        if (m_cluster.kind == Kind::Vcs) {
            server.isInOrder = IsInOrderOnVcs(m_index, members);
            if (!server.isInOrder) {
                AddOfGroup("vcs-service-order", server.group,
                           "the product does not depend on the server's network name and store");
            }
            return true;
        }
        bool areServed = true;
        for (const Resource* const member : members) {
            if (member->role != Role::Product || !member->hasDependenciesRead) {
                continue;
            }
            const bool isNamed = !hasName || Needs(*member, Role::NetworkName, m_index);
            if (!isNamed) {
                Add("network-name-dependency-missing", member->name,
                    "it does not depend on the server's network name: the library finds no server");
            }
            const bool hasAddress = !isNamed || NeedsAddress(*member, m_index);
            if (!hasAddress) {
                Add("address-dependency-missing", member->name,
                    "its network name depends on no IP address: the library finds no server");
            }
            const bool isStored = RestsOn(Role::Store, members, m_index.BaseOf(*member));
            if (!isStored) {
                Add("store-dependency-missing", member->name, "it does not depend on the server's Information Store");
            }
            areServed = areServed && isNamed && hasAddress;
            server.isInOrder = server.isInOrder && isNamed && isStored;
        }
        return areServed;
    }

    void Finish() {
        std::stable_sort(m_health.problems.begin(), m_health.problems.end(),
                         [](const Problem& one, const Problem& other) { return one.level > other.level; });
        std::stable_sort(m_health.servers.begin(), m_health.servers.end(),
                         [](const VirtualServer& one, const VirtualServer& other) { return one.level > other.level; });
        m_health.level = m_health.problems.empty() ? Level::Ok : m_health.problems.front().level;
    }

    const ClusterPicture& m_cluster;
    const PictureIndex m_index;
    std::set<std::string>
        m_groupsNotWhole; // with resources of a type that is not known; "" for those of no known group
    std::string m_group;  // that is being examined
    Health m_health;
};

} // namespace

const char* NameOf(Level level) {
    switch (level) {
    case Level::Ok:
        return "ok";
    case Level::Warning:
        return "warning";
    case Level::Critical:
        return "critical";
    default:
        return "unknown";
    }
}

Health HealthOf(const ClusterPicture& cluster, bool isComplete) {
    return Examination(cluster, isComplete).Result();
}

} // namespace picture
