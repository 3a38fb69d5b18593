// haagent: whether there is an agent.
#include "Tools.h"

#include <algorithm>

namespace vcssim {

namespace {

// An agent runs for each type that a resource has.
bool HasAgent(const Cluster& cluster, const std::string& type) {
    const std::vector<CfGroup>& groups = cluster.configuration.Groups();
    return std::any_of(groups.begin(), groups.end(), [&type](const CfGroup& group) {
        return std::any_of(group.resources.begin(), group.resources.end(),
                           [&type](const CfBlock& resource) { return resource.keyword == type; });
    });
}

} // namespace

void RunHaagent(Context& context, Arguments arguments) {
    if (arguments.Next() != "-display") {
        throw UsageError();
    }
    const std::string agent = arguments.Next();
    arguments.NeedEnd();
    if (HasAgent(context.cluster, agent)) {
        context.output.Simulated("99061", "Not simulated: what haagent shows of an agent");
    } else {
        context.output.Warning("13301", "Attempt to access non-existent agent");
    }
}

} // namespace vcssim
