// Creating the product's resource in a virtual server's group.
#include "Bytes.h"
#include "CreationCalls.h"

using namespace harness;

namespace {

// What one listing of the group by type logs.
const Texts ListingLog = {"> EnumResourceNamesInGroupByType", "> EnumResourceNamesInGroup",
                          "< EnumResourceNamesInGroup", "< EnumResourceNamesInGroupByType"};

const Texts OnlineCheckLog = {"> CClusterResource::IsOnlineOnCurrentNode", "I Local node name:NODE-A",
                              "I Local node name:NODE-A", "< CClusterResource::IsOnlineOnCurrentNode"};

Texts OwnerLog(const std::string& node) {
    return {"I Adding node " + node + " as its possible owner", "> CClusterResource::AddOwnder",
            "E CClusterResource::AddOwnder fail, code:5010",
            "I AddOwner returns: 5010 (5010 is Object already exist, not error)", "I AddOwner operation ok."};
}

Texts CreationLog(const Texts& findDisk, int dependencies) {
    return Texts({"> CreateKOVAResource_", "> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()",
                  "> CCluster::FindFirstResourceNameByNetworkName", "I Network name found: EVS1 Name for res:",
                  "< CClusterResource::FindFirstResourceNameByNetworkName"}) +
           OnlineCheckLog + Texts({"I Get group EVS1 "}) + ListingLog + ListingLog + ListingLog +
           Texts({"I Get system attendant EVS1 SA "}) + ListingLog + Texts({"I Get Store: EVS1 Store "}) + findDisk +
           Texts({"> CCluster::CreateResource", "< CCluster::CreateResource"}) +
           Texts(dependencies, "> CClusterResource::AddDependency") + OwnerLog("NODE-B") + OwnerLog("NODE-A") +
           Texts({"> SetKOVAProeprty_", "< SetKOVAProeprty_",
                  "> CClusterResource::SetDWORDProperty, 20971614,RestartAction,1",
                  "< CClusterResource::SetDWORDProperty", "< CreateKOVAResource_"});
}

// The new resource in the model. Its possible owners are not listed: that means all nodes.
std::string NewResource(const std::string& type, const Texts& dependsOn, const std::string& dataPath) {
    Json json;
    json["name"] = "KOVA";
    json["type"] = type;
    json["group"] = "EVS1";
    json["state"] = "Offline";
    json["dependsOn"] = dependsOn;
    json["common"] = {{"RestartAction", 1}};
    json["private"] = {{"KOVA_DATA_PATH", dataPath}};
    return json.dump(1);
}

using CreateProduct = ClusterTest;

TEST_F(CreateProduct, WithTheAttendantsDiskAsksForItsStorageDependency) {
    Load(ExchangeServer());
    EXPECT_TRUE(WithAttendantsDisk.Run());
    EXPECT_EQ(TakeLog(),
              Lines(CreationLog(
                  Texts({"> GetResourceStorageDependency", "< GetResourceStorageDependency"}) + OnlineCheckLog, 3)));
    EXPECT_EQ(TakeJournal(), Lines(CreationCalls(WithAttendantsDisk)));
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"),
              NewResource("clusRDLL", {"EVS1 Disk", "EVS1 Store", "EVS1 Name"}, "F:\\Kova"));
}

TEST_F(CreateProduct, WithANamedDiskOpensThatDisk) {
    Load(ExchangeServer());
    EXPECT_TRUE(WithNamedDisk.Run());
    EXPECT_EQ(TakeLog(), Lines(CreationLog(OnlineCheckLog, 3)));
    EXPECT_EQ(TakeJournal(), Lines(CreationCalls(WithNamedDisk)));
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"),
              NewResource("clusRDLL", {"EVS1 Disk", "EVS1 Store", "EVS1 Name"}, "F:\\Kova"));
}

TEST_F(CreateProduct, WithReplicationTouchesNoDisk) {
    Load(ExchangeServer());
    EXPECT_TRUE(WithReplication.Run());
    EXPECT_EQ(TakeLog(), Lines(CreationLog({}, 2)));
    EXPECT_EQ(TakeJournal(), Lines(CreationCalls(WithReplication)));
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"),
              NewResource("clusRDLLCCR", {"EVS1 Store", "EVS1 Name"}, "D:\\Data\\CCRVSDB\\EVS1"));
}

TEST_F(CreateProduct, ReplicationIgnoresADiskAndADataPath) {
    Load(ExchangeServer());
    const Creation creation = {L"D:\\Data\\", L"KOVA", L"X:\\Other", L"EVS1", L"No such disk", 2};
    EXPECT_TRUE(creation.Run());
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"),
              NewResource("clusRDLLCCR", {"EVS1 Store", "EVS1 Name"}, "D:\\Data\\CCRVSDB\\EVS1"));
}

TEST_F(CreateProduct, NothingElseInTheClusterChanges) {
    for (const Creation& creation : EveryWay) {
        Load(ExchangeServer());
        const Json before = Json::parse(Cluster().Model());
        ASSERT_TRUE(creation.Run());
        Json after = Json::parse(Cluster().Model());
        ASSERT_EQ(after["resources"].size(), before["resources"].size() + 1);
        EXPECT_EQ(after["resources"].back()["name"], "KOVA");
        after["resources"].erase(after["resources"].size() - 1);
        EXPECT_EQ(after.dump(1), before.dump(1));
    }
}

TEST_F(CreateProduct, TheNetworkNameIsFoundInAnyCase) {
    Load(ExchangeServer());
    const Creation creation = {L"D:\\Data", L"KOVA", nullptr, L"evs1", nullptr, 2};
    EXPECT_TRUE(creation.Run());
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"),
              NewResource("clusRDLLCCR", {"EVS1 Store", "EVS1 Name"}, "D:\\Data\\CCRVSDB\\evs1"));
}

TEST_F(CreateProduct, TheTwoPropertyListsHaveExactlyTheseBytes) {
    struct Sent {
        DWORD code;
        Bytes bytes;
        bool onOwnerNode;
        bool hasOutput;
    };
    for (const char* dataPath : {"F:\\Kova", "F:\\Kovas", ""}) { // with and without padding
        Load(ExchangeServer());
        std::vector<Sent> sent;
        const std::wstring wide = Utf16(dataPath);
        auto patch = PatchImport(clusapi, ClusterResourceControl,
                                 [&](HRESOURCE resource, HNODE node, DWORD code, LPVOID in, DWORD cbIn, LPVOID out,
                                     DWORD cbOut, LPDWORD cb) -> DWORD {
                                     if (in) {
                                         const HarnessScope scope;
                                         const auto* data = static_cast<const unsigned char*>(in);
                                         sent.push_back({code, Bytes(data, data + cbIn), !node, out || cbOut || cb});
                                     }
                                     return ::ClusterResourceControl(resource, node, code, in, cbIn, out, cbOut, cb);
                                 });
        const Creation creation = {nullptr, L"KOVA", wide.c_str(), L"EVS1", L"", 1};
        EXPECT_TRUE(creation.Run());
        ASSERT_EQ(sent.size(), 2u);
        EXPECT_EQ(sent[0].code, static_cast<DWORD>(CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES));
        EXPECT_EQ(sent[0].bytes, PropertyListOf(L"KOVA_DATA_PATH", 0x00010003, TextBytes(wide)));
        EXPECT_EQ(sent[1].code, static_cast<DWORD>(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES));
        EXPECT_EQ(sent[1].bytes, PropertyListOf(L"RestartAction", 0x00010002, NumberBytes(1)));
        for (const Sent& control : sent) {
            EXPECT_TRUE(control.onOwnerNode);
            EXPECT_FALSE(control.hasOutput);
        }
    }
}

TEST_F(CreateProduct, TheFirstOfSeveralAttendantsAndStoresCounts) {
    Load(ExchangeServer()
             .Resource("Another SA", AttendantType)
             .PossibleOwner("NODE-A")
             .Resource("Another Store", StoreType));
    EXPECT_TRUE(WithAttendantsDisk.Run());
    const Texts messages = TakeMessages();
    const Texts start = {"I Network name found: EVS1 Name for res:",
                         "I Local node name:NODE-A",
                         "I Local node name:NODE-A",
                         "I Get group EVS1 ",
                         "I Warning, more than 1 system attendant found, use the 1st one",
                         "I Get system attendant EVS1 SA ",
                         "I Warning, more than 1 store found, use the 1st one",
                         "I Get Store: EVS1 Store "};
    ASSERT_GE(messages.size(), start.size());
    EXPECT_EQ(Lines(Texts(messages.begin(), messages.begin() + 8)), Lines(start));
    EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"),
              NewResource("clusRDLL", {"EVS1 Disk", "EVS1 Store", "EVS1 Name"}, "F:\\Kova"));
}

} // namespace
