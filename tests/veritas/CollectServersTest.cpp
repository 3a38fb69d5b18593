// All Exchange virtual servers of the cluster, and one by its group.
#include "Story.h"
#include "ToolTables.h"

using namespace harness;

namespace {

typedef std::vector<Server> Servers;

std::wstring Stores(const std::string& group) {
    return L"hares -list  Group=" + Utf16(group) + L"  Type=ExchService  Service=MSExchangeIS ";
}
std::wstring Lanmans(const std::string& group) {
    return L"hares -list  Group=" + Utf16(group) + L"  Type=Lanman ";
}

// Two virtual servers with a group between them that is none.
void AnswerTwoServers(ToolScript& tools) {
    tools.Answer(L"hagrp -list ", Listed({"EVS1", "ClusterService", "EVS2"}));
    tools.Answer(Stores("EVS1"), Listed({"IS1"}));
    tools.Answer(Stores("ClusterService"), "");
    tools.Answer(Stores("EVS2"), Listed({"IS2"}));
    tools.Answer(Lanmans("EVS1"), Listed({"Lanman1"}));
    tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|ONLINE|"}, {"NODE2", "|OFFLINE|"}}));
    tools.Answer(Lanmans("EVS2"), Listed({"Lanman2"}));
    tools.Answer(L"hagrp -state EVS2 ", States("EVS2", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|PARTIAL|"}}));
}

// Group, store, Lanman resource and system of each.
Texts Found(const Servers& servers) {
    Texts found;
    for (const Server& server : servers) {
        found.push_back(Utf8(server.sGroupName + L"," + server.sExchangeResName + L"," + server.sLanmanResName) +
                        (server.bGroupOnline ? "," : ",not ") + Utf8(server.sOnlineNode));
    }
    return found;
}

class VeritasCollectServers : public VeritasTest {
protected:
    const std::string enter = "> CollectExchangeEVSInfo";
    const std::string leave = "< CollectExchangeEVSInfo";
    const std::string storeFailed = "W CollectExchangeEVSInfo, EnumResourceNames for exchange resource failed";
    Servers servers;
};

TEST_F(VeritasCollectServers, EveryGroupWithAnInformationStoreIsOneAndOthersAreSkippedSilently) {
    AnswerTwoServers(tools);
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), (Texts{"EVS1,IS1,Lanman1,NODE1", "EVS2,IS2,Lanman2,NODE2"}));
    EXPECT_EQ(Told(*this),
              Lines({enter, "$ hagrp -list ", "$ hares -list  Group=EVS1  Type=ExchService  Service=MSExchangeIS ",
                     "$ hares -list  Group=ClusterService  Type=ExchService  Service=MSExchangeIS ",
                     "$ hares -list  Group=EVS2  Type=ExchService  Service=MSExchangeIS ",
                     "$ hares -list  Group=EVS1  Type=Lanman ", "$ hagrp -state EVS1 ",
                     "$ hares -list  Group=EVS2  Type=Lanman ", "$ hagrp -state EVS2 ", leave}));
}

TEST_F(VeritasCollectServers, RecordsCarryTheProductsNamesAndDefaultDelays) {
    AnswerTwoServers(tools);
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    ASSERT_EQ(servers.size(), 2u);
    EXPECT_EQ(servers[1].sHostServiceResName, L"EVS2-OXAHostService");
    EXPECT_EQ(servers[1].sSAServiceResName, L"EVS2-OXASAService");
    EXPECT_EQ(servers[1].sRemoteConfigResName, L"EVS2-OXA_RemoteConfig");
    EXPECT_EQ(servers[1].sQAVMonitorResName, L"EVS2-QAV_Monitor");
    EXPECT_EQ(servers[1].sRegRepResName, L"");
    EXPECT_EQ(servers[1].sMountResName, L"");
    EXPECT_EQ(servers[1].sDataPath, L"");
    EXPECT_EQ(servers[1].nDelayAfterOnline, 600);
    EXPECT_EQ(servers[1].nDelayAfterOffline, 600);
}

TEST_F(VeritasCollectServers, AClusterWithoutInformationStoresGivesNothingAndIsNoFailure) {
    tools.Answer(L"hagrp -list ", Listed({"A", "B"}));
    tools.Answer(Stores("A"), "");
    tools.Answer(Stores("B"), "");
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_TRUE(servers.empty());
}

TEST_F(VeritasCollectServers, AClusterWithoutGroupsGivesNothingAndIsNoFailure) {
    tools.Answer(L"hagrp -list ", "");
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_TRUE(servers.empty());
    EXPECT_EQ(Told(*this), Lines({enter, "$ hagrp -list ", leave}));
}

TEST_F(VeritasCollectServers, GroupsThatCannotBeListedAreAFailure) {
    tools.Answer(L"hagrp -list ", "main WARNING stale\r\n");
    EXPECT_FALSE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_TRUE(servers.empty());
    EXPECT_EQ(Told(*this), Lines({enter, "$ hagrp -list ", leave}));
}

TEST_F(VeritasCollectServers, AGroupListedOncePerSystemIsOneServer) {
    tools.Answer(L"hagrp -list ", "EVS1 NODE1\r\nEVS1 NODE2\r\n");
    tools.Answer(Stores("EVS1"), "IS1 NODE1\r\nIS1 NODE2\r\n");
    tools.Answer(Lanmans("EVS1"), "Lanman1 NODE1\r\nLanman1 NODE2\r\n");
    tools.Answer(L"hagrp -state EVS1 ", "");
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), Texts{"EVS1,IS1,Lanman1,not "});
}

TEST_F(VeritasCollectServers, TheFirstStoreAndTheFirstLanmanResourceOfAGroupAreTaken) {
    tools.Answer(L"hagrp -list ", Listed({"EVS1"}));
    tools.Answer(Stores("EVS1"), Listed({"B", "A"}));
    tools.Answer(Lanmans("EVS1"), Listed({"D", "C"}));
    tools.Answer(L"hagrp -state EVS1 ", "");
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), Texts{"EVS1,B,D,not "});
}

TEST_F(VeritasCollectServers, AGroupWithoutLanmanResourceStaysAndIsNoFailure) {
    AnswerTwoServers(tools);
    tools.Answer(L"hagrp -list ", "");
    tools.AnswerNext(Listed({"EVS1"}));
    tools.AnswerNext(Listed({"IS1"}));
    tools.AnswerNext("");
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), Texts{"EVS1,IS1,,NODE1"});
}

TEST_F(VeritasCollectServers, ServersAreAppendedAndThoseBeforeAreLeftAlone) {
    AnswerTwoServers(tools);
    Server before(L"IS before", L"EVS0");
    before.sLanmanResName = L"Lanman before";
    servers.push_back(before);
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers),
              (Texts{"EVS0,IS before,Lanman before,not ", "EVS1,IS1,Lanman1,NODE1", "EVS2,IS2,Lanman2,NODE2"}));
}

TEST_F(VeritasCollectServers, AStoreQueryThatFailsSkipsItsGroupAndGoesOn) {
    AnswerTwoServers(tools);
    tools.FailStart(2, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), Texts{"EVS2,IS2,Lanman2,NODE2"});
    EXPECT_EQ(Told(*this),
              Lines({enter, "$ hagrp -list ", "$ hares -list  Group=EVS1  Type=ExchService  Service=MSExchangeIS ",
                     storeFailed, "$ hares -list  Group=ClusterService  Type=ExchService  Service=MSExchangeIS ",
                     "$ hares -list  Group=EVS2  Type=ExchService  Service=MSExchangeIS ",
                     "$ hares -list  Group=EVS2  Type=Lanman ", "$ hagrp -state EVS2 ", leave}));
}

TEST_F(VeritasCollectServers, AStoreQueryThatVcsRefusesIsAFailureToo) {
    AnswerTwoServers(tools);
    tools.Answer(Stores("EVS3"), "EVS3 ERROR\r\n");
    tools.AnswerNext(Listed({"EVS3", "EVS1"}));
    EXPECT_FALSE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), Texts{"EVS1,IS1,Lanman1,NODE1"});
}

TEST_F(VeritasCollectServers, ALanmanQueryThatFailsKeepsTheRecordAndItsState) {
    AnswerTwoServers(tools);
    tools.FailStart(5, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), (Texts{"EVS1,IS1,,NODE1", "EVS2,IS2,Lanman2,NODE2"}));
    EXPECT_THAT(
        Told(*this),
        ::testing::HasSubstr("$ hares -list  Group=EVS1  Type=Lanman \n"
                             "W CollectExchangeEVSInfo, EnumResourceNames for lanman resource failed for group EVS1\n"
                             "$ hagrp -state EVS1 \n$ hares -list  Group=EVS2  Type=Lanman \n"));
}

TEST_F(VeritasCollectServers, AStateThatCannotBeReadKeepsTheRecordAndItsLanmanResource) {
    AnswerTwoServers(tools);
    tools.FailStart(6, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(cluster.CollectExchangeEVSInfo(servers));
    EXPECT_EQ(Found(servers), (Texts{"EVS1,IS1,Lanman1,not ", "EVS2,IS2,Lanman2,NODE2"}));
    EXPECT_THAT(
        Told(*this),
        ::testing::HasSubstr("$ hagrp -state EVS1 \n"
                             "W CollectExchangeEVSInfo, GetGroupOnlineNode for lanman resource failed for group EVS1\n"
                             "$ hares -list  Group=EVS2  Type=Lanman \n"));
}

// By group

class VeritasCollectServerByGroup : public VeritasTest {
protected:
    VeritasCollectServerByGroup() {
        AnswerTwoServers(tools);
        info.sGroupName = L"before";
        info.sRegRepResName = L"regrep before";
        info.nDelayAfterOnline = 7;
    }
    Server info;
};

TEST_F(VeritasCollectServerByGroup, TheGroupsRecordReplacesTheWholeOutput) {
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(L"EVS2", info));
    EXPECT_EQ(Found({info}), Texts{"EVS2,IS2,Lanman2,NODE2"});
    EXPECT_EQ(info.sHostServiceResName, L"EVS2-OXAHostService");
    EXPECT_EQ(info.sRegRepResName, L"");
    EXPECT_EQ(info.nDelayAfterOnline, 600);
}

TEST_F(VeritasCollectServerByGroup, GroupNamesCompareWithoutCase) {
    tools.AnswerNext(Listed({"Group1"}));
    tools.Answer(Stores("Group1"), Listed({"IS"}));
    tools.Answer(Lanmans("Group1"), Listed({"Lanman"}));
    tools.Answer(L"hagrp -state Group1 ", "");
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(L"GROUP1", info));
    EXPECT_EQ(info.sGroupName, L"Group1");
}

TEST_F(VeritasCollectServerByGroup, OfGroupsThatDifferInCaseTheFirstIsTaken) {
    tools.AnswerNext(Listed({"group1", "GROUP1"}));
    for (const char* group : {"group1", "GROUP1"}) {
        tools.Answer(Stores(group), Listed({std::string("IS-") + group}));
        tools.Answer(Lanmans(group), "");
        tools.Answer(L"hagrp -state " + Utf16(group) + L" ", "");
    }
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(L"GROUP1", info));
    EXPECT_EQ(info.sGroupName, L"group1");
    EXPECT_EQ(info.sExchangeResName, L"IS-group1");
}

TEST_F(VeritasCollectServerByGroup, AGroupThatIsNoVirtualServerIsNotFound) {
    for (const wchar_t* group : {L"ClusterService", L"EVS", L"EVS11", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_FALSE(cluster.CollectExchangeEVSInfo(group, info));
        EXPECT_EQ(info.sGroupName, L"before");
        EXPECT_EQ(info.sRegRepResName, L"regrep before");
    }
}

TEST_F(VeritasCollectServerByGroup, AnyFailedQueryHidesTheGroupThoughItWasFound) {
    for (const unsigned run : {2u, 4u, 5u, 6u, 7u, 8u}) {
        tools.FailStart(run, ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(cluster.CollectExchangeEVSInfo(L"EVS2", info)) << run;
        EXPECT_EQ(info.sGroupName, L"before");
    }
}

TEST_F(VeritasCollectServerByGroup, ItRunsAndTellsWhatTheListOfAllDoes) {
    Servers servers;
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(servers));
    const std::string told = Told(*this);
    EXPECT_TRUE(cluster.CollectExchangeEVSInfo(L"EVS1", info));
    EXPECT_EQ(Told(*this), told);
}

} // namespace
