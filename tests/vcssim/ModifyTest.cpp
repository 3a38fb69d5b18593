// hares -modify.
#include "ToolTest.h"

using ::testing::HasSubstr;
using ::testing::Not;

using ToolModify = ToolTest;

TEST_F(ToolModify, SetsAScalar) {
    EXPECT_EQ(Run("hares", "-modify  G-Lanman VirtualName OTHER"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-value G-Lanman VirtualName"), "OTHER\n");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tVirtualName = OTHER\n\t\tIPResName = G-IP\n"));
}

TEST_F(ToolModify, QuotesWhatHasToBeQuoted) {
    RunWith("hares", {"-modify", "G-Mount", "MountPath", "G:\\a \"b\"\\"});
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tMountPath = \"G:\\\\a \\\"b\\\"\\\\\"\n"));
    EXPECT_EQ(Run("hares", "-value G-Mount MountPath"), "G:\\a \"b\"\\\n");
}

TEST_F(ToolModify, LeavesOutWhatIsTheDefault) {
    Run("hares", "-modify H-Service DelayAfterOnline 600");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tDelayAfterOnline = 600\n"));
    Run("hares", "-modify H-Service DelayAfterOnline 10");
    EXPECT_EQ(ReadFile(L".live"), Sample);
    RunWith("hares", {"-modify", "H-Service", "Password", ""});
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(ReadFile(L".live"), Sample);
}

TEST_F(ToolModify, SetsAnAssociationFromKeysAndValues) {
    EXPECT_EQ(RunWith("hares", {"-modify", "G-RegRep", "Keys", "HKLM\\X Y", ""}), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tKeys = { \"HKLM\\\\X Y\" = \"\" }\n"));
    EXPECT_EQ(Run("hares", "-value G-RegRep Keys"), "HKLM\\X Y\t\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep Keys a b c"),
              "VCS WARNING V-16-1-99045 (simulated) Attribute Keys takes keys with values\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolModify, SetsAList) {
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys x y z"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tExcludeKeys = { x, y, z }\n"));
}

TEST_F(ToolModify, AddsToAList) {
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys -add three"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep ExcludeKeys"), "one\ttwo\tthree\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep Keys -add HKLM\\C 1"),
              "VCS WARNING V-16-1-10563 (simulated) Entry already in attribute keylist\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep Keys -add HKLM\\D 1"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep Keys"), "HKLM\\A B\t\tHKLM\\C\tIgnoreSubKeys:Yes\tHKLM\\D\t1\n");
}

TEST_F(ToolModify, HoldsAMemberTwiceInAVectorAndNotInAKeylist) {
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys -add two"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep ExcludeKeys"), "one\ttwo\ttwo\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys -delete two"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep ExcludeKeys"), "one\ttwo\n");
    WriteFile(L".live", "include \"main.cf.types\"\nsystem A\ngroup G ( SystemList = { A = 0 } )\nDisk d ( )\n");
    WriteFile(L".types", "type Disk (\n\tstr Names[] = { x, y }\n\tkeylist Keys = { x, y }\n\t)\n");
    EXPECT_EQ(Run("hares", "-modify d Names -add x"), "");
    EXPECT_EQ(Run("hares", "-value d Names"), "x\ty\tx\n");
    EXPECT_EQ(Run("hares", "-modify d Keys -add x"),
              "VCS WARNING V-16-1-10563 (simulated) Entry already in attribute keylist\n");
    EXPECT_EQ(Run("hares", "-value d Keys"), "x\ty\n");
}

TEST_F(ToolModify, UpdatesAnAssociation) {
    EXPECT_EQ(Run("hares", "-modify G-RegRep Keys -update HKLM\\C new HKLM\\D 1"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep Keys"), "HKLM\\A B\t\tHKLM\\C\tnew\tHKLM\\D\t1\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys -update one 1"),
              "VCS WARNING V-16-1-99045 (simulated) Attribute ExcludeKeys is no association\n");
}

TEST_F(ToolModify, DeletesFromAList) {
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys -delete one"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep ExcludeKeys"), "two\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys -delete one"),
              "VCS WARNING V-16-1-10566 Entry not found in attribute keylist.\n");
    EXPECT_EQ(RunWith("hares", {"-modify", "G-RegRep", "Keys", "-delete", "HKLM\\A B"}), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep Keys"), "HKLM\\C\tIgnoreSubKeys:Yes\n");
    EXPECT_EQ(Run("hares", "-modify G-RegRep Keys -delete -keys"), "");
    EXPECT_EQ(Run("hares", "-value G-RegRep Keys"), "\n");
}

TEST_F(ToolModify, SetsTheValueOfOneSystem) {
    EXPECT_EQ(Run("hares", "-modify G-IP MACAddress 00-09 -sys NODE2"), "");
    EXPECT_EQ(Run("hares", "-value G-IP MACAddress NODE1"), "00-01\n");
    EXPECT_EQ(Run("hares", "-value G-IP MACAddress NODE2"), "00-09\n");
}

TEST_F(ToolModify, MakesAGlobalAttributeLocal) {
    EXPECT_EQ(Run("hares", "-modify G-IP Address 10.9.9.9 -sys NODE2"), "");
    EXPECT_THAT(ReadFile(L".live"),
                HasSubstr("\t\tAddress @NODE1 = \"10.1.2.3\"\n\t\tAddress @NODE2 = \"10.9.9.9\"\n"));
    EXPECT_THAT(ReadFile(L".live"), Not(HasSubstr("Address = ")));
}

TEST_F(ToolModify, MakesALocalAttributeGlobal) {
    EXPECT_EQ(Run("hares", "-modify G-IP MACAddress 00-09"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tAddress = \"10.1.2.3\"\n\t\tMACAddress = \"00-09\"\n\t\t)\n"));
}

TEST_F(ToolModify, TakesALeadingMinusWithAPercentSign) {
    EXPECT_EQ(Run("hares", "-modify G-Mount VolumeName %-y"), "");
    EXPECT_EQ(Run("hares", "-value G-Mount VolumeName"), "-y\n");
    Run("hares", "-modify G-Mount VolumeName -y");
    EXPECT_EQ(m_exitCode, 2);
    EXPECT_EQ(Run("hares", "-value G-Mount VolumeName"), "-y\n");
}

TEST_F(ToolModify, RefusesWhatDoesNotFit) {
    EXPECT_EQ(Run("hares", "-modify Other Address 1"),
              "VCS WARNING V-16-1-10260 (simulated) Resource Other does not exist in the local cluster\n");
    EXPECT_EQ(Run("hares", "-modify G-Mount Colour red"),
              "VCS WARNING V-16-1-99040 (simulated) Attribute Colour does not exist in type MountV\n");
    EXPECT_EQ(Run("hares", "-modify G-Mount Type NIC"),
              "VCS WARNING V-16-1-99040 (simulated) Attribute Type does not exist in type MountV\n");
    EXPECT_EQ(RunWith("hares", {"-modify", "G-Mount", "VolumeName", "a\nb"}),
              "VCS WARNING V-16-1-99041 (simulated) A value of attribute VolumeName holds a control character\n");
    EXPECT_EQ(Run("hares", "-modify H-Service Domain NT Authority"),
              "VCS WARNING V-16-1-99042 (simulated) Attribute Domain takes one value\n");
    EXPECT_EQ(Run("hares", "-modify H-Service DelayAfterOnline soon"),
              "VCS WARNING V-16-1-99043 (simulated) 'soon' is no number for attribute DelayAfterOnline\n");
    EXPECT_EQ(Run("hares", "-modify H-Service Domain -add x"),
              "VCS WARNING V-16-1-99044 (simulated) Attribute Domain is a scalar\n");
    EXPECT_EQ(Run("hares", "-modify H-Service Domain x -sys NODE1"),
              "VCS WARNING V-16-1-10200 (simulated) System NODE1 does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolModify, LeavesBracesInBracesAlone) {
    std::string nested(Sample);
    const std::string members = "{ one, two }";
    nested.replace(nested.find(members), members.size(), "{ one, { two, three }, { k = { v } } }");
    WriteFile(L"", nested);
    for (const char* change : {"-add four", "-delete one", "-update one 1", "-delete -keys", "x -sys NODE1",
                               "-add four -sys NODE2", "-delete -keys -sys NODE1"}) {
        EXPECT_EQ(Run("hares", std::string("-modify G-RegRep ExcludeKeys ") + change),
                  "VCS WARNING V-16-1-99046 (simulated) Attribute ExcludeKeys holds braces in braces and can only be "
                  "set as a whole\n")
            << change;
        EXPECT_EQ(m_exitCode, 1);
    }
    EXPECT_FALSE(HasFile(L".live"));
    EXPECT_EQ(ReadFile(L""), nested);
    EXPECT_EQ(Run("hares", "-modify G-RegRep ExcludeKeys four"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tExcludeKeys = { four }\n"));
}

TEST_F(ToolModify, TakesAnyAttributeOfATypeThatIsNotKnownWell) {
    EXPECT_EQ(Run("hares", "-modify G-IP Options none"), "");
    EXPECT_EQ(Run("hares", "-modify G-IP Hosts -add a b"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\t\tOptions = none\n\t\tHosts = { a, b }\n\t\t)\n"));
}

TEST_F(ToolModify, KeepsTheKindsOfAttributesThatTheTypeDoesNotDefine) {
    WriteFile(L"", "system N\n\ngroup G (\n\tSystemList = { N = 0 }\n\t)\n\n\tThing T (\n"
                   "\t\tText = \"80\"\n\t\tPort = 80\n\t\tFlag = 1\n\t\tWords = { a, \"2\" }\n"
                   "\t\tNumbers = { 1, 2 }\n\t\tCounts = { a = 1 }\n\t\tTexts = { a = \"1\" }\n"
                   "\t\tEmpty = {}\n\t\tOther = {}\n\t\t)\n");
    for (const char* change : {"Text 81", "Port 8080", "Flag 0", "Words -add 3", "Numbers -add 3", "Counts -update a 2",
                               "Texts -add b 2", "Empty -update k 1", "Other -add x"}) {
        EXPECT_EQ(Run("hares", std::string("-modify T ") + change), "") << change;
    }
    EXPECT_THAT(ReadFile(L".live"),
                HasSubstr("\t\tText = \"81\"\n\t\tPort = 8080\n\t\tFlag = 0\n\t\tWords = { a, \"2\", \"3\" }\n"
                          "\t\tNumbers = { 1, 2, 3 }\n\t\tCounts = { a = 2 }\n\t\tTexts = { a = \"1\", b = \"2\" }\n"
                          "\t\tEmpty = { k = 1 }\n\t\tOther = { x }\n\t\t)\n"));
    EXPECT_EQ(Run("hares", "-modify T Port http"),
              "VCS WARNING V-16-1-99043 (simulated) 'http' is no number for attribute Port\n");
    EXPECT_EQ(Run("hares", "-modify T Port -add 1"),
              "VCS WARNING V-16-1-99044 (simulated) Attribute Port is a scalar\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolModify, NeedsAResourceAnAttributeAndAValue) {
    for (const char* arguments : {"-modify", "-modify G-IP", "-modify G-IP Address", "-modify G-IP Address 1 -sys",
                                  "-modify G-RegRep Keys -delete -keys x"}) {
        EXPECT_THAT(Run("hares", arguments), HasSubstr("usage: hares ")) << arguments;
        EXPECT_EQ(m_exitCode, 2);
    }
}
