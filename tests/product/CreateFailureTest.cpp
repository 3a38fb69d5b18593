// Creations that are refused or fail, and what they leave: nothing.
#include "CreationCalls.h"
#include "PrivateMember.h"

#include <iterator>

using namespace harness;

namespace {

PRIVATE_FUNCTION(SetProperty, &CVirtualServerUtil::SetKOVAProeprty_, int(HRESOURCE, const wchar_t*, const wchar_t*));

const char NothingToDelete[] = "E Resource handle is NULL";

// How far a creation came, in its messages.
const Texts FoundName = {"I Network name found: EVS1 Name for res:"};
const Texts OnlineHere = {"I Local node name:NODE-A", "I Local node name:NODE-A"};
const Texts FoundGroup = FoundName + OnlineHere + Texts({"I Get group EVS1 "});
const Texts FoundAttendant = FoundGroup + Texts({"I Get system attendant EVS1 SA "});
const Texts FoundStore = FoundAttendant + Texts({"I Get Store: EVS1 Store "});

// Refused before anything is created
// ---------------------------------------------------------------------------------------------------------------------

// What the cluster or the arguments lack; these are all the messages until the roll-back.
struct Refusal {
    std::string name;
    ModelBuilder model;
    std::vector<Creation> creations;
    Texts messages;
    std::wstring computer = L"NODE-A";

    friend void PrintTo(const Refusal& row, std::ostream* out) {
        *out << row.name;
    }
};

// A server with its name and nothing else.
ModelBuilder BareServer(const std::string& state = "Online") {
    return GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").NetworkName("EVS1 Name", "EVS1").State(state);
}

ModelBuilder ServerWithDisk(const std::string& state) {
    return GivenCluster()
        .Node("NODE-A")
        .Node("NODE-B")
        .Group("Other", "NODE-B")
        .Disk("Foreign Disk", "G:")
        .Group("EVS1", "NODE-A")
        .NetworkName("EVS1 Name", "EVS1")
        .Disk("EVS1 Disk", "F:")
        .State(state)
        .Resource("EVS1 SA", AttendantType)
        .DependsOn("EVS1 Disk")
        .Resource("EVS1 Store", StoreType);
}

std::vector<Refusal> Refusals() {
    const std::vector<Creation> everyWay(std::begin(EveryWay), std::end(EveryWay));
    std::vector<Refusal> rows = {
        {"WithoutACluster", ExchangeServer().ClusterRaw("running", "false"), everyWay, {"E Cannot open cluster"}},
        {"OfAnUnknownNetworkName",
         ExchangeServer(),
         {{nullptr, L"KOVA", L"F:\\", L"EVS2", L"", 1}},
         {"E cannot Find network name"}},
        {"OfAServerOnAnotherNode", ExchangeServer(), everyWay,
         FoundName + Texts({"I Local node name:NODE-B", "I Local node name:NODE-A",
                            "E The virtual sever is offline, cannot create resource"}),
         L"NODE-B"},
        {"WithoutAnAttendant", BareServer(), everyWay,
         FoundGroup + Texts({"E No system attendant resource found in group:EVS1, cannot create KOVA resource"})},
        {"WithoutAStore", BareServer().Resource("EVS1 SA", AttendantType), everyWay,
         FoundAttendant + Texts({"E No store resource found in group:EVS1, cannot create KOVA resource"})},
        {"OfADiskThatDoesNotExist",
         ExchangeServer(),
         {{nullptr, L"KOVA", L"F:\\", L"EVS1", L"F:", 1}},
         FoundStore + Texts({"E Open resource failed:F:, err=5007"})},
        {"OfADiskOnAnotherNode",
         ServerWithDisk("Online"),
         {{nullptr, L"KOVA", L"F:\\", L"EVS1", L"Foreign Disk", 1}},
         FoundStore + Texts({"I Local node name:NODE-A", "I Local node name:NODE-B",
                             "E Shared disk is not online on current node, abort"})}};
    for (const char* state : {"Offline", "Failed", "OnlinePending", "OfflinePending", "Initializing"}) {
        rows.push_back({std::string("OfAServerThatIs") + state, BareServer(state), everyWay,
                        FoundName + Texts({"I Local node name:NODE-A", "I Resource is not online, return false",
                                           "E The virtual sever is offline, cannot create resource"})});
    }
    for (const char* type : {"clusRDLL", "clusRDLLCCR"}) {
        rows.push_back(
            {std::string("OfASecondResourceBesides_") + type, ExchangeServer().Resource("Older", type).State("Offline"),
             everyWay,
             FoundGroup + Texts({"E There's already other KOVA resources present, abort resource creating."})});
    }
    for (const char* state : {"Offline", "Failed", "OnlinePending"}) {
        rows.push_back({std::string("OfADiskThatIs") + state,
                        ServerWithDisk(state),
                        {WithAttendantsDisk, WithNamedDisk},
                        FoundStore + Texts({"I Local node name:NODE-A", "I Resource is not online, return false",
                                            "E Shared disk is not online on current node, abort"})});
    }
    const struct {
        const char* name;
        int mode;
    } modes[] = {{"WithoutAQuorumMode", 0}, {"OfALaterQuorumMode", 3}, {"OfANegativeQuorumMode", -1}};
    for (const auto& quorum : modes) {
        rows.push_back({quorum.name,
                        ExchangeServer(),
                        {{L"D:\\", L"KOVA", L"F:\\", L"EVS1", nullptr, quorum.mode}},
                        FoundStore + Texts({"E Unexpected cluster quorum type " + std::to_string(quorum.mode)})});
    }
    return rows;
}

class CreateProductRefused : public ClusterTest, public ::testing::WithParamInterface<Refusal> {};

TEST_P(CreateProductRefused, ChangesNothing) {
    const Refusal& row = GetParam();
    SetComputerName(row.computer);
    for (const Creation& creation : row.creations) {
        SCOPED_TRACE("mode " + std::to_string(creation.mode));
        Load(row.model);
        const std::string before = Cluster().Model();
        EXPECT_FALSE(creation.Run());
        EXPECT_EQ(Lines(TakeMessages()), Lines(row.messages + Texts({RollBackLine, NothingToDelete})));
        EXPECT_EQ(Cluster().Model(), before);
        const std::string journal = TakeJournal();
        for (const char* change : {"CreateClusterResource", "DeleteClusterResource", "AddCluster", "SET_"}) {
            EXPECT_EQ(journal.find(change), std::string::npos) << journal;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Refusing, CreateProductRefused, ::testing::ValuesIn(Refusals()), RowName());

// Other refusals
// ---------------------------------------------------------------------------------------------------------------------

using CreateProductRefusal = ClusterTest;

TEST_F(CreateProductRefusal, OfNullArgumentsAsksNothingOfTheCluster) {
    Load(ExchangeServer());
    const struct {
        const char* name;
        Creation creation;
        const char* message;
    } cases[] = {
        {"no name", {nullptr, nullptr, nullptr, nullptr, nullptr, 1}, "E NULL KOVA resource name"},
        {"no server", {L"D:\\", L"KOVA", L"F:\\", nullptr, nullptr, 1}, "E NULL virtual server name"},
        {"no disk",
         {L"D:\\", L"KOVA", L"F:\\", L"EVS1", nullptr, 1},
         "E Quorum mode is single copy cluster but szVirtualDiskLetter is NULL!"},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.name);
        EXPECT_FALSE(item.creation.Run());
        EXPECT_EQ(TakeLog(),
                  Lines({"> CreateKOVAResource_", item.message, RollBackLine, "> CClusterResource::DeleteResource",
                         NothingToDelete, "< CCluster::DeleteResource", "< CreateKOVAResource_"}));
        EXPECT_EQ(TakeJournal(), "");
    }
}

TEST_F(CreateProductRefusal, OfAnAttendantWithoutADisk) {
    const ModelBuilder model = GivenCluster()
                                   .Node("NODE-A")
                                   .Group("EVS1", "NODE-A")
                                   .NetworkName("EVS1 Name", "EVS1")
                                   .Disk("EVS1 Disk", "F:")
                                   .Resource("EVS1 SA", AttendantType)
                                   .Resource("EVS1 Store", StoreType);
    Load(model);
    EXPECT_FALSE(WithAttendantsDisk.Run());
    const Texts messages = TakeMessages();
    ASSERT_EQ(messages.size(), FoundStore.size() + 4);
    EXPECT_EQ(messages[FoundStore.size() + 1], "E Cannot open cluster disk, abort");
    EXPECT_EQ(messages[FoundStore.size() + 2], RollBackLine);
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"), "");

    Load(model);
    EXPECT_TRUE(WithNamedDisk.Run());
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

TEST_F(CreateProductRefusal, OfAPropertyWithoutANameOrAValue) {
    const Texts entryAndLeaving = {"> SetKOVAProeprty_", "< SetKOVAProeprty_"};
    EXPECT_EQ(Private(SetProperty())(nullptr, nullptr, L"F:\\Kova"), 0);
    EXPECT_EQ(Private(SetProperty())(nullptr, L"KOVA_DATA_PATH", nullptr), 0);
    EXPECT_EQ(TakeLog(), Lines(entryAndLeaving + entryAndLeaving));
    EXPECT_EQ(TakeJournal(), "");
}

} // namespace
