#include "Health.h"

#include "Printable.h"

#include <algorithm>
#include <map>
#include <set>

namespace picture {

namespace {

const std::size_t MostNamed = 3; // problems in the line for monitoring

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

class Examination {
public:
    Examination(const ClusterPicture& cluster, bool isComplete) : m_cluster(cluster) {
        for (const Resource& resource : cluster.resources) {
            m_members[resource.group].push_back(&resource);
        }
        ExamineNodes();
        for (const Group& group : cluster.groups) {
            ExamineGroup(group);
        }
        if (!isComplete) {
            Add(Level::Unknown, cluster.name, "not all of the cluster can be read");
        }
        Finish();
    }

    Health Result() {
        return m_health;
    }

private:
    void Add(Level level, const std::string& object, const std::string& text) {
        m_health.problems.push_back({level, object, text});
    }

    void ExamineNodes() {
        for (const Node& node : m_cluster.nodes) {
            if (node.isUp) {
                ++m_health.nodesUp;
            } else {
                Add(node.state == "unknown" ? Level::Unknown : Level::Warning, node.name,
                    "the node is " + Printable(node.state));
            }
        }
    }

    void ExamineGroup(const Group& group) {
        const std::vector<const Resource*>& members = m_members[group.name];
        const bool isServer = std::any_of(members.begin(), members.end(), [](const Resource* member) {
            return member->role == Role::Store || member->role == Role::Attendant || member->role == Role::Product;
        });
        const std::size_t before = m_health.problems.size();
        ExamineStates(group, members, isServer);
        if (isServer) {
            AddServer(group, members);
            VirtualServer& server = m_health.servers.back();
            for (std::size_t i = before; i < m_health.problems.size(); ++i) {
                server.level = std::max(server.level, m_health.problems[i].level);
            }
        }
    }

    // What is down with its whole group is told once, as the group.
    void ExamineStates(const Group& group, const std::vector<const Resource*>& members, bool isServer) {
        const std::string what = isServer ? "the virtual server is " : "the group is ";
        const std::size_t before = m_health.problems.size();
        const bool isDown = group.condition == Condition::Offline;
        for (const Resource* const member : members) {
            ExamineResource(*member, isDown, isServer);
        }
        const bool isExplained = m_health.problems.size() != before;
        if (group.condition == Condition::Failed || (isDown && isServer)) {
            Add(Level::Critical, group.name, what + group.state);
        } else if (group.condition == Condition::Pending && !isExplained) {
            Add(Level::Warning, group.name, what + group.state);
        } else if (group.condition == Condition::Unknown) {
            Add(Level::Unknown, group.name, "its state is not known");
        }
        for (const StateOnNode& state : group.states) {
            if (!group.node.empty() && state.node != group.node && state.state.find("FAULTED") != std::string::npos) {
                Add(Level::Warning, group.name, "it cannot go to " + Printable(state.node) + ", where it is faulted");
            }
        }
    }

    void ExamineResource(const Resource& resource, bool isGroupDown, bool isOfServer) {
        switch (resource.condition) {
        case Condition::Failed:
            ++m_health.resourcesFailed;
            Add(Level::Critical, resource.name, "the resource is " + resource.state);
            break;
        case Condition::Pending:
            ++m_health.resourcesPending;
            Add(Level::Warning, resource.name, "the resource is " + resource.state);
            break;
        case Condition::Offline:
            if (!isGroupDown && isOfServer && resource.role != Role::Product) { // the product's are told by themselves
                Add(resource.role == Role::Other ? Level::Warning : Level::Critical, resource.name,
                    "the resource is offline, and its virtual server is not");
            }
            break;
        case Condition::Unknown:
            Add(Level::Unknown, resource.name, "its state is not known");
            break;
        default:
            break;
        }
    }

    void AddServer(const Group& group, const std::vector<const Resource*>& members) {
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
    std::string NetworkName(const std::vector<const Resource*>& members) const {
        for (const Role role : {Role::Store, Role::Attendant, Role::Product}) {
            for (const Resource* const member : members) {
                if (member->role != role) {
                    continue;
                }
                const std::set<std::string> base = BaseOf(m_cluster, *member);
                for (const Resource* const other : members) {
                    if (other->role == Role::NetworkName && base.count(other->name) != 0) {
                        return other->networkName;
                    }
                }
            }
        }
        return std::string();
    }

    void AddMissing(const Group& group, VirtualServer& server) const {
        if (m_cluster.kind == Kind::Failover) {
            if (server.parts.empty()) {
                server.parts.push_back({std::string(), std::string(), "missing", Condition::Unknown, false});
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

    void Judge(const Group& group, const std::vector<const Resource*>& members, VirtualServer& server) {
        const auto there = std::count_if(server.parts.begin(), server.parts.end(),
                                         [](const ProductPart& part) { return part.isThere; });
        const bool isServerUp = group.condition == Condition::Online || group.condition == Condition::Partly;
        m_health.serversOnline += isServerUp ? 1 : 0;
        if (there == 0) {
            server.product = "missing";
            Add(Level::Warning, server.group, "the product's resources are missing in the virtual server's group");
            return;
        }
        const Condition worst = WorstOf(server.parts);
        const bool isWhole = static_cast<std::size_t>(there) == server.parts.size();
        server.product = isWhole || worst != Condition::Online ? WordOf(worst) : "incomplete";
        if (!isWhole) {
            Add(Level::Warning, server.group, "the product's " + MissingNames(server) + " is missing");
        }
        for (const ProductPart& part : server.parts) {
            if (part.isThere && part.condition == Condition::Offline && isServerUp) {
                Add(Level::Critical, part.name, "the product's resource is offline, and its virtual server is not");
            }
        }
        server.isInOrder = IsInOrder(members);
        if (!server.isInOrder) {
            Add(Level::Warning, server.group, "the product does not depend on the server's network name and store");
        }
        server.isProtected = isWhole && worst == Condition::Online && isServerUp;
        m_health.serversProtected += server.isProtected ? 1 : 0;
    }

    static std::string MissingNames(const VirtualServer& server) {
        std::string names;
        for (const ProductPart& part : server.parts) {
            names += part.isThere ? "" : (names.empty() ? "" : ", ") + Quoted(part.name);
        }
        return names;
    }

    // On VCS it is enough that one of the services does.
    bool IsInOrder(const std::vector<const Resource*>& members) const {
        std::set<std::string> base;
        bool isKnown = true;
        for (const Resource* const member : members) {
            if (member->role == Role::Product) {
                isKnown = isKnown && member->hasDependenciesRead;
                base.merge(BaseOf(m_cluster, *member));
            }
        }
        const auto isNeeded = [&](Role role) {
            bool isOneThere = false;
            bool isOneNeeded = false;
            for (const Resource* const member : members) {
                isOneThere = isOneThere || member->role == role;
                isOneNeeded = isOneNeeded || (member->role == role && base.count(member->name) != 0);
            }
            return isOneNeeded || !isOneThere;
        };
        return !isKnown || (isNeeded(Role::NetworkName) && isNeeded(Role::Store));
    }

    void Finish() {
        std::stable_sort(m_health.problems.begin(), m_health.problems.end(),
                         [](const Problem& one, const Problem& other) { return one.level > other.level; });
        std::stable_sort(m_health.servers.begin(), m_health.servers.end(),
                         [](const VirtualServer& one, const VirtualServer& other) { return one.level > other.level; });
        m_health.level = m_health.problems.empty() ? Level::Ok : m_health.problems.front().level;
    }

    const ClusterPicture& m_cluster;
    std::map<std::string, std::vector<const Resource*>> m_members; // of each group
    Health m_health;
};

// Of the text of the line only: a bar begins the figures.
std::string WithoutBars(std::string text) {
    std::replace(text.begin(), text.end(), '|', '/');
    return text;
}

// "name=value;;;least;most"
std::string Figure(const char* name, std::size_t value, std::size_t most) {
    return std::string(" ") + name + "=" + std::to_string(value) + ";;;0;" + std::to_string(most);
}

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

std::string MonitoringLine(const ClusterPicture& cluster, const Health& health) {
    const std::string level = NameOf(health.level);
    std::string text = "CLUSTER ";
    for (const char c : level) {
        text += static_cast<char>(c - 'a' + 'A');
    }
    text += " - " + (cluster.name.empty() ? "" : Printable(cluster.name) + ": ") +
            std::to_string(health.serversProtected) + " of " + std::to_string(health.servers.size()) +
            " virtual servers protected, " + std::to_string(health.nodesUp) + " of " +
            std::to_string(cluster.nodes.size()) + " nodes up";
    for (std::size_t i = 0; i < health.problems.size() && i < MostNamed; ++i) {
        text += "; " + Printable(health.problems[i].object) + ": " + health.problems[i].text;
    }
    if (health.problems.size() > MostNamed) {
        text += "; and " + std::to_string(health.problems.size() - MostNamed) + " more";
    }
    return WithoutBars(text) + " |" + Figure("nodes_up", health.nodesUp, cluster.nodes.size()) +
           Figure("servers_online", health.serversOnline, health.servers.size()) +
           Figure("servers_protected", health.serversProtected, health.servers.size()) +
           Figure("resources_failed", health.resourcesFailed, cluster.resources.size()) +
           Figure("resources_pending", health.resourcesPending, cluster.resources.size());
}

} // namespace picture
