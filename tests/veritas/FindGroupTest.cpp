// The group that hosts a virtual server name.
#include "Runs.h"

using namespace harness;

namespace {

const std::wstring ListLanmans = L"hares -list  Type=Lanman  VirtualName=EVS1 ";
const std::string GroupAttributeHeader = "#Resource Attribute System Value\r\n";
const std::string UnknownResource = "VCS WARNING V-16-1-10260 Resource does not exist\r\n";

std::wstring GroupOf(const std::wstring& resource) {
    return L"hares -display " + resource + L" -attribute Group ";
}

class VeritasFindGroup : public VeritasTest {
protected:
    bool Find() {
        return cluster.FindGroupNameByVirtualServerName(L"EVS1", group);
    }

    std::wstring group = L"OLD";
};

TEST_F(VeritasFindGroup, TheGroupOfTheLanmanResourceIsTold) {
    tools.Answer(ListLanmans, "EVS1-Lanman\t\tNODE1\r\nEVS1-Lanman\t\tNODE2\r\n");
    tools.Answer(GroupOf(L"EVS1-Lanman"), GroupAttributeHeader + "EVS1-Lanman Group global EVS1-Group\r\n");
    EXPECT_TRUE(Find());
    EXPECT_EQ(group, L"EVS1-Group");
    EXPECT_EQ(TakeLog(),
              RunLog("hares -list  Type=Lanman  VirtualName=EVS1 ",
                     {"I Process exit code: 0", "I Result: EVS1-Lanman\t\tNODE1", "I Result: EVS1-Lanman\t\tNODE2"}) +
                  RunLog("hares -display EVS1-Lanman -attribute Group ",
                         {"I Process exit code: 0", "I Result: #Resource Attribute System Value",
                          "I Result: EVS1-Lanman Group global EVS1-Group"}));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{ListLanmans, GroupOf(L"EVS1-Lanman")}));
}

TEST_F(VeritasFindGroup, OfSeveralResourcesTheFirstWithAGroupIsTaken) {
    tools.Answer(ListLanmans, "L1 N\nL2 N\nL3 N\nL4 N\n");
    tools.Answer(GroupOf(L"L1"), UnknownResource, 1);
    tools.Answer(GroupOf(L"L2"), GroupAttributeHeader);
    tools.Answer(GroupOf(L"L3"), GroupAttributeHeader + "L3 Group global G3\n");
    EXPECT_TRUE(Find());
    EXPECT_EQ(group, L"G3");
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{ListLanmans, GroupOf(L"L1"), GroupOf(L"L2"), GroupOf(L"L3")}));
}

TEST_F(VeritasFindGroup, AToolThatFailsOnOneResourceIsFollowedByTheNext) {
    tools.Answer(ListLanmans, "L1 N\nL2 N\n");
    tools.FailStart(GroupOf(L"L1"), ERROR_FILE_NOT_FOUND);
    tools.Answer(GroupOf(L"L2"), GroupAttributeHeader + "L2 Group global G2\n");
    EXPECT_TRUE(Find());
    EXPECT_EQ(group, L"G2");
}

TEST_F(VeritasFindGroup, ANameThatNoResourceCarriesIsNoFailure) {
    tools.Answer(ListLanmans, "");
    EXPECT_TRUE(Find());
    EXPECT_EQ(group, L"OLD");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{ListLanmans});
}

TEST_F(VeritasFindGroup, ResourcesWithoutAGroupAreAFailure) {
    tools.Answer(ListLanmans, "L1 N\nL2 N\n");
    tools.Answer(GroupOf(L"L1"), UnknownResource, 1);
    tools.Answer(GroupOf(L"L2"), "");
    EXPECT_FALSE(Find());
    EXPECT_EQ(group, L"OLD");
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{ListLanmans, GroupOf(L"L1"), GroupOf(L"L2")}));
}

TEST_F(VeritasFindGroup, AnErrorInTheListIsAFailure) {
    tools.Answer(ListLanmans, "L1 ERROR text\n", 1);
    EXPECT_FALSE(Find());
    EXPECT_EQ(group, L"OLD");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{ListLanmans});
}

TEST_F(VeritasFindGroup, FailsWhenAToolCannotBeRun) {
    tools.Answer(ListLanmans, "L1 N\n");
    tools.Answer(GroupOf(L"L1"), GroupAttributeHeader + "L1 Group global G1\n");
    for (unsigned run : {1u, 2u}) {
        tools.FailStart(run, ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(Find()) << run;
        EXPECT_EQ(group, L"OLD") << run;
        EXPECT_EQ(tools.TakeCommandLines().size(), run);
    }
    EXPECT_TRUE(Find());
    EXPECT_EQ(group, L"G1");
}

TEST_F(VeritasFindGroup, AGroupNameWithBlanksIsWhole) {
    tools.Answer(ListLanmans, "L1 N\n");
    tools.Answer(GroupOf(L"L1"), GroupAttributeHeader + "L1 Group global Group One \r\n");
    EXPECT_TRUE(Find());
    EXPECT_EQ(group, L"Group One");
}

TEST_F(VeritasFindGroup, NullCountsAsAnEmptyName) {
    tools.Answer(L"hares -list  Type=Lanman  VirtualName= ", "");
    EXPECT_TRUE(cluster.FindGroupNameByVirtualServerName(nullptr, group));
    EXPECT_EQ(group, L"OLD");
}

} // namespace
