// What the tests of the cluster classes share: one small Exchange cluster and short names for opening things in it.
#ifndef CLUSTERFIXTURE_H
#define CLUSTERFIXTURE_H

#include "ClusterTest.h"

#include "clus_Cluster.h"
#include "platform/ClusterApi.h"

#include <list>
#include <string>

namespace harness {

typedef std::list<std::wstring> Names;

inline ModelBuilder ExchangeCluster() {
    return GivenCluster("EXCLUS")
        .Node("NODE-A")
        .Node("NODE-B")
        .Group("Cluster Group", "NODE-B")
        .IpAddress("Cluster IP", "192.168.1.2")
        .NetworkName("Cluster Name", "EXCLUS")
        .Id("0a0b0c0d-0000-0000-0000-00000000c1c1")
        .DependsOn("Cluster IP")
        .Group("EVS1", "NODE-A")
        .Disk("EVS1 Disk", "F:")
        .IpAddress("EVS1 IP", "192.168.1.10")
        .NetworkName("EVS1 Name", "EVS1")
        .DependsOn("EVS1 IP")
        .Id("0a0b0c0d-0000-0000-0000-0000000000e1");
}

class OpenClusterTest : public ClusterTest {
protected:
    OpenClusterTest() {
        LoadAndOpen(ExchangeCluster());
    }

    // The cluster of the test becomes this one.
    void LoadAndOpen(const ModelBuilder& model) {
        cluster.Close();
        Load(model);
        EXPECT_TRUE(cluster.OpenByLPC());
        Forget();
    }

    void Open(CClusterResource& resource, const wchar_t* name) {
        EXPECT_TRUE(cluster.OpenResourceByName(resource, name)) << Utf8(name);
        Forget();
    }
    void Open(CClusterGroup& group, const wchar_t* name) {
        EXPECT_TRUE(cluster.OpenGroupByName(group, name)) << Utf8(name);
        Forget();
    }

    void TearDown() override {
        cluster.Close();
        ClusterTest::TearDown();
    }

    CCluster cluster;
};

// A handle that is not the simulator's; only for calls that must not use it.
template <typename Handle> Handle Bogus() {
    return reinterpret_cast<Handle>(static_cast<ULONG_PTR>(0x1234));
}

} // namespace harness

#endif
