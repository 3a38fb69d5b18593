#include "Status.h"

#include "ClusterInUse.h"
#include "Deployment.h"
#include "OwnerSpelling.h"
#include "PictureJson.h"
#include "ReadPicture.h"
#include "ServersLeftOut.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "picture/SystemsUnder.h"

#include <clus_VirtualServerUtil.h>

#include <map>

using namespace picture;

namespace {

Json ProblemRecords(const Health& health) {
    Json records = Json::array();
    for (const Problem& problem : health.problems) {
        records.push_back({{"level", NameOf(problem.level)},
                           {"code", problem.code},
                           {"object", problem.object},
                           {"text", problem.text}});
    }
    return records;
}

Json ServerRecords(const Status& status) {
    Json records = Json::array();
    for (const VirtualServer& server : status.health.servers) {
        Json parts = Json::array();
        for (const ProductPart& part : server.parts) {
            parts.push_back(
                {{"name", TextOrNull(part.name)}, {"service", TextOrNull(part.service)}, {"state", part.state}});
        }
        records.push_back({{"name", server.name},
                           {"group", server.group},
                           {"state", server.state},
                           {"node", TextOrNull(server.node)},
                           {"nodeState", TextOrNull(RunningUnder(status.cluster, server.node))},
                           {"level", NameOf(server.level)},
                           {"product", server.product},
                           {"inOrder", server.isInOrder},
                           {"protected", server.isProtected},
                           {"productResources", std::move(parts)}});
    }
    return records;
}

// VCS compares the names of systems by itself.
void WarnOfOwners(const ClusterPicture& cluster, Report& report) {
    if (cluster.kind != Kind::Failover) {
        return;
    }
    for (const Group& group : cluster.groups) {
        WarnOfOwnerSpelling(common::ToUtf16(group.node), report);
    }
    for (const Resource& resource : cluster.resources) {
        WarnOfOwnerSpelling(common::ToUtf16(resource.node), report);
    }
}

// Whether the product takes this node for a plain server. One that it may not be a node of is not asked for.
void ReadPlainNode(ClusterPicture& cluster) {
    if (ReadIntendedCluster() != IntendedCluster::None) {
        return;
    }
    for (const Node& node : cluster.nodes) {
        if (IsThisComputer(common::ToUtf16(node.name))) {
            cluster.plainNode = node.name;
        }
    }
}

// What the library says of the servers of this node. A resource that could not be read is told as such.
void ReadLeftOut(ClusterPicture& picture, Report& report) {
    ServersHere here;
    if (!ListServersHere(here)) {
        FailToListServers();
    }
    std::map<std::string, Role> roles;
    for (const Resource& resource : picture.resources) {
        roles.emplace(resource.name, resource.role);
    }
    CCluster cluster;
    for (const std::wstring& name : here.leftOut) {
        const std::string text = common::ToUtf8(name);
        const auto found = roles.find(text);
        if (found == roles.end() || found->second != Role::Product) {
            continue;
        }
        if (cluster.GetHandle() == nullptr) {
            OpenLocalCluster(cluster);
        }
        const std::string reason = WhyLeftOut(cluster, name, report);
        if (!reason.empty()) {
            picture.leftOut.push_back({text, reason});
        }
    }
}

// The servers of other nodes are judged by what the cluster shows, and so are all where the product is not installed,
// or this account may not do what the library does.
void ReadServed(ClusterPicture& cluster, Report& report) {
    if (cluster.kind != Kind::Failover) {
        return;
    }
    ReadPlainNode(cluster);
    if (CVirtualServerUtil::CheckIsClusterByRegKey()) {
        ReadLeftOut(cluster, report);
    }
}

} // namespace

Status ReadStatus(const LogCapture& log, Report& report) {
    Status status;
    try {
        status.cluster = ReadPicture(log, report);
        WarnOfOwners(status.cluster, report);
    } catch (const Failure& failure) {
        if (ClusterInUse() != Answering::FailoverCluster || failure.Kind().exitCode != ExitNoAnswer) {
            throw;
        }
        const IntendedCluster intended = ReadIntendedCluster();
        if (intended == IntendedCluster::Unknown) {
            throw Failure(std::string(failure.what()) + "; whether there is to be one cannot be told either: the "
                                                        "product's registry key cannot be read");
        }
        if (intended == IntendedCluster::One) {
            throw;
        }
    }
    ReadServed(status.cluster, report);
    status.health = HealthOf(status.cluster, report.IsComplete());
    return status;
}

Json StatusJson(const Status& status) {
    Json groups = Json::array();
    for (const Group& group : status.cluster.groups) {
        groups.push_back(GroupRecord(group));
        groups.back()["nodeState"] = TextOrNull(RunningUnder(status.cluster, group.node));
    }
    return {{"cluster", ClusterJson(status.cluster)},
            {"health",
             {{"level", NameOf(status.health.level)},
              {"problems", ProblemRecords(status.health)},
              {"resourcesFailed", status.health.resourcesFailed},
              {"resourcesPending", status.health.resourcesPending}}},
            {"servers", ServerRecords(status)},
            {"nodes", NodeRecords(status.cluster)},
            {"groups", std::move(groups)}};
}
