// hares -add and -delete.
#include "ToolTest.h"

using ::testing::HasSubstr;
using ::testing::Not;

using ToolResourceChange = ToolTest;

TEST_F(ToolResourceChange, OverridesStaticAttributesOnly) {
    WriteFile(L".types",
              "type T (\n\tstatic int MonitorInterval = 60\n\tstatic str ArgList[] = { A, B }\n\tstr A\n\t)\n");
    WriteFile(L"", "include \"main.cf.types\"\nsystem NODE1\ngroup G (\n\tSystemList = { NODE1 = 0 }\n\t)\n\n"
                   "\tT R (\n\t\t)\n");
    EXPECT_EQ(Run("hares", "-override R A"), "VCS WARNING V-16-1-13322 A is not a static attribute\n");
    EXPECT_EQ(m_exitCode, 1);
    for (const char* attribute : {"MonitorInterval", "ArgList"}) {
        EXPECT_EQ(Run("hares", std::string("-override R ") + attribute),
                  "VCS WARNING V-16-1-99061 (simulated) Not simulated: hares -override of a static attribute\n");
    }
    EXPECT_THAT(Run("hares", "-override Other A"), HasSubstr("V-16-1-10260"));
}

TEST_F(ToolResourceChange, AddsADisabledResource) {
    EXPECT_EQ(Run("hares", "-add New GenericService G"),
              "VCS NOTICE V-16-1-10242 Resource added. Enabled attribute must be set before agent monitors\n");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(m_pieces[0].toErrors, false);
    EXPECT_EQ(Run("hares", "-value New Enabled"), "0\n");
    EXPECT_EQ(Run("hares", "-value New Critical"), "1\n");
    EXPECT_EQ(Run("hares", "-value New AutoStart"), "1\n");
    EXPECT_EQ(Run("hares", "-value New DelayAfterOnline"), "10\n");
    EXPECT_EQ(Run("hares", "-value New Group"), "G\n");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\tGenericService New (\n\t\tEnabled = 0\n\t\t)\n"));
}

TEST_F(ToolResourceChange, DoesNotCountADisabledResource) {
    WriteFile(L".state.json", R"({"mode": "rw", "resources": {"H-Service": {"NODE2": "ONLINE"}}})");
    Run("hares", "-add New GenericService H");
    EXPECT_EQ(Run("hagrp", "-state H -sys NODE2"), "ONLINE\n");
    Run("hares", "-modify New Enabled 1");
    EXPECT_EQ(Run("hagrp", "-state H -sys NODE2"), "PARTIAL\n");
}

TEST_F(ToolResourceChange, RefusesAResourceThatCannotBe) {
    EXPECT_EQ(Run("hares", "-add G-IP IP G"), "VCS WARNING V-16-1-99021 (simulated) Resource G-IP exists already\n");
    EXPECT_EQ(Run("hares", "-add New Nothing G"), "VCS WARNING V-16-1-99022 (simulated) Type Nothing does not exist\n");
    EXPECT_EQ(Run("hares", "-add New IP Other"), "VCS WARNING V-16-1-10133 Group does not exist\n");
    EXPECT_EQ(Run("hares", "-add 1a IP G"), "VCS WARNING V-16-1-99020 (simulated) '1a' is no name for a resource\n");
    EXPECT_EQ(RunWith("hares", {"-add", "a (", "IP", "G"}),
              "VCS WARNING V-16-1-99020 (simulated) 'a (' is no name for a resource\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolResourceChange, RefusesToRegisterAResource) {
    m_environment.options.refusesRegistration = true;
    EXPECT_EQ(Run("hares", "-add New IP G"),
              "VCS WARNING V-16-1-10806 (simulated) Resource New cannot be registered\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_FALSE(HasFile(L".live"));
    EXPECT_THAT(Run("hares", "-add G-IP IP G"), HasSubstr("V-16-1-99021")) << "what is wrong with it goes first";
}

TEST_F(ToolResourceChange, TakesTheTypesThatAreInUse) {
    WriteFile(L"", "group G (\n\t)\n\n\tOwnType r (\n\t\t)\n");
    Run("hares", "-add s OwnType G");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(ReadFile(L".live"), "group G (\n\t)\n\n\tOwnType r (\n\t\t)\n\n\tOwnType s (\n\t\tEnabled = 0\n\t\t)\n");
}

TEST_F(ToolResourceChange, DeletesAResourceWithItsLinksAndItsState) {
    EXPECT_EQ(Run("hares", "-delete G-Mount"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_THAT(ReadFile(L".live"), Not(HasSubstr("G-Mount")));
    EXPECT_THAT(ReadFile(L".state.json"), Not(HasSubstr("G-Mount")));
    EXPECT_EQ(Run("hares", "-delete G-Mount"),
              "VCS WARNING V-16-1-10260 (simulated) Resource G-Mount does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolResourceChange, LeavesNothingOfAResourceThatCameAndWent) {
    Run("hares", "-add New RegRep G");
    RunWith("hares", {"-modify", "New", "Keys", "HKLM\\A", ""});
    Run("hares", "-link New G-Mount");
    Run("hares", "-delete New");
    EXPECT_EQ(ReadFile(L".live"), Sample);
}

// What somebody else does needs no writable configuration, and leaves its mode as it is.
TEST_F(ToolResourceChange, ResourcesVanishAndAppear) {
    Run("haconf", "-dump -makero");
    EXPECT_EQ(Run("vcssim", "vanish G-Mount"), "");
    EXPECT_THAT(Run("hares", "-list"), Not(HasSubstr("G-Mount\t")));
    Run("vcssim", "appear H New");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-list Group=H Type=GenericService Enabled=0"), "New\t\tNODE2\n");
    EXPECT_EQ(Run("haclus", "-value ReadOnly"), "1\n");
    EXPECT_EQ(Run("vcssim", "appear H New"), "VCS WARNING V-16-1-99021 (simulated) Resource New exists already\n");
    EXPECT_THAT(Run("vcssim", "vanish G-Mount"), HasSubstr("V-16-1-10260"));
    EXPECT_THAT(Run("vcssim", "vanish New New"), HasSubstr("usage: vcssim "));
    Run("haconf", "-makerw");
    Run("vcssim", "vanish New");
    EXPECT_EQ(Run("haclus", "-value ReadOnly"), "0\n");
}
