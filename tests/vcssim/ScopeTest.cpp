// hares -local and -global.
#include "ToolTest.h"

using ::testing::HasSubstr;
using ::testing::Not;

using ToolScope = ToolTest;

TEST_F(ToolScope, LocalGivesEachSystemTheValueAsItIsWritten) {
    EXPECT_EQ(Run("hares", "-local G-IP Address"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_THAT(ReadFile(L".live"),
                HasSubstr("\t\tAddress @NODE1 = \"10.1.2.3\"\n\t\tAddress @NODE2 = \"10.1.2.3\"\n\t\t)\n"));
    EXPECT_THAT(ReadFile(L".live"), Not(HasSubstr("Address = ")));
    EXPECT_EQ(Run("hares", "-display G-IP -attribute Address"),
              "#Resource    Attribute             System     Value\n"
              "G-IP         Address               NODE1      10.1.2.3\n"
              "G-IP         Address               NODE2      10.1.2.3\n");
    EXPECT_EQ(Run("hares", "-modify G-IP Address 10.9.9.9 -sys NODE2"), "");
    EXPECT_EQ(Run("hares", "-value G-IP Address NODE1"), "10.1.2.3\n");
    EXPECT_EQ(Run("hares", "-value G-IP Address NODE2"), "10.9.9.9\n");
    EXPECT_EQ(Run("hares", "-list Address=10.9.9.9"), "G-IP\t\tNODE2\n");
}

TEST_F(ToolScope, LocalWritesDefaultsOut) {
    EXPECT_EQ(Run("hares", "-local G-Mount Critical"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tCritical @NODE1 = 1\n\t\tCritical @NODE2 = 1\n"));
    EXPECT_EQ(Run("hares", "-modify G-Mount Critical 0 -sys NODE1"), "");
    EXPECT_EQ(Run("hares", "-display G-Mount -attribute Critical"),
              "#Resource    Attribute             System     Value\n"
              "G-Mount      Critical              NODE1      0\n"
              "G-Mount      Critical              NODE2      1\n");
}

TEST_F(ToolScope, LocalKeepsListsAsTheyAreWritten) {
    EXPECT_EQ(Run("hares", "-local G-RegRep Keys"), "");
    const std::string keys = "{ \"HKLM\\\\A B\" = \"\", \"HKLM\\\\C\" = \"IgnoreSubKeys:Yes\" }\n";
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tKeys @NODE1 = " + keys + "\t\tKeys @NODE2 = " + keys));
}

TEST_F(ToolScope, GlobalReplacesTheValuesOfAllSystems) {
    EXPECT_EQ(Run("hares", "-global G-IP MACAddress 00-09"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tMACAddress = \"00-09\"\n\t\t)\n"));
    EXPECT_THAT(ReadFile(L".live"), Not(HasSubstr("MACAddress @")));
    EXPECT_EQ(Run("hares", "-display G-IP -attribute MACAddress"),
              "#Resource    Attribute             System     Value\n"
              "G-IP         MACAddress            global     00-09\n");
    Run("hares", "-local G-RegRep Keys");
    EXPECT_EQ(RunWith("hares", {"-global", "G-RegRep", "Keys", "a", "1", "b", ""}), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep Keys"), "a\t1\tb\t\n");
}

TEST_F(ToolScope, LocalAndGlobalWithTheSameValueLeaveTheConfigurationAsItWas) {
    Run("hares", "-local H-Service DelayAfterOnline");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tDelayAfterOnline @NODE2 = 10\n"));
    EXPECT_EQ(Run("hares", "-global H-Service DelayAfterOnline 10"), "");
    EXPECT_EQ(ReadFile(L".live"), Sample);
}

TEST_F(ToolScope, RefusesWhatDoesNotFit) {
    const std::string warning = "VCS WARNING V-16-1-";
    EXPECT_EQ(Run("hares", "-local G-IP MACAddress"),
              warning + "99047 (simulated) Attribute MACAddress is local already\n");
    EXPECT_EQ(Run("hares", "-global G-IP Address 1"),
              warning + "99048 (simulated) Attribute Address is global already\n");
    for (const char* command : {"-local G-IP Group", "-global G-IP Group x"}) {
        EXPECT_EQ(Run("hares", command), warning + "99040 (simulated) Attribute Group does not exist in type IP\n")
            << command;
    }
    EXPECT_EQ(Run("hares", "-local G-IP Colour"),
              warning + "99040 (simulated) Attribute Colour does not exist in type IP\n");
    EXPECT_EQ(Run("hares", "-global G-IP MACAddress 1 2"),
              warning + "99042 (simulated) Attribute MACAddress takes one value\n");
    EXPECT_EQ(Run("hares", "-local Other Address"),
              warning + "10260 (simulated) Resource Other does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_FALSE(HasFile(L".live"));
    for (const char* arguments : {"-local G-IP", "-local G-IP Address 1", "-global G-IP", "-global G-IP MACAddress"}) {
        EXPECT_THAT(Run("hares", arguments), HasSubstr("usage: hares ")) << arguments;
        EXPECT_EQ(m_exitCode, 2);
    }
}

TEST_F(ToolScope, NeedsSystemsAndAWritableConfiguration) {
    WriteFile(L"", "group G (\n\t)\n\n\tIP G-IP (\n\t\tAddress = a\n\t\t)\n");
    EXPECT_EQ(Run("hares", "-local G-IP Address"),
              "VCS WARNING V-16-1-99049 (simulated) The SystemList of group G is empty\n");
    WriteFile(L".state.json", "{}");
    for (const char* change : {"-local G-IP Address", "-global G-IP Address 1"}) {
        EXPECT_EQ(Run("hares", change),
                  "VCS WARNING V-16-1-11309 Configuration must be ReadWrite : Use haconf -makerw\n")
            << change;
    }
}

TEST_F(ToolScope, ModifyChangesItUnlessItIsToKeepIt) {
    m_environment.options.keepsScope = true;
    EXPECT_EQ(Run("hares", "-modify G-IP Address 1 -sys NODE1"),
              "VCS WARNING V-16-1-99048 (simulated) Attribute Address is global and takes no -sys\n");
    EXPECT_EQ(Run("hares", "-modify G-IP MACAddress 1"),
              "VCS WARNING V-16-1-99047 (simulated) Attribute MACAddress is local and needs -sys\n");
    EXPECT_FALSE(HasFile(L".live"));
    EXPECT_EQ(Run("hares", "-modify G-IP Address a"), "");
    EXPECT_EQ(Run("hares", "-modify G-IP MACAddress b -sys NODE1"), "");
    EXPECT_EQ(Run("hares", "-value G-IP MACAddress"), "b\n");
}
