// The SystemList of groups: its order and its numbers.
#include "ToolTest.h"

using ::testing::HasSubstr;

class ToolSystemList : public ToolTest {
protected:
    ToolSystemList() {
        WriteFile(L"", Configuration("{ NODE2 = 0, NODE1 = 5 }"));
        WriteFile(L".state.json", R"({"mode": "rw"})");
    }

    static std::string Configuration(const std::string& list) {
        return "system NODE1\nsystem NODE2\nsystem NODE3\nsystem NODE4\n\ngroup G (\n\tSystemList = " + list +
               "\n\tParallel = 0\n\t)\n";
    }
};

TEST_F(ToolSystemList, IsShownInItsOrderWithItsNumbers) {
    EXPECT_EQ(Run("hagrp", "-value G SystemList"), "NODE2\t0\tNODE1\t5\n");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-display G -attribute SystemList"),
              "#Group       Attribute             System     Value\n"
              "G            SystemList            global     NODE2\t0\tNODE1\t5\n");
    EXPECT_EQ(Run("hagrp", "-list"), "G\t\tNODE2\nG\t\tNODE1\n");
}

TEST_F(ToolSystemList, AnEntryWithoutANumberHasTheNextOne) {
    WriteFile(L"", Configuration("{ NODE1, NODE2 = 7, NODE3 }"));
    EXPECT_EQ(Run("hagrp", "-value G SystemList"), "NODE1\t0\tNODE2\t7\tNODE3\t8\n");
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE4"), "");
    EXPECT_EQ(ReadFile(L".live"), Configuration("{ NODE1 = 0, NODE2 = 7, NODE3 = 8, NODE4 = 9 }"));
}

TEST_F(ToolSystemList, AddPutsEntriesBehindTheOthers) {
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE3 2 NODE4"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(ReadFile(L".live"), Configuration("{ NODE2 = 0, NODE1 = 5, NODE3 = 2, NODE4 = 3 }"));
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE1 1"),
              "VCS WARNING V-16-1-10563 (simulated) Entry already in attribute keylist\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolSystemList, UpdateKeepsTheOrder) {
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -update NODE2 9 NODE3 1"), "");
    EXPECT_EQ(ReadFile(L".live"), Configuration("{ NODE2 = 9, NODE1 = 5, NODE3 = 1 }"));
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -update NODE2"),
              "VCS WARNING V-16-1-99045 (simulated) Attribute SystemList takes keys with values\n");
}

TEST_F(ToolSystemList, DeleteKeepsTheNumbersOfTheOthers) {
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -delete NODE2"), "");
    EXPECT_EQ(ReadFile(L".live"), Configuration("{ NODE1 = 5 }"));
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -delete NODE2"),
              "VCS WARNING V-16-1-10566 Entry not found in attribute keylist.\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolSystemList, DeleteKeysEmptiesItAndNumbersBeginAnew) {
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -delete -keys"), "");
    EXPECT_EQ(ReadFile(L".live"), Configuration("{}"));
    EXPECT_EQ(Run("hagrp", "-value G SystemList"), "\n");
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE4 NODE1"), "");
    EXPECT_EQ(ReadFile(L".live"), Configuration("{ NODE4 = 0, NODE1 = 1 }"));
}

TEST_F(ToolSystemList, IsSetAsAWhole) {
    EXPECT_EQ(Run("hagrp", "-modify G SystemList NODE3 4 NODE1 1"), "");
    EXPECT_EQ(ReadFile(L".live"), Configuration("{ NODE3 = 4, NODE1 = 1 }"));
    EXPECT_EQ(Run("haconf", "-dump -makero"), "");
    EXPECT_EQ(ReadFile(L""), Configuration("{ NODE3 = 4, NODE1 = 1 }"));
}

TEST_F(ToolSystemList, RefusesWhatDoesNotFit) {
    WriteFile(L".state.json",
              R"({"mode": "rw", "systems": {"NODE4": "EXITED"}, "groups": {"G": {"NODE1": "ONLINE"}}})");
    const std::string warning = "VCS WARNING V-16-1-";
    EXPECT_EQ(Run("hagrp", "-modify Other SystemList NODE1"),
              warning + "12130 (simulated) Group Other does not exist in the local cluster\n");
    EXPECT_EQ(Run("hagrp", "-modify G Parallel 1"),
              warning + "99061 (simulated) Not simulated: hagrp -modify of attribute Parallel\n");
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE9"),
              warning + "10200 (simulated) System NODE9 does not exist in the local cluster\n");
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE4"),
              warning + "10180 (simulated) System NODE4 is not available\n");
    for (const char* change : {"-delete NODE1", "-delete -keys", "NODE2 0"}) {
        EXPECT_EQ(Run("hagrp", std::string("-modify G SystemList ") + change),
                  warning + "99070 (simulated) Group G is not offline on system NODE1\n")
            << change;
        EXPECT_EQ(m_exitCode, 1);
    }
    for (const char* wrong : {"-modify G", "-modify G SystemList", "-modify G SystemList NODE3 -sys NODE1"}) {
        EXPECT_THAT(Run("hagrp", wrong), HasSubstr("usage: hagrp ")) << wrong;
        EXPECT_EQ(m_exitCode, 2);
    }
    EXPECT_FALSE(HasFile(L".live"));
    WriteFile(L".state.json", "{}");
    EXPECT_EQ(Run("hagrp", "-modify G SystemList -add NODE3"),
              warning + "11309 Configuration must be ReadWrite : Use haconf -makerw\n");
}

TEST_F(ToolSystemList, ValueNeedsAGroupAndAnAttribute) {
    EXPECT_EQ(Run("hagrp", "-value Other SystemList"), "VCS WARNING V-16-1-10133 Group does not exist\n");
    EXPECT_EQ(Run("hagrp", "-value G Colour"),
              "VCS WARNING V-16-1-99011 (simulated) Attribute Colour does not exist\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-value G State NODE1"), "|OFFLINE|\n");
}
