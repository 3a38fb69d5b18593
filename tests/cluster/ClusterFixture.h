// What the tests of the cluster classes share: one small Exchange cluster and short names for opening things in it.
#ifndef CLUSTERFIXTURE_H
#define CLUSTERFIXTURE_H

#include "ClusterTest.h"

#include "clus_Cluster.h"
#include "platform/ClusterApi.h"

#include <list>
#include <string>

namespace harness {

typedef std::list<std::wstring> NameList;

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

// The simulated cluster of a test, opened; closed again before the audit.
class OpenedCluster : public CCluster {
public:
    explicit OpenedCluster(ClusterTest& test, const ModelBuilder& model = ExchangeCluster()) : m_test(test) {
        test.AtEnd([this] { Close(); });
        Load(model);
    }

    // The cluster becomes this one.
    void Load(const ModelBuilder& model) {
        Close();
        m_test.Load(model);
        EXPECT_TRUE(OpenByLPC());
        m_test.Forget();
    }

    void Open(CClusterResource& resource, const wchar_t* name) {
        EXPECT_TRUE(OpenResourceByName(resource, name)) << Utf8(name);
        m_test.Forget();
    }
    void Open(CClusterGroup& group, const wchar_t* name) {
        EXPECT_TRUE(OpenGroupByName(group, name)) << Utf8(name);
        m_test.Forget();
    }

private:
    ClusterTest& m_test;
};

class OpenClusterTest : public ClusterTest {
protected:
    OpenedCluster cluster{*this};
};

template <typename Param> class OpenClusterTestWith : public ClusterTest, public ::testing::WithParamInterface<Param> {
protected:
    OpenedCluster cluster{*this};
};

// A handle that is not the simulator's; only for calls that must not use it.
template <typename Handle> Handle Bogus() {
    return reinterpret_cast<Handle>(static_cast<ULONG_PTR>(0x1234));
}

} // namespace harness

#endif
