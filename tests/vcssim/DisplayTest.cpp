// -display, -value and -state.
#include "ToolTest.h"

using ::testing::HasSubstr;

using ToolDisplay = ToolTest;

TEST_F(ToolDisplay, ShowsAGlobalAttribute) {
    EXPECT_EQ(Run("hares", "-display G-Lanman -attribute Group"),
              "#Resource    Attribute             System     Value\n"
              "G-Lanman     Group                 global     G\n");
    EXPECT_EQ(m_exitCode, 0);
}

TEST_F(ToolDisplay, ShowsALocalAttributePerSystem) {
    EXPECT_EQ(Run("hares", "-display G-IP -attribute MACAddress"),
              "#Resource    Attribute             System     Value\n"
              "G-IP         MACAddress            NODE1      00-01\n"
              "G-IP         MACAddress            NODE2      00-02\n");
}

TEST_F(ToolDisplay, KeepsBlanksInsideAValue) {
    EXPECT_EQ(Run("hares", "-display G-Mount -attribute MountPath"),
              "#Resource    Attribute             System     Value\n"
              "G-Mount      MountPath             global     F:\\Mail Data\\\n");
}

TEST_F(ToolDisplay, SeparatesThePartsOfListsByTabs) {
    EXPECT_EQ(Run("hares", "-display G-RegRep -attribute Keys ExcludeKeys"),
              "#Resource    Attribute             System     Value\n"
              "G-RegRep     Keys                  global     HKLM\\A B\t\tHKLM\\C\tIgnoreSubKeys:Yes\n"
              "G-RegRep     ExcludeKeys           global     one\ttwo\n");
    EXPECT_EQ(Run("hagrp", "-display G -attribute SystemList"),
              "#Group       Attribute             System     Value\n"
              "G            SystemList            global     NODE1\t0\tNODE2\t1\n");
}

TEST_F(ToolDisplay, EndsTheRowOfAnEmptyValueBehindTheSystem) {
    const std::string header = "#Resource    Attribute             System     Value\n";
    EXPECT_EQ(Run("hares", "-display G-Mount -attribute VolumeName"),
              header + "G-Mount      VolumeName            global     \n");
    m_environment.options.bareEmptyValues = true;
    EXPECT_EQ(Run("hares", "-display G-Mount -attribute VolumeName"),
              header + "G-Mount      VolumeName            global\n");
}

TEST_F(ToolDisplay, ShowsAllAttributesOfAResource) {
    EXPECT_EQ(Run("hares", "-display H-Service"), "#Resource    Attribute             System     Value\n"
                                                  "H-Service    Group                 global     H\n"
                                                  "H-Service    Type                  global     GenericService\n"
                                                  "H-Service    AutoStart             global     1\n"
                                                  "H-Service    Critical              global     0\n"
                                                  "H-Service    Enabled               global     1\n"
                                                  "H-Service    MonitorOnly           global     0\n"
                                                  "H-Service    ResourceOwner         global     \n"
                                                  "H-Service    Probed                NODE2      0\n"
                                                  "H-Service    State                 NODE2      OFFLINE\n"
                                                  "H-Service    DelayAfterOffline     global     10\n"
                                                  "H-Service    DelayAfterOnline      global     10\n"
                                                  "H-Service    Domain                global     \n"
                                                  "H-Service    LanmanResName         global     \n"
                                                  "H-Service    Password              global     \n"
                                                  "H-Service    ServiceName           global     Spooler\n"
                                                  "H-Service    UseVirtualName        global     0\n"
                                                  "H-Service    UserAccount           global     \n"
                                                  "H-Service    service_arg           global     \n");
}

TEST_F(ToolDisplay, WidensItsColumns) {
    WriteFile(L"", "system ALONGSYSTEMNAME\ngroup G ( SystemList = { ALONGSYSTEMNAME = 0 } )\n"
                   "T ALongResourceName ( AnAttributeWithAVeryLongName = 1 )\n");
    EXPECT_EQ(Run("hares", "-display -attribute AnAttributeWithAVeryLongName State"),
              "#Resource         Attribute                    System          Value\n"
              "ALongResourceName AnAttributeWithAVeryLongName global          1\n"
              "ALongResourceName State                        ALONGSYSTEMNAME OFFLINE\n");
}

TEST_F(ToolDisplay, ShowsEveryResourceThatHasTheAttribute) {
    const std::string expected = "#Resource    Attribute             System     Value\n"
                                 "G-Lanman     VirtualName           global     VSERVER\n";
    EXPECT_EQ(Run("hares", "-display -attribute VirtualName"), expected);
    EXPECT_EQ(Run("hares", "-display all -attribute VirtualName"), expected);
}

TEST_F(ToolDisplay, WarnsOfWhatDoesNotExist) {
    EXPECT_EQ(Run("hares", "-display Other -attribute Group"),
              "VCS WARNING V-16-1-40130 (simulated) Resource Other does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hares", "-display G-IP -attribute Other"),
              "VCS WARNING V-16-1-99011 (simulated) Attribute Other does not exist\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-display Other"), "VCS WARNING V-16-1-10133 Group does not exist\n");
    EXPECT_EQ(Run("hasys", "-display Other"),
              "VCS WARNING V-16-1-10357 (simulated) System Other does not exist in the local cluster\n");
    ASSERT_EQ(m_pieces.size(), 1u);
    EXPECT_TRUE(m_pieces[0].toErrors);
}

TEST_F(ToolDisplay, ShowsSystemsWithoutASystemColumn) {
    EXPECT_EQ(Run("hasys", "-display NODE2 -attribute SysState"), "#System    Attribute             Value\n"
                                                                  "NODE2      SysState              RUNNING\n");
    EXPECT_EQ(Run("hasys", "-state"), "#System    Attribute             Value\n"
                                      "NODE1      SysState              RUNNING\n"
                                      "NODE2      SysState              RUNNING\n");
    EXPECT_EQ(Run("hasys", "-state NODE1"), "RUNNING\n");
    EXPECT_EQ(Run("hasys", "-value NODE1 SysState"), "RUNNING\n");
    EXPECT_EQ(Run("hasys", "-value NODE1 Colour"),
              "VCS WARNING V-16-1-99011 (simulated) Attribute Colour does not exist\n");
    EXPECT_EQ(Run("hasys", "-value Other SysState"),
              "VCS WARNING V-16-1-10357 (simulated) System Other does not exist in the local cluster\n");
}

TEST_F(ToolDisplay, ShowsAllAttributesOfAGroupInOrder) {
    EXPECT_EQ(Run("hagrp", "-display H"), "#Group       Attribute             System     Value\n"
                                          "H            AdministratorGroups   global     \n"
                                          "H            Administrators        global     \n"
                                          "H            Authority             global     0\n"
                                          "H            AutoFailOver          global     1\n"
                                          "H            AutoStart             global     1\n"
                                          "H            AutoStartList         global     \n"
                                          "H            Enabled               global     1\n"
                                          "H            Frozen                global     0\n"
                                          "H            Parallel              global     0\n"
                                          "H            Priority              global     0\n"
                                          "H            State                 NODE2      |OFFLINE|\n"
                                          "H            SystemList            global     NODE2\t0\n"
                                          "H            TFrozen               global     0\n");
}

TEST_F(ToolDisplay, GivesAValueAlone) {
    EXPECT_EQ(Run("hares", "-value G-Lanman VirtualName"), "VSERVER\n");
    EXPECT_EQ(Run("hares", "-value G-IP MACAddress NODE2"), "00-02\n");
    EXPECT_EQ(Run("hares", "-value G-RegRep ExcludeKeys"), "one\ttwo\n");
    EXPECT_EQ(Run("hares", "-value Other Type"),
              "VCS WARNING V-16-1-10260 (simulated) Resource Other does not exist in the local cluster\n");
}

TEST_F(ToolDisplay, ShowsStatesOfGroups) {
    EXPECT_EQ(Run("hagrp", "-state G"), "#Group       Attribute             System     Value\n"
                                        "G            State                 NODE1      |PARTIAL|\n"
                                        "G            State                 NODE2      |OFFLINE|\n");
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "PARTIAL\n");
    EXPECT_EQ(Run("hagrp", "-state -sys NODE2"), "#Group       Attribute             System     Value\n"
                                                 "G            State                 NODE2      |OFFLINE|\n"
                                                 "H            State                 NODE2      |OFFLINE|\n");
    EXPECT_EQ(Run("hagrp", "-state Other"),
              "VCS WARNING V-16-1-40131 Group Other does not exist in the local cluster\n");
    EXPECT_EQ(m_exitCode, 1);
    WriteFile(L"", "system NODE1\nsystem NODE2\ngroup G ( SystemList = { NODE1 = 0 } )\n");
    EXPECT_EQ(Run("hagrp", "-state -sys NODE2"), "VCS WARNING V-16-1-10554 No group exists with system of NODE2\n");
}

TEST_F(ToolDisplay, DerivesTheStateOfAGroupFromItsResources) {
    const auto stateWith = [&](const char* resources) {
        WriteFile(L".state.json", std::string("{\"resources\": {") + resources + "}}");
        return Run("hagrp", "-state G -sys NODE1");
    };
    EXPECT_EQ(stateWith(""), "OFFLINE\n");
    EXPECT_EQ(stateWith(R"("G-IP": {"NODE1": "ONLINE"}, "G-Lanman": {"NODE1": "ONLINE"},
                           "G-Mount": {"NODE1": "ONLINE"}, "G-RegRep": {"NODE1": "ONLINE|STATE UNKNOWN"})"),
              "ONLINE\n"); // the network card does not count
    EXPECT_EQ(stateWith(R"("G-IP": {"NODE1": "FAULTED"})"), "OFFLINE|FAULTED\n");
    EXPECT_EQ(stateWith(R"("G-IP": {"NODE1": "FAULTED"}, "G-Mount": {"NODE1": "ONLINE"})"), "PARTIAL|FAULTED\n");
}

TEST_F(ToolDisplay, ShowsAGivenStateOfAGroup) {
    WriteFile(L".state.json", R"({"groups": {"H": {"NODE2": "STARTING|PARTIAL"}}})");
    EXPECT_EQ(Run("hagrp", "-state H"), "#Group       Attribute             System     Value\n"
                                        "H            State                 NODE2      |STARTING|PARTIAL|\n");
}

TEST_F(ToolDisplay, ShowsStatesOfResources) {
    EXPECT_EQ(Run("hares", "-state G-Mount"), "#Resource    Attribute             System     Value\n"
                                              "G-Mount      State                 NODE1      ONLINE\n"
                                              "G-Mount      State                 NODE2      OFFLINE\n");
    EXPECT_EQ(Run("hares", "-state G-Mount -sys NODE2"), "OFFLINE\n");
    EXPECT_EQ(Run("hares", "-state G-NIC -sys NODE2"), "ONLINE\n");
    EXPECT_THAT(Run("hares", "-state"), HasSubstr("H-Service    State                 NODE2      OFFLINE\n"));
}

TEST_F(ToolDisplay, ReadsTheIncludedTypes) {
    WriteFile(L"",
              "include \"main.cf.types\"\nsystem NODE1\ngroup G ( SystemList = { NODE1 = 0 } )\nDisk d ()\nLink l ()");
    WriteFile(L".types",
              "type Disk (\n\tstatic keylist SupportedActions = { a, b }\n\tstatic str ArgList[] = { Unit }\n"
              "\tstr Unit\n\tint Count = 3\n\tstr Names[] = { x, y }\n\tkeylist Keys\n\tstr Map{} = { k = v }\n\t)\n"
              "type Link (\n\tstatic str Operations = None\n\ttemp i18nstr Speed = \"1 G\"\n\t)\n");
    EXPECT_EQ(Run("hares", "-value d Count"), "3\n");
    EXPECT_EQ(Run("hares", "-value d Unit"), "\n");
    EXPECT_EQ(Run("hares", "-value d Names"), "x\ty\n");
    EXPECT_EQ(Run("hares", "-value d Map"), "k\tv\n");
    EXPECT_EQ(Run("hares", "-value l Speed"), "1 G\n");
    EXPECT_EQ(Run("hares", "-state l -sys NODE1"), "ONLINE\n");
    EXPECT_EQ(Run("hares", "-value d ArgList"),
              "VCS WARNING V-16-1-99011 (simulated) Attribute ArgList does not exist\n");
}
