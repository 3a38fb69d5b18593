// Sessions, enumerations, look-ups and disk paths on many threads at once give what they give on one.
#include "AtOnce.h"
#include "ServerFixture.h"

#include "clus_Cluster.h"

#include <list>

using namespace harness;

namespace {

class ClusterThreads : public ::testing::Test {
protected:
    static const int Threads = 16;
    static const int Rounds = 5;

    ClusterThreads() {
        ModelBuilder model = ThreeServers();
        model.Group("Disks", "NODE-A").Disk("Disk", std::vector<std::string>{"F:", "G:"});
        m_simulator.LoadModel(model.Json());
        m_registry.SetNumber(ProductKey, L"IsCluster", 1);
    }
    ~ClusterThreads() override {
        for (const char* kind : {"cluster", "resource", "group", "node", "enum"}) {
            EXPECT_EQ(m_simulator.OpenHandles(kind), 0u) << kind;
        }
        EXPECT_EQ(m_simulator.BadHandleCalls(), 0u);
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

private:
    Simulator m_simulator;
    IsolatedRegistry m_registry;
    LogCounter m_log;
    ImportPatch<LSTATUS(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY), struct ClusterThreadsKeyTag> m_key{
        FindImports(LibraryModule(), "advapi32.dll", "RegOpenKeyExW"),
        [this](HKEY, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) -> LSTATUS {
            return ::RegOpenKeyExW(m_registry.Root(), path, options, access, key);
        }};
    ImportPatch<BOOL(LPWSTR, LPDWORD), struct ClusterThreadsNameTag> m_name{
        FindImports(LibraryModule(), "kernel32.dll", "GetComputerNameW"), [](LPWSTR text, LPDWORD cch) -> BOOL {
            lstrcpyW(text, L"NODE-A");
            *cch = 6;
            return TRUE;
        }};
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
