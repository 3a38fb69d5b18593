// The operations of CVirtualServerUtil on a cluster node and its settings, with each platform call and allocation
// failing.
#include "FaultSweep.h"
#include "HostFixture.h"
#include "ServerFixture.h"
#include "WebServerStandIn.h"

#include "clus_Cluster.h"

#include <algorithm>
#include <cwchar>
#include <list>

using namespace harness;

namespace {

using ServerSweep = ServerTest;

// With a fault the result is one of `faulted`, or the good one.
void SweepServers(ServerTest& test, const std::function<std::string()>& operation, const std::string& good,
                  Texts faulted, bool clustered = true) {
    test.PlainServer();
    test.Registry().SetNumber(ProductKey, L"ClusterQuorumMode", 2);
    test.Registry().SetText(ProductKey, L"DataRootPath", L"D:\\Data");
    test.Registry().SetNumber(ProductKey, L"IsCluster", clustered ? 1 : 0);
    // Read once per process: settled before the first fault.
    ASSERT_EQ(Util::CheckIsClusterByRegKey(), clustered);
    faulted.push_back(good);
    Sweep sweep;
    sweep.prepare = [&test] {
        ModelBuilder model = ThreeServers();
        model.Resource("Store", StoreType);
        model.Resource("SMTP", SmtpType).Private("ProtocolInstanceId", 9u);
        AddServer(model, "EVS4", "NODE-A", "192.0.2.4");
        model.Resource("Store 4", StoreType);
        model.Resource("SMTP 4", SmtpType).Private("ProtocolInstanceId", 4u);
        test.Load(model);
    };
    sweep.body = operation;
    sweep.check = [&](const SweepRun& run) {
        if (!run.faulted) {
            EXPECT_EQ(run.result, good);
        } else if (!run.threw) {
            EXPECT_THAT(faulted, ::testing::Contains(run.result)) << run.fault;
        }
    };
    FaultSweep(test, sweep);
    if (clustered) {
        EventSweep(test, sweep);
    }
}
// Result, count, and the names found.
std::string Servers(Info* records, int room) {
    Util util;
    int count = room;
    const Util::ENUM_VS_RESULT result = util.EnumServersOnCurrentNode(records, &count);
    std::string text = std::to_string(result) + " " + std::to_string(count);
    for (int i = 0; records && result == Util::ENUM_VS_RESULT_SUCCESS && i < count; ++i) {
        text += " " + Utf8(records[i].m_wsServerName);
    }
    return text;
}

TEST_F(ServerSweep, PlainServer) {
    static Info record;
    SweepServers(
        *this, [] { return Servers(&record, 1); }, "0 1 NODE-A", {"0 1 "}, false);
}

TEST_F(ServerSweep, CountOfServers) {
    SweepServers(*this, [] { return Servers(nullptr, 0); }, "1 3", {"2 0", "1 2", "1 1", "1 0"});
}

TEST_F(ServerSweep, ListOfServers) {
    static Info records[4];
    SweepServers(*this, [] { return Servers(records, 4); }, "0 3 EVS1 EVS2 EVS4",
                 {"2 4", "0 2 EVS2 EVS4", "0 2 EVS1 EVS4", "0 2 EVS1 EVS2", "0 1 EVS1", "0 2 EVS1 EVS2", "0 0"});
}

// A server that a fault keeps from the list is told by its resource's name, unless its group went to the other node.
TEST_F(ServerSweep, EnumServersOnCurrentNodeEx) {
    static Info records[4];
    SweepServers(
        *this,
        [] {
            Util util;
            int count = 4;
            std::list<std::wstring> leftOut = {L"before"};
            if (util.EnumServersOnCurrentNodeEx(records, &count, leftOut) == Util::ENUM_VS_RESULT_FAIL) {
                return std::string(leftOut == std::list<std::wstring>{L"before"} ? "fails" : "fails and writes");
            }
            std::string missing;
            for (const wchar_t* server : {L"EVS1", L"EVS2", L"EVS4"}) {
                const bool listed = std::any_of(records, records + count, [&](const Info& info) {
                    return std::wcscmp(info.m_wsServerName, server) == 0;
                });
                const auto told = std::find(leftOut.begin(), leftOut.end(), std::wstring(server) + L" Product");
                missing += !listed && told == leftOut.end() ? " without " + Utf8(server) : "";
            }
            return (leftOut.empty() ? "whole" : "in part") + missing;
        },
        "whole", {"in part", "fails", "whole without EVS1"});
}

TEST_F(ServerSweep, QueryServerInfo) {
    SweepServers(*this,
                 [] {
                     Util util;
                     CClusterVirtualServerLookupRequest request;
                     request.m_wsNameOrIP = L"EVS4";
                     Info info;
                     return TrueOrFalse(util.QueryServerInfo(request, info));
                 },
                 "true", {"false"});
}

TEST_F(ServerSweep, QueryServerInfoOfAPlainServer) {
    SweepServers(
        *this,
        [] {
            Util util;
            CClusterVirtualServerLookupRequest request;
            request.m_wsNameOrIP = L"NODE-A";
            Info info;
            const bool result = util.QueryServerInfo(request, info);
            return TrueOrFalse(result) + " " + Utf8(info.m_wsServerName);
        },
        "true NODE-A", {"false "}, false);
}

TEST_F(ServerSweep, GetVirtualServerInfo) {
    SweepServers(*this,
                 [] {
                     CCluster cluster;
                     CClusterResource resource;
                     if (!cluster.OpenByLPC() || !cluster.OpenResourceByName(resource, L"EVS4 Product")) {
                         return std::string("not open");
                     }
                     Info info;
                     return TrueOrFalse(Util::GetVirtualServerInfo(resource.GetResourceHandle(), info, true, true));
                 },
                 "true", {"false", "not open"});
}

TEST_F(ServerSweep, GetSMTPInstanceInfo) {
    SweepServers(*this,
                 [] {
                     Info info;
                     const bool result = Util::GetSMTPInstanceInfo(L"EVS4", info);
                     return TrueOrFalse(result) + " " + std::to_string(info.m_nSmtpInstanceCount);
                 },
                 "true 1", {"false -1", "false 0", "true 0"});
}

TEST_F(ServerSweep, AtLeastOneExchangeResourceDLLOnlineOnCurrentNode) {
    SweepServers(*this, [] { return TrueOrFalse(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode()); }, "true",
                 {"false"});
}

TEST_F(ServerSweep, ConstructorAndDestructorOnAPlainServer) {
    SweepServers(
        *this,
        [] {
            { const Util util; }
            return std::string("done");
        },
        "done", {}, false);
}

TEST_F(ServerSweep, CheckIsClusterByRegKeyOnceItIsSettled) {
    Registry();
    ASSERT_EQ(Util::CheckIsClusterByRegKey(), false);
    const unsigned no = 0;
    for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
        Platform().FailNthCall(1, mode, ERROR_ACCESS_DENIED);
        Heap().FailAllocation(1, mode);
        Heap().StartOperation();
        const bool clustered = Util::CheckIsClusterByRegKey();
        Heap().EndOperation();
        EXPECT_FALSE(clustered);
        EXPECT_FALSE(Platform().Fired());
        EXPECT_FALSE(Heap().Fired());
        Platform().FailNthCall(no, mode, 0);
        Heap().FailAllocation(no, mode);
    }
}

TEST_F(ServerSweep, QueryIISSiteID) {
    const int iisServerType = 0;
    const int siteId = 7;
    const WebServerStandIn webServer(Platform(), iisServerType, siteId);
    SweepServers(*this, [] { return std::to_string(Util::QueryIISSiteID()); }, "7", {"-1"});
}

TEST_F(ServerSweep, IsTheSameVirtualServer) {
    char name[] = "host";
    hostent host = {};
    host.h_name = name;
    const auto resolver = PatchImport(ws2_32, gethostbyaddr, [&](const char*, int, int) -> hostent* { return &host; });
    SweepServers(*this,
                 [] {
                     Util util;
                     Info info;
                     std::wcscpy(info.m_wsServerName, L"NODE-A");
                     return TrueOrFalse(util.IsTheSameVirtualServer(L"localhost", info)) +
                            TrueOrFalse(util.IsTheSameVirtualServer(L"192.0.2.99", info));
                 },
                 "truefalse", {"falsefalse"});
}

TEST_F(ServerSweep, GetClusterQuorumModeByRegKey) {
    SweepServers(*this, [] { return std::to_string(Util::GetClusterQuorumModeByRegKey()); }, "2", {"0"});
}

TEST_F(ServerSweep, GetDataRootPath) {
    SweepServers(*this, [] { return Utf8(Util::GetDataRootPath()); }, "D:\\Data", {""});
}

TEST_F(ServerSweep, GetHomeDir) {
    SweepServers(*this,
                 [] {
                     std::wstring homeDir = L"before";
                     const bool result = UtilAccess::GetHomeDir(homeDir);
                     return TrueOrFalse(result) + " " + Utf8(homeDir);
                 },
                 "true C:\\Product", {"false before"});
}

TEST_F(ServerSweep, GetNormalServerInfo) {
    SweepServers(*this,
                 [] {
                     Info info;
                     const bool result = Util::GetNormalServerInfo(info);
                     return TrueOrFalse(result) + " " + Utf8(info.m_wsServerIP) + " " + Utf8(info.m_wsDataPath);
                 },
                 "true 192.0.2.10 D:\\Data",
                 {"false  ", "true  D:\\Data", "true 127.0.0.1 D:\\Data", "true 192.0.2.10 C:\\Product",
                  "false 192.0.2.10 C:\\Product", "false 127.0.0.1 C:\\Product", "true  "});
}

} // namespace
