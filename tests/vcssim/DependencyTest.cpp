// -dep, -link and -unlink.
#include "ToolTest.h"

using ::testing::HasSubstr;

using ToolDependency = ToolTest;

TEST_F(ToolDependency, ListsTheRowsInWhichAResourceStands) {
    EXPECT_EQ(Run("hares", "-dep G-IP"), "#Group Parent   Child\n"
                                         "G      G-IP     G-NIC\n"
                                         "G      G-Lanman G-IP\n");
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(ToolDependency, ListsAllRowsWithoutAName) {
    EXPECT_EQ(Run("hares", "-dep"), "#Group Parent   Child\n"
                                    "G      G-RegRep G-Mount\n"
                                    "G      G-Lanman G-IP\n"
                                    "G      G-IP     G-NIC\n");
}

TEST_F(ToolDependency, ListsTheLastLinkFirst) {
    EXPECT_EQ(Run("hares", "-link G-RegRep G-IP"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-dep G-RegRep"), "#Group Parent   Child\n"
                                             "G      G-RegRep G-IP\n"
                                             "G      G-RegRep G-Mount\n");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\tG-RegRep requires G-Mount\n\tG-RegRep requires G-IP\n"));
    EXPECT_EQ(ReadFile(L""), Sample);
}

TEST_F(ToolDependency, WarnsWhenThereIsNone) {
    EXPECT_EQ(Run("hares", "-dep H-Service"), "VCS WARNING V-16-1-50034 No Resource dependencies are configured\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-dep"), "VCS WARNING V-16-1-50035 No Group dependencies are configured\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hares", "-dep Other"),
              "VCS WARNING V-16-1-10260 (simulated) Resource Other does not exist in the local cluster\n");
}

TEST_F(ToolDependency, ListsGroupDependencies) {
    WriteFile(L"", "group G ()\nrequires group H online local firm\ngroup H ()\n");
    const std::string expected = "#Parent        Child           Relationship\n"
                                 "G              H               online local firm\n";
    EXPECT_EQ(Run("hagrp", "-dep"), expected);
    EXPECT_EQ(Run("hagrp", "-dep H"), expected);
    EXPECT_EQ(Run("hagrp", "-dep Other"), "VCS WARNING V-16-1-10133 Group does not exist\n");
}

TEST_F(ToolDependency, ListsThoseOfOneGroupAsParentAndAsChild) {
    WriteFile(L"", "group A ()\nrequires group B online local firm\ngroup B ()\nrequires group "
                   "AVeryLongGroupName online global soft\ngroup AVeryLongGroupName ()\ngroup Alone ()\n");
    const std::string header = "#Parent        Child              Relationship\n";
    const std::string first = "A              B                  online local firm\n";
    const std::string second = "B              AVeryLongGroupName online global soft\n";
    EXPECT_EQ(Run("hagrp", "-dep"), header + first + second);
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-dep B"), header + first + second);
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-dep A"), "#Parent        Child           Relationship\n"
                                      "A              B               online local firm\n");
    EXPECT_EQ(Run("hagrp", "-dep Alone"), "VCS WARNING V-16-1-50035 No Group dependencies are configured\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_TRUE(m_pieces[0].toErrors);
    EXPECT_EQ(Run("hagrp", "-dep Other"), "VCS WARNING V-16-1-10133 Group does not exist\n");
    EXPECT_EQ(m_exitCode, 1);
}

using ToolGroups = ToolTest;

TEST_F(ToolGroups, AreAddedOnce) {
    EXPECT_EQ(Run("hagrp", "-add New"), "VCS NOTICE V-16-1-10136 Group added; populating SystemList and setting the "
                                        "Parallel attribute recommended before adding resources\n");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-add New"), "VCS WARNING V-16-1-99024 (simulated) Group New exists already\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolGroups, AreDeletedWhenNothingIsLostWithThem) {
    WriteFile(
        L"",
        "system NODE1\nsystem NODE2\n\ngroup A (\n\t)\n\ngroup B (\n\t)\n\n\trequires group A online local firm\n\n"
        "group C (\n\t)\n\n\tT c (\n\t\t)\n");
    WriteFile(L".state.json", R"({"mode": "rw", "groups": {"A": {"NODE1": "ONLINE"}, "C": {"NODE1": "ONLINE"}}})");
    const std::string warning = "VCS WARNING V-16-1-";
    EXPECT_EQ(Run("hagrp", "-delete A"), warning + "99072 (simulated) Group A has a dependency with group B\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-delete B"), warning + "99072 (simulated) Group B has a dependency with group A\n");
    EXPECT_EQ(Run("hagrp", "-delete C"), warning + "99071 (simulated) Group C has resources\n");
    EXPECT_EQ(Run("hagrp", "-unlink B A"), "");
    EXPECT_EQ(Run("hagrp", "-delete A"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-delete A"), warning + "12130 (simulated) Group A does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-delete B"), "");
    EXPECT_EQ(ReadFile(L".live"), "system NODE1\nsystem NODE2\n\ngroup C (\n\t)\n\n\tT c (\n\t\t)\n");
    EXPECT_THAT(ReadFile(L".state.json"), ::testing::Not(HasSubstr("\"A\"")));
    EXPECT_THAT(ReadFile(L".state.json"), HasSubstr("\"C\""));
}

TEST_F(ToolGroups, AreDeletedOnlyFromAWritableConfiguration) {
    EXPECT_EQ(Run("haconf", "-dump -makero"), "");
    EXPECT_THAT(Run("hagrp", "-delete H"), HasSubstr("V-16-1-11309"));
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolGroups, ShowNoStateOnASystemThatIsNotThere) {
    EXPECT_EQ(Run("hagrp", "-state -sys NOPE"),
              "VCS WARNING V-16-1-51051 (simulated) System NOPE does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-state G -sys NOPE"),
              "VCS WARNING V-16-1-51051 (simulated) System NOPE does not exist in the local cluster\n");
}

TEST_F(ToolDependency, LinksGroupsOnceAndTakesTheLinkAway) {
    EXPECT_EQ(Run("hagrp", "-link G H online local"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-dep"), "#Parent        Child           Relationship\n"
                                    "G              H               online local firm\n");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\n\trequires group H online local firm\n"));
    EXPECT_EQ(Run("hagrp", "-link G H offline local"),
              "VCS WARNING V-16-1-10905 Dependency between 'G' and 'H' already exists\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-link H G online global soft"),
              "VCS WARNING V-16-1-99035 (simulated) Dependency between 'H' and 'G' would make a loop\n");
    EXPECT_EQ(Run("hagrp", "-unlink G H"), "");
    EXPECT_EQ(Run("hagrp", "-dep"), "VCS WARNING V-16-1-50035 No Group dependencies are configured\n");
    EXPECT_EQ(Run("hagrp", "-unlink G H"),
              "VCS WARNING V-16-1-10146 (simulated) There is no dependency between 'G' and 'H'\n");
    EXPECT_EQ(Run("hagrp", "-unlink G Other"), "VCS WARNING V-16-1-10133 Group does not exist\n");
    EXPECT_EQ(Run("hagrp", "-link G H online"), Run("hagrp", "-link G H sideways local"));
    EXPECT_EQ(m_exitCode, 2);
}

TEST_F(ToolDependency, LinksAGroupThatHasOneAlreadyAndOneWithoutResources) {
    WriteFile(L"", "group A (\n\t)\n\n\trequires group B online local firm\n\ngroup B (\n\t)\ngroup C (\n\t)\n");
    EXPECT_EQ(Run("hagrp", "-link A C offline local"), "");
    EXPECT_EQ(Run("hagrp", "-link C B online remote soft"), "");
    EXPECT_EQ(ReadFile(L".live"), "group A (\n\t)\n\n\trequires group B online local firm\n"
                                  "\trequires group C offline local\n\ngroup B (\n\t)\ngroup C (\n\t)\n\n"
                                  "\trequires group B online remote soft\n");
}

TEST_F(ToolDependency, RefusesLinksThatCannotBe) {
    EXPECT_EQ(Run("hares", "-link G-IP Other"),
              "VCS WARNING V-16-1-10260 (simulated) Resource Other does not exist in the local cluster\n");
    EXPECT_EQ(Run("hares", "-link G-IP H-Service"),
              "VCS WARNING V-16-1-99030 (simulated) Resources G-IP and H-Service are not in the same group\n");
    EXPECT_EQ(Run("hares", "-link G-IP G-NIC"),
              "VCS WARNING V-16-1-99031 (simulated) Dependency between 'G-IP' and 'G-NIC' already exists\n");
    EXPECT_EQ(Run("hares", "-link G-IP G-Lanman"),
              "VCS WARNING V-16-1-99032 (simulated) Dependency between 'G-IP' and 'G-Lanman' would make a loop\n");
    EXPECT_EQ(Run("hares", "-link G-IP G-IP"),
              "VCS WARNING V-16-1-99032 (simulated) Dependency between 'G-IP' and 'G-IP' would make a loop\n");
    EXPECT_EQ(Run("hares", "-link G-NIC G-Mount"),
              "VCS WARNING V-16-1-99033 (simulated) Resource G-NIC is persistent and cannot require others\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolDependency, TakesALinkAway) {
    EXPECT_EQ(Run("hares", "-unlink G-RegRep G-Mount"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-dep G-Mount"), "VCS WARNING V-16-1-50034 No Resource dependencies are configured\n");
    EXPECT_EQ(Run("hares", "-unlink G-RegRep G-Mount"),
              "VCS WARNING V-16-1-99034 (simulated) There is no dependency between 'G-RegRep' and 'G-Mount'\n");
    EXPECT_EQ(m_exitCode, 1);
}
