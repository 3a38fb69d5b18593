// Which resources the members that switch and delete work on.
#include "ProductServer.h"

#include <list>

using namespace harness;

namespace {

class FindProduct : public ClusterTest {
protected:
    // The names found, or "failed" with what stands in their place.
    static std::string Find(const wchar_t* server = L"EVS1") {
        std::list<std::wstring> names = {L"before"};
        std::string text = CVirtualServerUtil::FindKOVAResources(server, names) ? "" : "failed:";
        for (const std::wstring& name : names) {
            text += " " + Utf8(name);
        }
        return text;
    }
};

TEST_F(FindProduct, ReadsWhatSwitchingReadsAndTellsNothingItself) {
    Load(ProductServer());
    EXPECT_EQ(Find(), " KOVA");
    Texts calls = FindingProduct;
    calls.back() = "CloseCluster()"; // instead of opening the resource
    EXPECT_EQ(TakeJournal(), Lines(calls));
    EXPECT_EQ(TakeLog(),
              Lines({"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()",
                     "> CCluster::FindFirstResourceNameByNetworkName", "I Network name found: EVS1 Name for res:",
                     "< CClusterResource::FindFirstResourceNameByNetworkName", "> EnumResourceNamesInGroupByType",
                     "> EnumResourceNamesInGroup", "< EnumResourceNamesInGroup", "< EnumResourceNamesInGroupByType"}));
}

TEST_F(FindProduct, TakesTheCcrResourcesOnlyWhenThereAreNoOthers) {
    Load(ProductServer("clusRDLLCCR").Resource("Second", "clusRDLLCCR"));
    EXPECT_EQ(Find(), " KOVA Second");
    Load(ProductServer("clusRDLLCCR").Resource("Single", "clusRDLL"));
    EXPECT_EQ(Find(), " Single");
    Load(ExchangeServer());
    EXPECT_EQ(Find(), "");
    EXPECT_THAT(TakeLog(), ::testing::Not(::testing::HasSubstr("clusRDLL")));
}

TEST_F(FindProduct, FailsWithoutTouchingTheNames) {
    Load(ProductServer());
    EXPECT_EQ(Find(L"EVS2"), "failed: before");
    for (const char* fault : {"OpenCluster=1722", "ClusterOpenEnum=5", "OpenClusterGroup=5",
                              "OpenClusterResource@EVS1 Name#2=5", "OpenClusterResource@KOVA=5"}) {
        Load(ProductServer());
        AddFault(fault);
        EXPECT_EQ(Find(), "failed: before") << fault;
    }
    Load(ProductServer("clusRDLLCCR"));
    AddFault("ClusterGroupOpenEnum#2=5"); // looking for replicating ones
    EXPECT_EQ(Find(), "failed: before");
    EXPECT_THAT(TakeLog(), ::testing::Not(::testing::HasSubstr("Cannot")));
}

} // namespace
