// Writes a cluster model for the simulator.
//
//     Load(GivenCluster()
//              .Node("NODE-A")
//              .Group("EVS1", "NODE-A")
//              .Disk("EVS1 Disk", "F:")
//              .IpAddress("EVS1 IP", "192.168.1.10")
//              .NetworkName("EVS1 Name", "EVS1")
//              .DependsOn("EVS1 IP"));
//
// A resource belongs to the group named last; what follows it up to the next resource describes it.
#ifndef HARNESS_MODELBUILDER_H
#define HARNESS_MODELBUILDER_H

#include <string>
#include <utility>
#include <vector>

namespace harness {

class ModelBuilder {
public:
    explicit ModelBuilder(std::string clusterName = "EXCLUS") : m_clusterName(std::move(clusterName)) {
    }

    ModelBuilder& Node(const std::string& name);
    ModelBuilder& Group(const std::string& name, const std::string& ownerNode);

    // Online; possible owners are all nodes.
    ModelBuilder& Resource(const std::string& name, const std::string& type);
    // A Physical Disk with one partition per device name, such as "F:" or "Disk1Partition2"; none at all is allowed.
    ModelBuilder& Disk(const std::string& name, const std::vector<std::string>& devices);
    ModelBuilder& Disk(const std::string& name, const char* device) {
        return Disk(name, std::vector<std::string>{device});
    }
    ModelBuilder& IpAddress(const std::string& name, const std::string& address);
    ModelBuilder& NetworkName(const std::string& name, const std::string& networkName);

    // Of the last resource. A state is one of "Online", "Offline", "Failed", "OnlinePending", "OfflinePending",
    // "Initializing".
    ModelBuilder& Id(const std::string& id);
    ModelBuilder& State(const std::string& state);
    ModelBuilder& DependsOn(const std::string& resource);
    ModelBuilder& PossibleOwner(const std::string& node);
    ModelBuilder& Private(const std::string& name, const std::string& text);
    ModelBuilder& Private(const std::string& name, unsigned number);
    // Further members of the resource's object as raw JSON text, for what has no function here.
    ModelBuilder& Raw(const std::string& member, const std::string& json);
    // The same for the cluster's object.
    ModelBuilder& ClusterRaw(const std::string& member, const std::string& json);

    std::string Json() const;

private:
    struct ResourceModel {
        std::string name;
        std::string type;
        std::string group;
        std::string id;
        std::string state = "Online";
        std::vector<std::string> dependsOn;
        std::vector<std::string> possibleOwners;
        std::vector<std::pair<std::string, std::string>> privateProperties; // name, JSON value
        std::vector<std::pair<std::string, std::string>> raw;
    };

    ResourceModel& Last();

    std::string m_clusterName;
    std::vector<std::string> m_nodes;
    std::vector<std::pair<std::string, std::string>> m_groups; // name, owner node
    std::vector<ResourceModel> m_resources;
    std::vector<std::pair<std::string, std::string>> m_raw;
};

inline ModelBuilder GivenCluster(const std::string& clusterName = "EXCLUS") {
    return ModelBuilder(clusterName);
}

} // namespace harness

#endif
