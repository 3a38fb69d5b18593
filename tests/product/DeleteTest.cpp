// Deleting the product's resources of a virtual server.
#include "Detour.h"
#include "ProductServer.h"
#include "clus_Cluster.h"

using namespace harness;

namespace {

const DWORD OfflineInterval = 6000;
const std::size_t OfflineIntervals = 30;

const Texts Found = {"I Network name found: EVS1 Name for res:"};
const char NoneToDelete[] = "E No clusRDLL(Non-CCR) resource found in group:EVS1, try finding CCR resources";
const char SeveralToDelete[] = "I Warning, more than 1 KOVA resource is found\n";

Texts Deleted(const std::string& name) {
    return {"I try deleting KOVA resource:" + name + "...", "I Deleting resource " + name + " successful"};
}

// A first deletion that the cluster refuses; `outcome` tells how the switch-off went.
Texts RefusedAtFirst(const std::string& name, const Texts& outcome, const std::string& code = "5019") {
    return Texts({"I try deleting KOVA resource:" + name + "...",
                  "W Calling DeleteClusterResource error, code: " + code,
                  "I Deleting resource " + name + " unsuccessful, code:# trying to offline the resource then try again",
                  "I Turning KOVA resource:" + name + " offline..."}) +
           outcome;
}

Texts WentOffline(const std::string& name) {
    return {"I KOVA resource:" + name + " offlined successfully"};
}

class DeleteProduct : public ClusterTest {
protected:
    static bool Delete() {
        return CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(L"EVS1");
    }

    // The messages, with # for last-error values: calls that give their code do not set it.
    std::string TakeComparable() {
        Texts messages = TakeMessages();
        for (std::string& message : messages) {
            for (const char* lead :
                 {"unsuccessful, code:", "E Error deleting resource KOVA, code: ", "E Unexected return value: "}) {
                const std::size_t at = message.find(lead);
                if (at != std::string::npos) {
                    const std::size_t start = at + std::string(lead).size();
                    message.replace(start, message.find_first_not_of("-0123456789", start) - start, "#");
                }
            }
        }
        return Lines(messages);
    }

    std::size_t Sleeps() {
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(Platform().sleeps.size(), OfflineInterval));
        return Platform().sleeps.size();
    }
};

TEST_F(DeleteProduct, ThatIsOfflineTakesOneCall) {
    Load(ProductServer().State("Offline"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeLog(),
              Lines({"> DeleteKOVAResurceOnCurrentNode", "> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()",
                     "> CCluster::FindFirstResourceNameByNetworkName", "I Network name found: EVS1 Name for res:",
                     "< CClusterResource::FindFirstResourceNameByNetworkName", "> EnumResourceNamesInGroupByType",
                     "> EnumResourceNamesInGroup", "< EnumResourceNamesInGroup", "< EnumResourceNamesInGroupByType",
                     "> CClusterResource::IsOnCurrentNode", "< CClusterResource::IsOnCurrentNode",
                     "I try deleting KOVA resource:KOVA...", "> CClusterResource::DeleteResource",
                     "I Deleting resource KOVA successful", "< DeleteKOVAResurceOnCurrentNode"}));
    EXPECT_EQ(TakeJournal(), Lines(FindingProduct + Texts({"GetComputerNameW()", "GetClusterResourceState(KOVA)=3",
                                                           "DeleteClusterResource(KOVA)", "CloseClusterResource(KOVA)",
                                                           "CloseCluster()"})));
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "gone");
}

TEST_F(DeleteProduct, OfAnotherNodeIsSkipped) {
    SetComputerName(L"NODE-B");
    Load(ProductServer().State("Offline"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Texts({"I KOVA resource:KOVA is not on current node, skip."})));
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Offline");
}

TEST_F(DeleteProduct, IsSkippedWithoutAComputerNameOrAState) {
    Load(ProductServer().State("Offline"));
    AddFault("GetClusterResourceState@KOVA=5");
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Texts({"E ClusterResourceStateUnknown == 0",
                                                     "I KOVA resource:KOVA is not on current node, skip."})));
    Load(ProductServer().State("Offline"));
    Platform().FailCall("GetComputerNameW", 5);
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Texts({"E Cannot get computer name, code:5",
                                                     "I KOVA resource:KOVA is not on current node, skip."})));
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Offline");
}

TEST_F(DeleteProduct, ThatIsOnlineIsTakenOfflineFirst) {
    Load(ProductServer().State("Online"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + RefusedAtFirst("KOVA", WentOffline("KOVA"))));
    EXPECT_TRUE(Platform().sleeps.empty());
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "gone");
}

TEST_F(DeleteProduct, ThatGoesOfflineSlowlyIsWaitedFor) {
    const Texts pending = {"I KOVA resource:KOVA is offline pending."};
    for (const std::size_t intervals : {std::size_t{1}, std::size_t{4}, OfflineIntervals}) {
        Load(ProductServer().State("Online").Raw("offlineMs", std::to_string(intervals * OfflineInterval)));
        Platform().sleeps.clear();
        EXPECT_TRUE(Delete());
        EXPECT_EQ(TakeComparable(), Lines(Found + RefusedAtFirst("KOVA", pending)));
        EXPECT_EQ(Sleeps(), intervals);
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "gone");
    }
}

TEST_F(DeleteProduct, ThatDoesNotGoOfflineInTimeStaysWhichIsNoFailure) {
    Load(ProductServer().State("Online").Raw("offlineMs", std::to_string(OfflineIntervals * OfflineInterval + 1)));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + RefusedAtFirst("KOVA", {"I KOVA resource:KOVA is offline pending."}) +
                                      Texts({"E Error bring resource KOVA, off-line, abort delete"})));
    EXPECT_EQ(Sleeps(), OfflineIntervals);
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "OfflinePending");
}

TEST_F(DeleteProduct, ThatRefusesToGoOfflineIsStillWaitedFor) {
    Load(ProductServer().State("Online"));
    AddFault("OfflineClusterResource@KOVA=5");
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found +
                                      RefusedAtFirst("KOVA", {"E Unexected return value: #",
                                                              "W KOVA resource:KOVA offline unsuccessful"}) +
                                      Texts({"E Error bring resource KOVA, off-line, abort delete"})));
    EXPECT_EQ(Sleeps(), OfflineIntervals);
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Online");
}

// OfflineResource never gives such a state, but the deletion is prepared for it.
TEST_F(DeleteProduct, ThatIsLeftInAnyOtherStateIsStillWaitedFor) {
    Load(ProductServer().State("Online"));
    {
        const Detour offline(
            &CClusterResource::OfflineResource, +[](CClusterResource*) { return CClusterResource::RES_STATE_FAILED; });
        EXPECT_TRUE(Delete());
    }
    EXPECT_EQ(TakeComparable(), Lines(Found + RefusedAtFirst("KOVA", {"W Unexpected offlineResource Result"}) +
                                      Texts({"E Error bring resource KOVA, off-line, abort delete"})));
    EXPECT_EQ(Sleeps(), OfflineIntervals);
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Online");
}

TEST_F(DeleteProduct, IsDeletedAsSoonAsItIsOfflineWhateverItWasBefore) {
    for (const int state : {-1, 0, 1, 2, 4, 128, 129, 130, 77}) {
        Load(ProductServer().State("Online"));
        Platform().sleeps.clear();
        // The first state read is that of the node check.
        AddFault("GetClusterResourceState@KOVA#2=state:" + std::to_string(state));
        AddFault("GetClusterResourceState@KOVA#3=state:" + std::to_string(state));
        EXPECT_TRUE(Delete());
        EXPECT_EQ(Sleeps(), 2u) << state;
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "gone") << state;
    }
}

TEST_F(DeleteProduct, ThatRefusesTwiceIsAFailure) {
    Load(ProductServer().State("Offline").Resource("Second", "clusRDLL").State("Online"));
    AddFault("DeleteClusterResource@KOVA=5");
    EXPECT_FALSE(Delete());
    EXPECT_EQ(
        TakeComparable(),
        Lines(Found + Texts({SeveralToDelete}) + RefusedAtFirst("KOVA", WentOffline("KOVA"), "5") +
              RefusedAtFirst("Second", WentOffline("Second")) +
              Texts({"W Calling DeleteClusterResource error, code: 5", "E Error deleting resource KOVA, code: #"})));
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Offline");
    EXPECT_EQ(StateInModel(Cluster(), "Second"), "Offline"); // its second deletion is not tried any more
}

TEST_F(DeleteProduct, LogsTheLastErrorValueOfTheDeletion) {
    Load(ProductServer().State("Offline"));
    auto patch = PatchImport(clusapi, DeleteClusterResource, [](HRESOURCE) -> DWORD {
        SetLastError(4711);
        return 5019;
    });
    EXPECT_FALSE(Delete());
    const Texts messages = TakeMessages();
    ASSERT_EQ(messages.size(), 8u);
    EXPECT_EQ(messages[3], "I Deleting resource KOVA unsuccessful, code:4711 trying to offline the resource then try "
                           "again");
    EXPECT_EQ(messages[7], "E Error deleting resource KOVA, code: 4711");
}

TEST_F(DeleteProduct, GoesThroughAllResourcesInTwoPasses) {
    Load(ProductServer()
             .State("Online")
             .Raw("offlineMs", "12000")
             .Resource("Second", "clusRDLL")
             .State("Offline")
             .Resource("Third", "clusRDLL")
             .State("Online")
             .Raw("staysPending", "true")
             .Resource("Fourth", "clusRDLL")
             .State("Online"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(),
              Lines(Found + Texts({SeveralToDelete}) +
                    RefusedAtFirst("KOVA", {"I KOVA resource:KOVA is offline pending."}) + Deleted("Second") +
                    RefusedAtFirst("Third", {"I KOVA resource:Third is offline pending."}) +
                    RefusedAtFirst("Fourth", WentOffline("Fourth")) +
                    Texts({"E Error bring resource Third, off-line, abort delete"})));
    EXPECT_EQ(Sleeps(), 2 + OfflineIntervals);
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "gone");
    EXPECT_EQ(StateInModel(Cluster(), "Second"), "gone");
    EXPECT_EQ(StateInModel(Cluster(), "Third"), "OfflinePending");
    EXPECT_EQ(StateInModel(Cluster(), "Fourth"), "gone");
}

TEST_F(DeleteProduct, EndsAtOneThatCannotBeOpenedInTheFirstPass) {
    Load(ProductServer().State("Online").Resource("Second", "clusRDLL").State("Offline"));
    AddFault("OpenClusterResource@Second#2=5007"); // the listing opens it first
    EXPECT_FALSE(Delete());
    EXPECT_EQ(TakeComparable(),
              Lines(Found + Texts({SeveralToDelete}) + RefusedAtFirst("KOVA", WentOffline("KOVA")) +
                    Texts({"E Open resource failed:Second, err=5007", "E Cannot open KOVA resource:Second, abort"})));
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Offline"); // no second pass
    EXPECT_EQ(StateInModel(Cluster(), "Second"), "Offline");
}

TEST_F(DeleteProduct, EndsAtOneThatCannotBeOpenedInTheSecondPass) {
    Load(ProductServer().State("Online").Resource("Second", "clusRDLL").State("Online"));
    AddFault("OpenClusterResource@KOVA#3=5007");
    EXPECT_FALSE(Delete());
    EXPECT_EQ(TakeComparable(),
              Lines(Found + Texts({SeveralToDelete}) + RefusedAtFirst("KOVA", WentOffline("KOVA")) +
                    RefusedAtFirst("Second", WentOffline("Second")) +
                    Texts({"E Open resource failed:KOVA, err=5007", "E Cannot open KOVA resource:KOVA, abort"})));
    EXPECT_EQ(StateInModel(Cluster(), "Second"), "Offline");
}

// Finding them
// ------------------------------------------------------------------------------------------------------------------

TEST_F(DeleteProduct, OfAnEmptyGroupIsSuccess) {
    Load(GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").NetworkName("EVS1 Name", "EVS1"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Texts({NoneToDelete})));
}

TEST_F(DeleteProduct, FallsBackToReplicatingOnes) {
    Load(ProductServer("clusRDLLCCR").State("Offline"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Texts({NoneToDelete}) + Deleted("KOVA")));
    EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "gone");
}

TEST_F(DeleteProduct, OfTheSingleCopyTypeHidesReplicatingOnes) {
    Load(ProductServer().State("Offline").Resource("Replicating", "clusRDLLCCR").State("Offline"));
    EXPECT_TRUE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Deleted("KOVA")));
    EXPECT_EQ(StateInModel(Cluster(), "Replicating"), "Offline");
}

TEST_F(DeleteProduct, EndsWithTheSearchThatFails) {
    const struct {
        const char* name;
        const char* fault;
        Texts messages;
    } cases[] = {
        {"the cluster is not there", "OpenCluster=1722", {"E Cannot open cluster"}},
        {"its resources are not listed",
         "ClusterOpenEnum=5",
         {"E calling ClusterOpenEnum failed", "E EnumNames failed", "E cannot Find network name"}},
        {"the network name is not opened", "OpenClusterResource@EVS1 Name#2=5007",
         Found +
             Texts({"E Open resource failed:EVS1 Name, err=5007", "E Cannot open network name resource:EVS1 Name"})},
        {"the group is not opened", "OpenClusterGroup=5013",
         Found + Texts({"E Open group failed, code:5013", "E Cannot open group:EVS1"})},
        {"the group's resources are not listed", "ClusterGroupOpenEnum=5",
         Found + Texts({"E NULL == hEnum", "E Cannot enum KOVA resources for group:EVS1"})},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.name);
        Load(ProductServer().State("Offline"));
        AddFault(item.fault);
        EXPECT_FALSE(Delete());
        EXPECT_EQ(TakeComparable(), Lines(item.messages));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), "Offline");
    }
    Load(ProductServer("clusRDLLCCR").State("Offline"));
    AddFault("ClusterGroupOpenEnum#2=5");
    EXPECT_FALSE(Delete());
    EXPECT_EQ(TakeComparable(), Lines(Found + Texts({NoneToDelete, "E NULL == hEnum",
                                                     "E Cannot enum clusRDLL(CCR) resources for group:EVS1"})));
}

} // namespace
