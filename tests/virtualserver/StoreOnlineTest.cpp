// AtLeastOneExchangeResourceDLLOnlineOnCurrentNode: whether a store is online here.
#include "ServerFixture.h"

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

using StoreOnline = ServerTest;

TEST_F(StoreOnline, IsTrueForAStoreThatIsOnlineHere) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType);
    ClusterOf(model);
    EXPECT_TRUE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_EQ(
        TakeLog(),
        Lines({"> CVirtualServerUtil::IsAtLeastOneExchangeResourceDLLOnlineOnCurrentNode()", "> CCluster::OpenByLPC()",
               "< CCluster::OpenByLPC()", "< CCluster::EnumResourceNamesByType()", "I Got computer name:: NODE-A",
               "I Found store: Store", "< CVirtualServerUtil::IsAtLeastOneExchangeResourceDLLOnlineOnCurrentNode()"}));
}

TEST_F(StoreOnline, SkipsStoresElsewhereAndOffline) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType).State("Offline");
    AddServer(model, "EVS2", "NODE-B", "192.0.2.2");
    model.Resource("Store 2", StoreType);
    ClusterOf(model);
    EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(),
                ElementsAre("I Got computer name:: NODE-A", "I Found store: Store",
                            "I Skip this store, reason: the node is not online", "I Found store: Store 2",
                            "I Skip this store, reason: the node is on node: NODE-B"));
}

TEST_F(StoreOnline, SkipsAStoreThatCannotBeOpened) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType).Resource("Store 2", StoreType);
    ClusterOf(model);
    Platform().FailCall("OpenClusterResource(Store)", 5007, 2); // the first opening is the search by type
    EXPECT_TRUE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(), ElementsAre("I Got computer name:: NODE-A", "I Found store: Store",
                                            "E Open resource failed:Store, err=5007",
                                            "W cannot open store: Store, skip this one", "I Found store: Store 2"));
}

TEST_F(StoreOnline, IsFalseWhenTheClusterCannotBeRead) {
    struct {
        const char* name;
        const char* call;
        const char* message;
    } const cases[] = {
        {"the cluster is not opened", "OpenCluster", "W Calling CCluster::OpenByLPC() fail"},
        {"its resources are not listed", "ClusterOpenEnum", "W Calling CCluster::EnumResourceNamesByType fail"},
        {"this node is not known", "GetComputerNameW", "W Calling GetComputerName fail"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ClusterOf(OneServer());
        Platform().FailCall(c.call, 5);
        EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
        EXPECT_THAT(TakeMessages(), Contains(c.message));
    }
}

TEST_F(StoreOnline, StopsAtTheFirstStoreThatIsOnlineHere) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType).Resource("Store 2", StoreType);
    ClusterOf(model);
    EXPECT_TRUE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    const std::vector<std::string> calls = TakeClusterCalls();
    const auto name = std::find(calls.begin(), calls.end(), "GetComputerNameW()");
    EXPECT_THAT(std::vector<std::string>(name, calls.end()),
                ElementsAre("GetComputerNameW()", "OpenClusterResource(Store)",
                            ::testing::StartsWith("GetClusterResourceState(Store"), "CloseClusterResource(Store)",
                            "CloseCluster()"));
}

TEST_F(StoreOnline, TakesANodeOfAnotherLetterCaseForAnotherNode) {
    SetComputerName(L"node-a");
    ClusterOf(OneServer().Resource("Store", StoreType));
    EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(), ElementsAre("I Got computer name:: node-a", "I Found store: Store",
                                            "I Skip this store, reason: the node is on node: NODE-A"));
}

TEST_F(StoreOnline, IsFalseInEveryOtherState) {
    for (const char* state : {"Offline", "Failed", "OnlinePending", "OfflinePending", "Initializing"}) {
        ClusterOf(OneServer().Resource("Store", StoreType).State(state));
        EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode()) << state;
        EXPECT_THAT(TakeMessages(), Contains("I Skip this store, reason: the node is not online"));
    }
}

TEST_F(StoreOnline, SkipsAStoreWhoseStateCannotBeRead) {
    ClusterOf(OneServer().Resource("Store", StoreType));
    Platform().FailCall("GetClusterResourceState", 6, 1, FaultMode::FromThenOn);
    EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(), Contains("I Skip this store, reason: the node is on node: "));
}

TEST_F(StoreOnline, IsFalseWithoutAStore) {
    ClusterOf(OneServer());
    EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(), ElementsAre("I Got computer name:: NODE-A"));
}

} // namespace
