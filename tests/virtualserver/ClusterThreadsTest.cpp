// Sessions, enumerations, look-ups and disk paths on many threads at once give what they give on one.
#include "AtOnce.h"
#include "ThreadedCluster.h"

#include "clus_Cluster.h"

#include <list>

using namespace harness;

namespace {

ModelBuilder ServersAndDisk() {
    ModelBuilder model = ThreeServers();
    model.Group("Disks", "NODE-A").Disk("Disk", std::vector<std::string>{"F:", "G:"});
    return model;
}

class ClusterThreads : public ThreadedCluster {
protected:
    static const int Threads = 16;
    static const int Rounds = 5;

    ClusterThreads() : ThreadedCluster(ServersAndDisk()) {
    }

    // That each of the threads gets what this one got before, time after time. Each has a Util of its own; they are
    // created and destroyed here, by the rule of that class.
    void ExpectTheSameOnAll(const std::string& expected, std::string (*operation)(Util&)) {
        std::vector<Util> utils(Threads);
        ASSERT_EQ(operation(utils.front()), expected);
        std::atomic<int> different(0);
        std::vector<std::function<void()>> callers;
        for (Util& util : utils) {
            callers.emplace_back([&different, &expected, &util, operation] {
                for (int i = 0; i < Rounds; ++i) {
                    different += operation(util) == expected ? 0 : 1;
                }
            });
        }
        RunAtOnce(callers);
        EXPECT_EQ(different, 0);
    }
};

TEST_F(ClusterThreads, ListTheServers) {
    ExpectTheSameOnAll("EVS1 online, EVS2 offline, ", [](Util& util) {
        Info servers[4];
        int count = 4;
        std::string text;
        if (util.EnumServersOnCurrentNode(servers, &count) == Util::ENUM_VS_RESULT_SUCCESS) {
            for (int i = 0; i < count; ++i) {
                text += Utf8(servers[i].m_wsServerName) + (servers[i].m_bIsOnline ? " online, " : " offline, ");
            }
        }
        return text;
    });
}

TEST_F(ClusterThreads, LookAServerUp) {
    ExpectTheSameOnAll("EVS2 192.0.2.2", [](Util& util) {
        CClusterVirtualServerLookupRequest request;
        request.m_wsNameOrIP = L"evs2";
        Info info;
        return util.QueryServerInfo(request, info) ? Utf8(info.m_wsServerName) + " " + Utf8(info.m_wsServerIP)
                                                   : std::string();
    });
}

TEST_F(ClusterThreads, OpenSessionsAndEnumerate) {
    ExpectTheSameOnAll("EXCLUS: EVS1 Product, EVS2 Product, EVS3 Product, ", [](Util&) {
        CCluster cluster;
        std::wstring name;
        std::list<std::wstring> products;
        std::string text;
        if (cluster.OpenByLPC() && cluster.GetClusterName(name) &&
            cluster.EnumResourceNamesByType(L"clusRDLL", products)) {
            text = Utf8(name) + ": ";
            for (const std::wstring& product : products) {
                text += Utf8(product) + ", ";
            }
        }
        return text;
    });
}

TEST_F(ClusterThreads, TellTheLettersOfADisk) {
    ExpectTheSameOnAll("F:\\ G:\\ ", [](Util&) {
        CCluster cluster;
        CClusterResource disk;
        std::vector<std::wstring> paths;
        std::string text;
        if (cluster.OpenByLPC() && cluster.OpenResourceByName(disk, L"Disk") &&
            GetDiskLettersFromResource(disk.GetResourceHandle(), paths)) {
            for (const std::wstring& path : paths) {
                text += Utf8(path) + " ";
            }
        }
        return text;
    });
}

} // namespace
