// The status as monitoring systems take it.
#include "Health.h"

#include "Printable.h"

#include <algorithm>

namespace picture {

namespace {

const std::size_t MostNamed = 3; // problems in the line for monitoring

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
