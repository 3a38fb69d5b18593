// Creations that are refused or fail, and what they leave: nothing.
#include "CreationCalls.h"

#include <algorithm>

using namespace harness;

namespace {

const char RollBackLine[] = "I Deleting unsuccessfully created resource.";
const char NothingToDelete[] = "E Resource handle is NULL";

// How far a creation came, in its messages.
const Texts FoundName = {"I Network name found: EVS1 Name for res:"};
const Texts OnlineHere = {"I Local node name:NODE-A", "I Local node name:NODE-A"};
const Texts FoundGroup = FoundName + OnlineHere + Texts({"I Get group EVS1 "});
const Texts FoundAttendant = FoundGroup + Texts({"I Get system attendant EVS1 SA "});
const Texts FoundStore = FoundAttendant + Texts({"I Get Store: EVS1 Store "});

class CreateProductRefusal : public ProductTest {
protected:
    // Refused before anything is created; these are all its messages.
    void ExpectRefusal(const ModelBuilder& model, const Creation& creation, const Texts& messages) {
        Load(model);
        const std::string before = Cluster().Model();
        EXPECT_FALSE(creation.Run());
        EXPECT_EQ(Lines(TakeMessages()), Lines(messages + Texts({RollBackLine, NothingToDelete})));
        EXPECT_EQ(Cluster().Model(), before);
        const std::string journal = TakeJournal();
        for (const char* change : {"CreateClusterResource", "DeleteClusterResource", "AddCluster", "SET_"}) {
            EXPECT_EQ(journal.find(change), std::string::npos) << journal;
        }
    }
    void ExpectRefusalOfEveryWay(const ModelBuilder& model, const Texts& messages) {
        for (const Creation& creation : EveryWay) {
            ExpectRefusal(model, creation, messages);
        }
    }
};

TEST_F(CreateProductRefusal, OfNullArgumentsAsksNothingOfTheCluster) {
    Load(ExchangeServer());
    const struct {
        Creation creation;
        const char* message;
    } cases[] = {
        {{nullptr, nullptr, nullptr, nullptr, nullptr, 1}, "E NULL KOVA resource name"},
        {{L"D:\\", L"KOVA", L"F:\\", nullptr, nullptr, 1}, "E NULL virtual server name"},
        {{L"D:\\", L"KOVA", L"F:\\", L"EVS1", nullptr, 1},
         "E Quorum mode is single copy cluster but szVirtualDiskLetter is NULL!"},
    };
    for (const auto& item : cases) {
        EXPECT_FALSE(item.creation.Run());
        EXPECT_EQ(TakeLog(),
                  Lines({"> CreateKOVAResource_", item.message, RollBackLine, "> CClusterResource::DeleteResource",
                         NothingToDelete, "< CCluster::DeleteResource", "< CreateKOVAResource_"}));
        EXPECT_EQ(TakeJournal(), "");
    }
}

TEST_F(CreateProductRefusal, WithoutACluster) {
    ExpectRefusalOfEveryWay(ExchangeServer().ClusterRaw("running", "false"), {"E Cannot open cluster"});
}

TEST_F(CreateProductRefusal, OfAnUnknownNetworkName) {
    ExpectRefusal(ExchangeServer(), {nullptr, L"KOVA", L"F:\\", L"EVS2", L"", 1}, {"E cannot Find network name"});
}

TEST_F(CreateProductRefusal, OfAServerOnAnotherNode) {
    SetComputerName(L"NODE-B");
    ExpectRefusalOfEveryWay(ExchangeServer(), FoundName + Texts({"I Local node name:NODE-B", "I Local node name:NODE-A",
                                                                 "E The virtual sever is offline, cannot create "
                                                                 "resource"}));
}

TEST_F(CreateProductRefusal, OfAServerThatIsNotOnline) {
    for (const char* state : {"Offline", "Failed", "OnlinePending", "OfflinePending", "Initializing"}) {
        ExpectRefusalOfEveryWay(
            GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").NetworkName("EVS1 Name", "EVS1").State(state),
            FoundName + Texts({"I Local node name:NODE-A", "I Resource is not online, return false",
                               "E The virtual sever is offline, cannot create resource"}));
    }
}

TEST_F(CreateProductRefusal, OfASecondProductResourceOfEitherType) {
    for (const char* type : {"clusRDLL", "clusRDLLCCR"}) {
        ExpectRefusalOfEveryWay(
            ExchangeServer().Resource("Older", type).State("Offline"),
            FoundGroup + Texts({"E There's already other KOVA resources present, abort resource creating."}));
    }
}

TEST_F(CreateProductRefusal, WithoutAnAttendantOrAStore) {
    const auto server = [] {
        return GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").NetworkName("EVS1 Name", "EVS1");
    };
    ExpectRefusalOfEveryWay(
        server(),
        FoundGroup + Texts({"E No system attendant resource found in group:EVS1, cannot create KOVA resource"}));
    ExpectRefusalOfEveryWay(server().Resource("EVS1 SA", "Microsoft Exchange System Attendant"),
                            FoundAttendant +
                                Texts({"E No store resource found in group:EVS1, cannot create KOVA resource"}));
}

TEST_F(CreateProductRefusal, OfADiskThatDoesNotExist) {
    ExpectRefusal(ExchangeServer(), {nullptr, L"KOVA", L"F:\\", L"EVS1", L"F:", 1},
                  FoundStore + Texts({"E Open resource failed:F:, err=5007"}));
}

TEST_F(CreateProductRefusal, OfAnAttendantWithoutADisk) {
    const ModelBuilder model = GivenCluster()
                                   .Node("NODE-A")
                                   .Group("EVS1", "NODE-A")
                                   .NetworkName("EVS1 Name", "EVS1")
                                   .Disk("EVS1 Disk", "F:")
                                   .Resource("EVS1 SA", "Microsoft Exchange System Attendant")
                                   .Resource("EVS1 Store", "Microsoft Exchange Information Store");
    Load(model);
    EXPECT_FALSE(WithAttendantsDisk.Run());
    const Texts messages = TakeMessages();
    ASSERT_EQ(messages.size(), FoundStore.size() + 4);
    EXPECT_EQ(messages[FoundStore.size() + 1], "E Cannot open cluster disk, abort");
    EXPECT_EQ(messages[FoundStore.size() + 2], RollBackLine);
    EXPECT_EQ(ResourceInModel("KOVA"), "");

    Load(model);
    EXPECT_TRUE(WithNamedDisk.Run());
}

TEST_F(CreateProductRefusal, OfADiskThatIsNotOnlineHere) {
    const auto serverWithDisk = [](const char* state) {
        return GivenCluster()
            .Node("NODE-A")
            .Node("NODE-B")
            .Group("Other", "NODE-B")
            .Disk("Foreign Disk", "G:")
            .Group("EVS1", "NODE-A")
            .NetworkName("EVS1 Name", "EVS1")
            .Disk("EVS1 Disk", "F:")
            .State(state)
            .Resource("EVS1 SA", "Microsoft Exchange System Attendant")
            .DependsOn("EVS1 Disk")
            .Resource("EVS1 Store", "Microsoft Exchange Information Store");
    };
    const Texts notOnline = FoundStore + Texts({"I Local node name:NODE-A", "I Resource is not online, return false",
                                                "E Shared disk is not online on current node, abort"});
    for (const char* state : {"Offline", "Failed", "OnlinePending"}) {
        ExpectRefusal(serverWithDisk(state), WithAttendantsDisk, notOnline);
        ExpectRefusal(serverWithDisk(state), WithNamedDisk, notOnline);
    }
    ExpectRefusal(serverWithDisk("Online"), {nullptr, L"KOVA", L"F:\\", L"EVS1", L"Foreign Disk", 1},
                  FoundStore + Texts({"I Local node name:NODE-A", "I Local node name:NODE-B",
                                      "E Shared disk is not online on current node, abort"}));
}

TEST_F(CreateProductRefusal, OfAnotherQuorumMode) {
    for (const int mode : {0, 3, -1}) {
        ExpectRefusal(ExchangeServer(), {L"D:\\", L"KOVA", L"F:\\", L"EVS1", nullptr, mode},
                      FoundStore + Texts({"E Unexpected cluster quorum type " + std::to_string(mode)}));
    }
}

TEST_F(CreateProductRefusal, OfANameThatIsTaken) {
    Load(ExchangeServer());
    const std::string before = Cluster().Model();
    const Creation creation = {L"D:\\Data", L"EVS1 Disk", nullptr, L"EVS1", nullptr, 2};
    EXPECT_FALSE(creation.Run());
    EXPECT_EQ(Lines(TakeMessages()),
              Lines(FoundStore + Texts({"E Cannot create resource:EVS1 Disk type:clusRDLLCCR",
                                        "E Cannot create KOVA resource, abort", RollBackLine, NothingToDelete})));
    EXPECT_EQ(Cluster().Model(), before);
}

} // namespace
