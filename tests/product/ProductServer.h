// What the tests of the product's own resource share: an Exchange virtual server on this node, and what it looks like
// afterwards.
#ifndef PRODUCTSERVER_H
#define PRODUCTSERVER_H

#include "ClusterTest.h"
#include "ProductNames.h"

#include "common/Json.h"
#include "platform/ClusterApi.h"
#include "clus_VirtualServerUtil.h"

#include <string>
#include <vector>

namespace harness {

using common::Json;

// The virtual server EVS1 without the product.
inline ModelBuilder ExchangeServer() {
    return GivenCluster("EXCLUS")
        .Node("NODE-A")
        .Node("NODE-B")
        .Group("EVS1", "NODE-A")
        .NetworkName("EVS1 Name", "EVS1")
        .Disk("EVS1 Disk", "F:")
        .Resource("EVS1 SA", AttendantType)
        .DependsOn("EVS1 Name")
        .DependsOn("EVS1 Disk")
        .PossibleOwner("NODE-B")
        .PossibleOwner("NODE-A")
        .Resource("EVS1 Store", StoreType)
        .DependsOn("EVS1 SA");
}

// The same with a product resource of its own, which does not stand in the way of anything else.
inline ModelBuilder ProductServer(const std::string& type = "clusRDLL") {
    return GivenCluster("EXCLUS")
        .Node("NODE-A")
        .Node("NODE-B")
        .Group("EVS1", "NODE-A")
        .NetworkName("EVS1 Name", "EVS1")
        .Resource("KOVA", type);
}

// The calls by which EVS1 and its product resource are found, up to the resource being opened.
const Texts FindingProduct = {"OpenCluster()",
                              "ClusterOpenEnum(4)",
                              "ClusterEnum(0,256)",
                              "ClusterEnum(1,256)",
                              "ClusterEnum(2,256)=259",
                              "ClusterCloseEnum()",
                              "OpenClusterResource(EVS1 Name)",
                              "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)",
                              "ClusterResourceControl(EVS1 Name,GET_NETWORK_NAME,128)",
                              "CloseClusterResource(EVS1 Name)",
                              "OpenClusterResource(EVS1 Name)",
                              "GetClusterResourceState(EVS1 Name)=2",
                              "OpenClusterGroup(EVS1)",
                              "ClusterGroupOpenEnum(EVS1,1)",
                              "ClusterGroupEnum(0,8)=234",
                              "ClusterGroupEnum(0,10)",
                              "ClusterGroupEnum(1,10)",
                              "ClusterGroupEnum(2,10)=259",
                              "ClusterGroupCloseEnum()",
                              "OpenClusterResource(EVS1 Name)",
                              "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)",
                              "CloseClusterResource(EVS1 Name)",
                              "OpenClusterResource(KOVA)",
                              "ClusterResourceControl(KOVA,GET_RESOURCE_TYPE,128)",
                              "CloseClusterResource(KOVA)",
                              "CloseClusterGroup(EVS1)",
                              "CloseClusterResource(EVS1 Name)",
                              "OpenClusterResource(KOVA)"};

// A resource as the model shows it, without its ID, which is new with every creation; empty when there is none.
inline std::string ResourceInModel(const Simulator& cluster, const std::string& name) {
    Json model = Json::parse(cluster.Model());
    for (Json& resource : model["resources"]) {
        if (resource["name"] == name) {
            resource.erase("id");
            return resource.dump(1);
        }
    }
    return "";
}

inline std::string StateInModel(const Simulator& cluster, const std::string& name) {
    const std::string resource = ResourceInModel(cluster, name);
    return resource.empty() ? "gone" : Json::parse(resource)["state"].get<std::string>();
}

} // namespace harness

#endif
