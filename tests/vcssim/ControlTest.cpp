// Online, offline, clear and probe.
#include "ToolTest.h"

using ::testing::HasSubstr;

class ToolControl : public ToolTest {
protected:
    ToolControl() {
        WriteFile(L".state.json", "{}");
    }

    std::string StateOf(const std::string& resource, const std::string& system = "NODE1") {
        const std::string state = Run("hares", "-state " + resource + " -sys " + system);
        return state.substr(0, state.find('\n'));
    }
};

TEST_F(ToolControl, BringsUpWhatAResourceRequiresFirst) {
    EXPECT_EQ(Run("hares", "-online G-Lanman -sys NODE1"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(StateOf("G-Lanman"), "ONLINE");
    EXPECT_EQ(StateOf("G-IP"), "ONLINE");
    EXPECT_EQ(StateOf("G-Mount"), "OFFLINE");
    EXPECT_EQ(StateOf("G-Lanman", "NODE2"), "OFFLINE");
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "PARTIAL\n");
}

TEST_F(ToolControl, RefusesAResourceOfAGroupThatIsOnlineElsewhere) {
    Run("hares", "-online G-Mount -sys NODE1");
    EXPECT_EQ(Run("hares", "-online G-IP -sys NODE2"),
              "VCS WARNING V-16-1-10286 Cannot online: resource's group is not offline elsewhere\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(StateOf("G-IP", "NODE2"), "OFFLINE");
}

TEST_F(ToolControl, LetsAParallelGroupBeOnlineOnSeveralSystems) {
    WriteFile(L"", "system A\nsystem B\ngroup G ( SystemList = { A = 0, B = 1 } Parallel = 1 )\nT r ()\n");
    Run("hares", "-online r -sys A");
    EXPECT_EQ(Run("hares", "-online r -sys B"), "");
    EXPECT_EQ(StateOf("r", "A"), "ONLINE");
    EXPECT_EQ(StateOf("r", "B"), "ONLINE");
}

TEST_F(ToolControl, RefusesAFaultedResourceUntilItIsCleared) {
    WriteFile(L".state.json", R"({"resources": {"G-IP": {"NODE1": "FAULTED"}}})");
    const std::string notice = "VCS NOTICE V-16-1-10284 Cannot online a faulted resource:"
                               "Clear the faulted resource on system NODE1.\n";
    EXPECT_EQ(Run("hares", "-online G-IP -sys NODE1"), notice);
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-online G-Lanman -sys NODE1"), notice);
    EXPECT_EQ(StateOf("G-Lanman"), "OFFLINE");
    EXPECT_EQ(Run("hares", "-clear G-IP"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-online G-Lanman -sys NODE1"), "");
    EXPECT_EQ(StateOf("G-Lanman"), "ONLINE");
}

TEST_F(ToolControl, WarnsWhenThereIsNothingToClear) {
    const std::string warning =
        "VCS WARNING V-16-1-10267 Resource not faulted or group in the process of failing over\n";
    EXPECT_EQ(Run("hares", "-clear G-IP"), warning);
    EXPECT_EQ(m_exitCode, 1);
    WriteFile(L".state.json", R"({"resources": {"G-IP": {"NODE1": "FAULTED"}}})");
    EXPECT_EQ(Run("hares", "-clear G-IP -sys NODE2"), warning);
    EXPECT_EQ(StateOf("G-IP"), "FAULTED");
    EXPECT_EQ(Run("hares", "-clear G-IP -sys NODE1"), "");
    EXPECT_EQ(StateOf("G-IP"), "OFFLINE");
}

TEST_F(ToolControl, FaultsAResourceThatFailsToGoOnline) {
    WriteFile(L".state.json", R"({"failing": {"G-IP": ["NODE1"]}})");
    EXPECT_EQ(Run("hares", "-online G-Lanman -sys NODE1"), "");
    EXPECT_EQ(StateOf("G-IP"), "FAULTED");
    EXPECT_EQ(StateOf("G-Lanman"), "OFFLINE");
    EXPECT_EQ(Run("hares", "-online G-IP -sys NODE2"), "");
    EXPECT_EQ(StateOf("G-IP", "NODE2"), "ONLINE");
}

TEST_F(ToolControl, RefusesToTakeAwayWhatIsRequired) {
    Run("hares", "-online G-Lanman -sys NODE1");
    EXPECT_EQ(Run("hares", "-offline G-IP -sys NODE1"),
              "VCS WARNING V-16-1-99052 (simulated) Resource G-IP is required "
              "by G-Lanman, which is online on system NODE1\n");
    EXPECT_EQ(StateOf("G-IP"), "ONLINE");
    EXPECT_EQ(Run("hares", "-offline -ignoreparent G-IP -sys NODE1"), "");
    EXPECT_EQ(StateOf("G-IP"), "OFFLINE");
    EXPECT_EQ(Run("hares", "-offline G-Lanman -sys NODE1"), "");
    EXPECT_EQ(StateOf("G-Lanman"), "OFFLINE");
}

TEST_F(ToolControl, LeavesPersistentAndDisabledResourcesAlone) {
    EXPECT_EQ(Run("hares", "-online G-NIC -sys NODE1"),
              "VCS WARNING V-16-1-99050 (simulated) Resource G-NIC is persistent\n");
    EXPECT_EQ(Run("hares", "-offline G-NIC -sys NODE1"),
              "VCS WARNING V-16-1-99050 (simulated) Resource G-NIC is persistent\n");
    Run("haconf", "-makerw");
    Run("hares", "-modify G-Mount Enabled 0");
    EXPECT_EQ(Run("hares", "-online G-Mount -sys NODE1"),
              "VCS WARNING V-16-1-99051 (simulated) Resource G-Mount is not enabled\n");
    EXPECT_EQ(Run("hares", "-online G-RegRep -sys NODE1"), "");
    EXPECT_EQ(StateOf("G-RegRep"), "ONLINE");
    EXPECT_EQ(StateOf("G-Mount"), "OFFLINE");
}

TEST_F(ToolControl, ChecksTheSystem) {
    for (const char* command : {"-online", "-offline", "-clear", "-probe"}) {
        EXPECT_EQ(Run("hares", std::string(command) + " G-IP -sys NODE9"),
                  "VCS WARNING V-16-1-10200 (simulated) System NODE9 does not exist in the local cluster\n");
        EXPECT_EQ(Run("hares", std::string(command) + " H-Service -sys NODE1"),
                  "VCS WARNING V-16-1-10135 (simulated) System NODE1 is not in the SystemList of group H\n");
        EXPECT_EQ(m_exitCode, 1);
    }
    WriteFile(L".state.json", R"({"systems": {"NODE2": "EXITED"}})");
    EXPECT_EQ(Run("hares", "-online G-IP -sys NODE2"),
              "VCS WARNING V-16-1-10180 (simulated) System NODE2 is not available\n");
    EXPECT_EQ(Run("hasys", "-state NODE2"), "EXITED\n");
}

TEST_F(ToolControl, NotesWhatWasProbed) {
    EXPECT_EQ(Run("hares", "-probe G-IP -sys NODE2"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-value G-IP Probed NODE1"), "0\n");
    EXPECT_EQ(Run("hares", "-value G-IP Probed NODE2"), "1\n");
}

TEST_F(ToolControl, RefusesToBringUpWhatIsUpOrOnItsWay) {
    WriteFile(L".state.json", R"({"resources": {"G-Mount": {"NODE1": "ONLINE"}}})");
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "PARTIAL\n");
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE2"),
              "VCS WARNING V-16-1-50997 (simulated) Group G is partially online on system NODE1\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE1"), "");
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE1"),
              "VCS WARNING V-16-1-50735 (simulated) Group G is online on system NODE1 already\n");
    EXPECT_EQ(m_exitCode, 1);
    WriteFile(L".state.json", R"({"clock": 0, "times": {"*": {"online": 10}}})");
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE1"), "");
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE1"),
              "VCS WARNING V-16-1-50996 (simulated) Group G is being brought online on system NODE1 already\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolControl, BringsAGroupUpAndDown) {
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE1"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "ONLINE\n");
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE2"),
              "VCS WARNING V-16-1-10165 (simulated) Group G is online on system NODE1\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-offline G -sys NODE1"), "");
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "OFFLINE\n");
    EXPECT_EQ(Run("hagrp", "-online G -sys NODE2"), "");
    EXPECT_EQ(Run("hagrp", "-online Other -sys NODE1"),
              "VCS WARNING V-16-1-12130 (simulated) Group Other does not exist in the local cluster\n");
    EXPECT_EQ(Run("hagrp", "-online H -sys NODE1"),
              "VCS WARNING V-16-1-10135 (simulated) System NODE1 is not in the SystemList of group H\n");
}

TEST_F(ToolControl, LeavesOutWhatDoesNotStartWithItsGroup) {
    Run("haconf", "-makerw");
    Run("hares", "-modify G-RegRep AutoStart 0");
    Run("hagrp", "-online G -sys NODE1");
    EXPECT_EQ(StateOf("G-RegRep"), "OFFLINE");
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "PARTIAL\n");
}

TEST_F(ToolControl, KeepsAFaultWhenAGroupGoesOffline) {
    WriteFile(L".state.json", R"({"resources": {"G-IP": {"NODE1": "FAULTED"}, "G-Mount": {"NODE1": "ONLINE"}}})");
    Run("hagrp", "-offline G -sys NODE1");
    EXPECT_EQ(Run("hagrp", "-state G -sys NODE1"), "OFFLINE|FAULTED\n");
}

TEST_F(ToolControl, EndsOnADependencyLoop) {
    WriteFile(L"", "system A\ngroup G ( SystemList = { A = 0 } )\nT r ()\nT s ()\nr requires s\ns requires r\n");
    EXPECT_EQ(Run("hares", "-online r -sys A"), "");
    EXPECT_EQ(StateOf("r", "A"), "OFFLINE");
}

TEST_F(ToolControl, NeedsASystem) {
    for (const char* arguments : {"-online G-IP", "-offline G-IP", "-probe G-IP", "-clear", "-online -sys NODE1"}) {
        EXPECT_THAT(Run("hares", arguments), HasSubstr("usage: hares ")) << arguments;
        EXPECT_EQ(m_exitCode, 2);
    }
}
