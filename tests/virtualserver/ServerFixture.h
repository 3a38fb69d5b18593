// What the tests of CVirtualServerUtil share: product settings, and a cluster with virtual servers in it.
#ifndef SERVERFIXTURE_H
#define SERVERFIXTURE_H

#include "ClusterTest.h"
#include "ProductNames.h"

#include "platform/ClusterApi.h"
#include "clus_VirtualServerUtil.h"

#include <string>

namespace harness {

typedef CVirtualServerUtil Util;
typedef CClusterVirtualServerInfo Info;

// A virtual server with its product resource "<name> Product".
inline ModelBuilder& AddServer(ModelBuilder& model, const std::string& name, const std::string& owner,
                               const std::string& address, const std::string& type = "clusRDLL") {
    return model.Group(name, owner)
        .IpAddress(name + " IP", address)
        .NetworkName(name + " Name", name)
        .DependsOn(name + " IP")
        .Resource(name + " Product", type)
        .DependsOn(name + " Name")
        .Private("KOVA_DATA_PATH", "F:\\" + name);
}

// Two nodes; one virtual server, online here.
inline ModelBuilder OneServer(const std::string& type = "clusRDLL") {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A").Node("NODE-B");
    AddServer(model, "EVS1", "NODE-A", "192.0.2.1", type);
    return model;
}

// Two nodes; one virtual server online here, one offline here, one on the other node.
inline ModelBuilder ThreeServers() {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A").Node("NODE-B");
    AddServer(model, "EVS1", "NODE-A", "192.0.2.1");
    AddServer(model, "EVS2", "NODE-A", "192.0.2.2").State("Offline");
    AddServer(model, "EVS3", "NODE-B", "192.0.2.3");
    return model;
}

// With a parameter where the tests have one.
template <typename... Interfaces> class ServerFixture : public ClusterTest, public Interfaces... {
public:
    void Clustered() {
        Registry().SetNumber(ProductKey, L"IsCluster", 1);
    }
    void PlainServer() {
        Registry().SetNumber(ProductKey, L"IsCluster", 0);
        Registry().SetText(ProductKey, L"HomeDir", L"C:\\Product");
        Registry().SetText(ProductKey, L"ServerIP", L"192.0.2.10");
        Registry().SetText(ProductKey, L"SERVERGUID", L"11111111-2222-3333-4444-555555555555");
    }
    void ClusterOf(const ModelBuilder& model) {
        Load(model);
        Clustered();
        Forget();
    }

    // The cluster calls since the journal was taken last; registry and Winsock calls are left out.
    Texts TakeClusterCalls() {
        Texts calls;
        for (const std::string& line : Platform().Journal()) {
            if (!BeginsWith(line, "Reg") && !BeginsWith(line, "WSA")) {
                calls.push_back(line);
            }
        }
        TakeJournal();
        return calls;
    }
};
using ServerTest = ServerFixture<>;
template <typename Param> using ServerTestWith = ServerFixture<::testing::WithParamInterface<Param>>;

} // namespace harness

#endif
