#include "SystemsUnder.h"

#include <algorithm>

namespace picture {

std::string RunningUnder(const ClusterPicture& cluster, const std::string& node) {
    if (cluster.kind != Kind::Vcs || node.empty()) {
        return std::string();
    }
    const auto found = std::find_if(cluster.nodes.begin(), cluster.nodes.end(),
                                    [&node](const Node& each) { return each.name == node; });
    return found == cluster.nodes.end() ? RunningUnknown : found->isUp ? Running : NotRunning;
}

} // namespace picture
