// Restarting the SMTP instance that is online on this node.
#include "ProductServer.h"

#include "clus_Cluster.h"

#include <algorithm>

using namespace harness;

namespace {

const DWORD RestartInterval = 1000;
const std::size_t RestartIntervals = 120;

const char Try[] = "I Try to offline SMTP virtual server instance...";
const char Offlined[] = "I Resource SMTP is offlined, online it again.";
const char Pending[] = "I Resource SMTP is offline pending.";
const char Failed[] = "I Resource SMTP is failed to offline.";

Texts Listing(int resources) {
    return {"I Current node is: NODE-A", "I EnumNames, returns " + std::to_string(resources) + " resources."};
}

class RestartSmtp : public ClusterTest {
protected:
    static ModelBuilder Server() {
        return GivenCluster()
            .Node("NODE-A")
            .Node("NODE-B")
            .Group("EVS2", "NODE-B")
            .Group("EVS1", "NODE-A")
            .NetworkName("EVS1 Name", "EVS1")
            .Resource("SMTP", SmtpType);
    }

    // Restarts; the exit line is checked here, the log's remainder is for the test.
    bool Restart() {
        Platform().sleeps.clear();
        const bool result = CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode();
        const std::vector<LogLine>& log = Log().Entries();
        EXPECT_EQ(log.front().Compact(), "> CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource()");
        EXPECT_EQ(log.back().Compact(),
                  std::string("< CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), bSuccess=") +
                      (result ? "1" : "0"));
        return result;
    }

    std::size_t Sleeps() {
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(Platform().sleeps.size(), RestartInterval));
        return Platform().sleeps.size();
    }
};

TEST_F(RestartSmtp, TakesItOfflineAndBringsItOnline) {
    Load(Server());
    EXPECT_TRUE(Restart());
    EXPECT_EQ(TakeLog(),
              Lines({"> CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource()", "> CCluster::OpenByLPC()",
                     "< CCluster::OpenByLPC()", "I Current node is: NODE-A", "I EnumNames, returns 2 resources.", Try,
                     "> OfflineResource", "< OfflineResource", Offlined, "> OnlineResource", "< OnlineResource",
                     "< CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), bSuccess=1"}));
    EXPECT_EQ(
        TakeJournal(),
        Lines({"OpenCluster()", "GetComputerNameW()", "ClusterOpenEnum(4)", "ClusterEnum(0,256)", "ClusterEnum(1,256)",
               "ClusterEnum(2,256)=259", "ClusterCloseEnum()", "OpenClusterResource(EVS1 Name)",
               "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)", "CloseClusterResource(EVS1 Name)",
               "OpenClusterResource(SMTP)", "ClusterResourceControl(SMTP,GET_RESOURCE_TYPE,128)",
               "GetClusterResourceState(SMTP)=2", "OfflineClusterResource(SMTP)", "OnlineClusterResource(SMTP)",
               "CloseClusterResource(SMTP)", "CloseCluster()"}));
    EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Online");
}

TEST_F(RestartSmtp, WaitsForAPendingSwitchOff) {
    for (const std::size_t seconds : {std::size_t{1}, std::size_t{7}, RestartIntervals - 1}) {
        Load(Server().Raw("offlineMs", std::to_string(seconds * RestartInterval)));
        EXPECT_TRUE(Restart());
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Listing(2) + Texts({Try}) + Texts(seconds, Pending) + Texts({Offlined})));
        EXPECT_EQ(Sleeps(), seconds);
        EXPECT_EQ(Platform().CountCalls("OnlineClusterResource(SMTP)"), 1u);
        EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Online");
    }
}

TEST_F(RestartSmtp, GivesUpAPendingSwitchOffAfterTwoMinutesWithoutSwitchingOn) {
    // The state reached with the last second is not looked at any more.
    for (const char* member : {"\"staysPending\": true", "\"offlineMs\": 120000"}) {
        const std::string text = member;
        const std::size_t end = text.find('"', 1);
        Load(Server().Raw(text.substr(1, end - 1), text.substr(end + 3)));
        EXPECT_FALSE(Restart());
        EXPECT_EQ(Lines(TakeMessages()), Lines(Listing(2) + Texts({Try}) + Texts(RestartIntervals, Pending)));
        EXPECT_EQ(Sleeps(), RestartIntervals);
        EXPECT_EQ(Platform().CountCalls("OnlineClusterResource"), 0u);
    }
}

TEST_F(RestartSmtp, FailsWithTheSwitchOff) {
    Load(Server());
    AddFault("OfflineClusterResource@SMTP=5");
    EXPECT_FALSE(Restart());
    Texts messages = TakeMessages();
    ASSERT_EQ(messages.size(), 5u);
    EXPECT_EQ(messages[2], Try);
    EXPECT_EQ(messages[3].substr(0, 26), "E Unexected return value: ");
    EXPECT_EQ(messages[4], Failed);
    EXPECT_EQ(Sleeps(), 0u);
    EXPECT_EQ(Platform().CountCalls("OnlineClusterResource"), 0u);
    EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Online");
}

TEST_F(RestartSmtp, FailsWhenTheStateCannotBeReadAnyMore) {
    for (const char* fault : {"GetClusterResourceState@SMTP#2=5", "GetClusterResourceState@SMTP#2=state:-1",
                              "GetClusterResourceState@SMTP#2=state:77"}) {
        Load(Server().Raw("staysPending", "true"));
        AddFault(fault);
        EXPECT_FALSE(Restart());
        const Texts messages = TakeMessages();
        ASSERT_EQ(messages.size(), 6u);
        EXPECT_EQ(messages[3], Pending);
        EXPECT_EQ(messages[5], Failed);
        EXPECT_EQ(Sleeps(), 1u);
        EXPECT_EQ(Platform().CountCalls("OnlineClusterResource"), 0u);
    }
}

TEST_F(RestartSmtp, RepeatsItsMessageForAnUnexpectedStateWithoutWaiting) {
    // As the cluster numbers a state, and as the library does.
    const struct {
        int cluster;
        int library;
    } states[] = {{1, CClusterResource::RES_STATE_INITIALIZING},
                  {2, CClusterResource::RES_STATE_ONLINE},
                  {4, CClusterResource::RES_STATE_FAILED},
                  {128, CClusterResource::RES_STATE_PENDING},
                  {129, CClusterResource::RES_STATE_ONLINE_PENDING}};
    for (const auto& state : states) {
        Load(Server().Raw("staysPending", "true"));
        AddFault("GetClusterResourceState@SMTP#2=state:" + std::to_string(state.cluster));
        EXPECT_FALSE(Restart());
        // One second of the budget went with the pending state that the switch-off gave.
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Listing(2) + Texts({Try, Pending}) +
                        Texts(RestartIntervals - 1, "E Unexpected OfflineResource Result, resource state = " +
                                                        std::to_string(state.library) + ".")));
        EXPECT_EQ(Sleeps(), 1u);
        EXPECT_EQ(Platform().CountCalls("GetClusterResourceState(SMTP)"), 2u);
        EXPECT_EQ(Platform().CountCalls("OnlineClusterResource"), 0u);
    }
}

TEST_F(RestartSmtp, DoesNotLookAtTheOutcomeOfTheSwitchOn) {
    Load(Server());
    AddFault("OnlineClusterResource@SMTP=5");
    EXPECT_TRUE(Restart());
    EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Offline");
    Load(Server().Raw("failsOnline", "true"));
    EXPECT_TRUE(Restart());
    EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Failed");
    Load(Server().Raw("onlineMs", "5000"));
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Sleeps(), 0u);
    EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "OnlinePending");
}

// Finding it
// ------------------------------------------------------------------------------------------------------------------

TEST_F(RestartSmtp, TakesTheFirstOfTwoOnly) {
    Load(Server().Resource("Second", SmtpType));
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Platform().CountCalls("OfflineClusterResource(SMTP)"), 1u);
    EXPECT_EQ(Platform().CountCalls("OpenClusterResource(Second)"), 0u);
}

TEST_F(RestartSmtp, DoesNotGoOnToTheSecondWhenTheFirstFails) {
    Load(Server().Resource("Second", SmtpType));
    AddFault("OfflineClusterResource@SMTP=5");
    EXPECT_FALSE(Restart());
    EXPECT_EQ(Platform().CountCalls("OpenClusterResource(Second)"), 0u);
}

TEST_F(RestartSmtp, PassesOverInstancesThatAreElsewhereOrNotOnline) {
    ModelBuilder model =
        GivenCluster().Node("NODE-A").Node("NODE-B").Group("EVS2", "NODE-B").Resource("There", SmtpType);
    model.Group("EVS1", "NODE-A");
    for (const char* state : {"Offline", "Failed", "OnlinePending", "OfflinePending", "Initializing"}) {
        model.Resource(state, SmtpType).State(state);
    }
    Load(model.Resource("SMTP", SmtpType));
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Lines(TakeMessages()), Lines(Listing(7) + Texts({Try, Offlined})));
    EXPECT_EQ(Platform().CountCalls("OfflineClusterResource"), 1u);
}

TEST_F(RestartSmtp, FailsWhenNoneIsOnlineHereAfterLookingAtEveryResource) {
    for (const char* state : {"Offline", "OfflinePending"}) {
        Load(Server().State(state).Resource("Last", "Generic Service"));
        const std::string before = Cluster().Model();
        EXPECT_FALSE(Restart());
        EXPECT_EQ(Lines(TakeMessages()), Lines(Listing(3)));
        EXPECT_EQ(Platform().CountCalls("OpenClusterResource(Last)"), 1u);
        EXPECT_EQ(Cluster().Model(), before);
    }
    SetComputerName(L"NODE-C");
    Load(Server());
    EXPECT_FALSE(Restart());
    EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Online");
}

TEST_F(RestartSmtp, ComparesTypeAndNodeWithoutCase) {
    Json model = Json::parse(Server().Json());
    model["resourceTypes"] = {{{"name", "MICROSOFT exchange smtp SERVER instance"}}};
    LoadJson(model.dump());
    SetComputerName(L"node-A");
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Lines(TakeMessages()),
              Lines({"I Current node is: node-A", "I EnumNames, returns 2 resources.", Try, Offlined}));
}

TEST_F(RestartSmtp, GoesOnAfterAResourceThatCannotBeOpened) {
    Load(Server());
    AddFault("OpenClusterResource@EVS1 Name=5007");
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Lines(TakeMessages()),
              Lines(Listing(2) + Texts({"E Open resource failed:EVS1 Name, err=5007",
                                        "W Warning, open resource EVS1 Name fail, code: 5007", Try, Offlined})));
}

TEST_F(RestartSmtp, GoesOnAfterAResourceWithoutATypeOrAState) {
    Load(Server().Resource("Second", SmtpType));
    AddFault("ClusterResourceControl@SMTP=5");
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Platform().CountCalls("OfflineClusterResource(Second)"), 1u);

    Load(Server().Resource("Second", SmtpType));
    AddFault("GetClusterResourceState@SMTP=5");
    EXPECT_TRUE(Restart());
    EXPECT_EQ(Platform().CountCalls("OfflineClusterResource(Second)"), 1u);
    EXPECT_EQ(Platform().CountCalls("OfflineClusterResource(SMTP)"), 0u);
}

TEST_F(RestartSmtp, FindsNoneWithoutAComputerName) {
    Load(Server());
    Platform().FailCall("GetComputerNameW", 5);
    EXPECT_FALSE(Restart());
    EXPECT_EQ(Lines(TakeMessages()), Lines({"I Current node is: ", "I EnumNames, returns 2 resources."}));
}

TEST_F(RestartSmtp, FailsWithoutTheCluster) {
    Load(Server());
    AddFault("OpenCluster=1722");
    EXPECT_FALSE(Restart());
    EXPECT_EQ(Lines(TakeMessages()), Lines({"W CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), fail "
                                            "to open cluster by LPC"}));
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()=1722"}));
}

TEST_F(RestartSmtp, FailsWithTheEnumeration) {
    const char LastLine[] =
        "W CVirtualServerUtil::EnumVirtualServerOnCurrentNode_(), fail to enum names on the cluster";
    Load(Server());
    AddFault("ClusterOpenEnum=5");
    EXPECT_FALSE(Restart());
    EXPECT_EQ(Lines(TakeMessages()),
              Lines({"I Current node is: NODE-A", "E calling ClusterOpenEnum failed", LastLine}));
    Load(Server());
    AddFault("ClusterEnum#1=5");
    EXPECT_FALSE(Restart());
    EXPECT_EQ(TakeMessages().back(), LastLine);
    EXPECT_EQ(Platform().CountCalls("OfflineClusterResource"), 0u);
}

// Asking which one it would be
// ------------------------------------------------------------------------------------------------------------------

// The name found, or "failed" with what stands in its place.
std::string FindInstance() {
    std::wstring name = L"before";
    const bool result = CVirtualServerUtil::FindSmtpVirtualServerInstanceResourceOnCurrentNode(name);
    return (result ? "" : "failed: ") + Utf8(name);
}

TEST_F(RestartSmtp, IsAskedForWithTheSameCallsAndWithoutALine) {
    Load(Server());
    const std::string before = Cluster().Model();
    EXPECT_EQ(FindInstance(), "SMTP");
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()"}));
    EXPECT_EQ(
        TakeJournal(),
        Lines({"OpenCluster()", "GetComputerNameW()", "ClusterOpenEnum(4)", "ClusterEnum(0,256)", "ClusterEnum(1,256)",
               "ClusterEnum(2,256)=259", "ClusterCloseEnum()", "OpenClusterResource(EVS1 Name)",
               "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)", "CloseClusterResource(EVS1 Name)",
               "OpenClusterResource(SMTP)", "ClusterResourceControl(SMTP,GET_RESOURCE_TYPE,128)",
               "GetClusterResourceState(SMTP)=2", "CloseClusterResource(SMTP)", "CloseCluster()"}));
    EXPECT_EQ(Cluster().Model(), before);
}

TEST_F(RestartSmtp, IsAskedForOnThisNodeAndOnlineOnly) {
    Load(Server().State("Offline").Resource("Second", SmtpType));
    EXPECT_EQ(FindInstance(), "Second");
    Load(Server().State("Offline"));
    EXPECT_EQ(FindInstance(), "");
    SetComputerName(L"NODE-C");
    Load(Server());
    EXPECT_EQ(FindInstance(), "");
}

TEST_F(RestartSmtp, IsNotKnownWhenTheClusterCannotBeRead) {
    const struct {
        const char* fault;
        DWORD code;
    } faults[] = {{"OpenCluster=1722", 1722}, {"ClusterOpenEnum=5", 5}};
    for (const auto& item : faults) {
        Load(Server());
        AddFault(item.fault);
        SetLastError(0);
        EXPECT_EQ(FindInstance(), "failed: before");
        EXPECT_EQ(GetLastError(), item.code);
        EXPECT_THAT(TakeLog(), ::testing::Not(::testing::HasSubstr("fail to")));
    }
}

} // namespace
