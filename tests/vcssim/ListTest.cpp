// -list of systems, groups and resources.
#include "ToolTest.h"

using ToolList = ToolTest;

TEST_F(ToolList, ListsSystemsInTheirOrder) {
    EXPECT_EQ(Run("hasys", "-list"), "NODE1\nNODE2\n");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hasys", "-list NodeId=1"), "NODE2\n");
    EXPECT_EQ(Run("hasys", "-list SysState!=RUNNING"), "");
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(ToolList, ListsGroupsOncePerSystem) {
    EXPECT_EQ(Run("hagrp", "-list"), "G\t\tNODE1\nG\t\tNODE2\nH\t\tNODE2\n");
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(ToolList, ListsGroupsThatMeetConditions) {
    EXPECT_EQ(Run("hagrp", "-list SystemList=NODE1"), "G\t\tNODE1\nG\t\tNODE2\n");
    EXPECT_EQ(Run("hagrp", "-list State=|PARTIAL|"), "G\t\tNODE1\n");
    EXPECT_EQ(Run("hagrp", "-list Parallel=0 AutoStartList!=NODE1"), "H\t\tNODE2\n");
}

TEST_F(ToolList, PadsResourceNamesToTheLongest) {
    EXPECT_EQ(Run("hares", "-list"), "G-IP     \t\tNODE1\nG-IP     \t\tNODE2\n"
                                     "G-Lanman \t\tNODE1\nG-Lanman \t\tNODE2\n"
                                     "G-Mount  \t\tNODE1\nG-Mount  \t\tNODE2\n"
                                     "G-NIC    \t\tNODE1\nG-NIC    \t\tNODE2\n"
                                     "G-RegRep \t\tNODE1\nG-RegRep \t\tNODE2\n"
                                     "H-Service\t\tNODE2\n");
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(ToolList, MeetsSeveralConditionsAtOnce) {
    EXPECT_EQ(Run("hares", "-list Type=Lanman VirtualName=VSERVER"), "G-Lanman\t\tNODE1\nG-Lanman\t\tNODE2\n");
    EXPECT_EQ(Run("hares", "-list Type=Lanman VirtualName=vserver"), "");
    EXPECT_EQ(Run("hares", "-list Type=GenericService ServiceName=Spooler Group=H"), "H-Service\t\tNODE2\n");
    EXPECT_EQ(Run("hares", "-list Type=GenericService ServiceName=Spooler Group=G"), "");
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(ToolList, LooksAtDefaultsToo) {
    EXPECT_EQ(Run("hares", "-list DelayAfterOnline=10"), "H-Service\t\tNODE2\n");
    EXPECT_EQ(Run("hares", "-list Critical=0"), "H-Service\t\tNODE2\n");
    EXPECT_EQ(Run("hares", "-list ServiceName!=Other"), "H-Service\t\tNODE2\n");
}

TEST_F(ToolList, ComparesPrefixes) {
    EXPECT_EQ(Run("hares", "-list VirtualName=~VSER"), "G-Lanman\t\tNODE1\nG-Lanman\t\tNODE2\n");
    EXPECT_EQ(Run("hares", "-list VirtualName=~SER"), "");
}

TEST_F(ToolList, LooksAtEachSystemsOwnValue) {
    EXPECT_EQ(Run("hares", "-list State=ONLINE Type=MountV"), "G-Mount\t\tNODE1\n");
    EXPECT_EQ(Run("hares", "-list MACAddress=00-02"), "G-IP\t\tNODE2\n");
}

TEST_F(ToolList, TakesAValueWithABlankAsOneArgument) {
    EXPECT_EQ(RunWith("hares", {"-list", "Type=MountV", "MountPath=F:\\Mail Data\\"}),
              "G-Mount\t\tNODE1\nG-Mount\t\tNODE2\n");
    EXPECT_EQ(RunWith("hares", {"-list", "Keys=HKLM\\A B"}), "G-RegRep\t\tNODE1\nG-RegRep\t\tNODE2\n");
    RunWith("hares", {"-list", "Type=MountV", "MountPath=F:\\Mail", "Data\\"});
    EXPECT_EQ(m_exitCode, 2);
}

TEST_F(ToolList, AnswersNoMatchAsItIsAskedTo) {
    EXPECT_EQ(Run("hares", "-list Type=None"), "");
    EXPECT_EQ(m_exitCode, 0);
    m_environment.options.warnsOfNoMatch = true;
    EXPECT_EQ(Run("hares", "-list Type=None"), "VCS WARNING V-16-1-99010 (simulated) No resource matches\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-list Parallel=1"), "VCS WARNING V-16-1-99010 (simulated) No group matches\n");
    EXPECT_EQ(Run("hasys", "-list Frozen=1"), "VCS WARNING V-16-1-99010 (simulated) No system matches\n");
}

TEST_F(ToolList, WarnsWhenThereAreNoGroups) {
    WriteFile(L"", "system NODE1\n");
    WriteFile(L".state.json", "{}");
    EXPECT_EQ(Run("hagrp", "-list"), "VCS WARNING V-16-1-50031 No Groups are configured\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-display"), "VCS WARNING V-16-1-50031 No Groups are configured\n");
    EXPECT_EQ(Run("hagrp", "-state"), "VCS WARNING V-16-1-50031 No Groups are configured\n");
    EXPECT_EQ(Run("hares", "-list"), "");
}

TEST_F(ToolList, SeparatesColumnsByBlanksWhenAsked) {
    m_environment.options.blanksInLists = true;
    EXPECT_EQ(Run("hagrp", "-list"), "G  NODE1\nG  NODE2\nH  NODE2\n");
}

TEST_F(ToolList, ReadsTenThousandResources) {
    std::string text = "system NODE1\ngroup G (\n\tSystemList = { NODE1 = 0 }\n\t)\n";
    std::string expected;
    for (int i = 10000; i < 20000; ++i) {
        text += "\n\tMountV r" + std::to_string(i) + " (\n\t\t)\n";
        expected += "r" + std::to_string(i) + "\t\tNODE1\n";
    }
    WriteFile(L"", text);
    EXPECT_EQ(Run("hares", "-list Type=MountV Group=G"), expected);
}
