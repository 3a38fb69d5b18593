// What happens to the cluster, asked of the tools: switches, faults, systems that go down, frozen groups, time.
#include "ToolTest.h"

using ::testing::HasSubstr;
using ::testing::Not;

class ToolFailover : public ToolTest {
protected:
    ToolFailover() {
        WriteFile(L"", "system A\nsystem B\n"
                       "group G (\n\tSystemList = { A = 0, B = 1 }\n\tAutoStartList = { A, B }\n\t)\n"
                       "\tIP g-ip ( )\n\tService g-app ( )\n\tg-app requires g-ip\n");
        UseState(R"("clock": 100)");
    }

    // With group G online on A.
    void UseState(const std::string& members) {
        WriteFile(L".state.json",
                  R"({"mode": "rw", "resources": {"g-ip": {"A": "ONLINE"}, "g-app": {"A": "ONLINE"}}, )" + members +
                      "}");
    }

    std::string GroupOn(const std::string& system) {
        const std::string state = Run("hagrp", "-state G -sys " + system);
        return state.substr(0, state.find('\n'));
    }
};

TEST_F(ToolFailover, ASwitchMovesTheGroup) {
    EXPECT_EQ(Run("hagrp", "-switch G -to B"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(GroupOn("A"), "OFFLINE");
    EXPECT_EQ(GroupOn("B"), "ONLINE");
    EXPECT_EQ(Run("hagrp", "-switch G -any"), "");
    EXPECT_EQ(GroupOn("A"), "ONLINE");
    EXPECT_EQ(Run("hagrp", "-switch G -to A"), "VCS WARNING V-16-1-10192 (simulated) Group G is online on system A\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-switch H -to A"),
              "VCS WARNING V-16-1-12130 (simulated) Group H does not exist in the local cluster\n");
    EXPECT_THAT(Run("hagrp", "-switch G -to B -any"), HasSubstr("usage: hagrp "));
    EXPECT_THAT(Run("hagrp", "-switch G"), HasSubstr("usage: hagrp "));
    EXPECT_EQ(Run("hagrp", "-switch G -to C"),
              "VCS WARNING V-16-1-10200 (simulated) System C does not exist in the local cluster\n");
}

TEST_F(ToolFailover, AFaultIsToldWithWhatFollows) {
    EXPECT_EQ(Run("vcssim", "fault g-ip A"), "   100  resource g-ip is FAULTED on A: fault\n"
                                             "   100  group G goes offline on A: resource g-ip is critical\n"
                                             "   100  resource g-app is OFFLINE on A\n"
                                             "   100  group G is OFFLINE|FAULTED on A\n"
                                             "   100  group G goes online on B: failover\n"
                                             "   100  resource g-ip is ONLINE on B\n"
                                             "   100  resource g-app is ONLINE on B\n"
                                             "   100  group G is ONLINE on B\n");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hares", "-state g-ip -sys A"), "FAULTED\n");
    EXPECT_EQ(GroupOn("A"), "OFFLINE|FAULTED");
    EXPECT_EQ(Run("vcssim", "fault g-ip A"),
              "VCS WARNING V-16-1-99060 (simulated) Resource g-ip is not online on system A\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hagrp", "-clear G -sys A"), "");
    EXPECT_EQ(GroupOn("A"), "OFFLINE");
    EXPECT_EQ(Run("hagrp", "-clear G"), "VCS WARNING V-16-1-99062 (simulated) Group G is not faulted\n");
    EXPECT_EQ(Run("vcssim", "fault absent A"),
              "VCS WARNING V-16-1-10260 (simulated) Resource absent does not exist in the local cluster\n");
}

TEST_F(ToolFailover, ASystemGoesDownAndComesBack) {
    EXPECT_THAT(Run("vcssim", "system-down A"), HasSubstr("   100  group G goes online on B: failover\n"));
    EXPECT_EQ(Run("hasys", "-state A"), "FAULTED\n");
    EXPECT_EQ(GroupOn("B"), "ONLINE");
    EXPECT_EQ(Run("vcssim", "system-down A"), "VCS WARNING V-16-1-99060 (simulated) System A is FAULTED\n");
    EXPECT_EQ(Run("vcssim", "system-up A"), "   100  system A is RUNNING: it came up\n");
    EXPECT_EQ(Run("hasys", "-state A"), "RUNNING\n");
    EXPECT_THAT(Run("vcssim", "system-exit -evacuate B"), HasSubstr("   100  system B is EXITED: "));
    EXPECT_EQ(GroupOn("A"), "ONLINE");
    EXPECT_EQ(Run("vcssim", "system-down C"),
              "VCS WARNING V-16-1-10357 (simulated) System C does not exist in the local cluster\n");
}

TEST_F(ToolFailover, WhatTheStateFileSaysOfASystemIsNoticed) {
    UseState(R"("clock": 7, "systems": {"A": "FAULTED"})");
    EXPECT_EQ(Run("hagrp", "-state G -sys B"), "ONLINE\n");
    EXPECT_THAT(Run("vcssim", "timeline"), HasSubstr("     7  system A is FAULTED: set from outside\n"));
}

TEST_F(ToolFailover, WithoutAClockWhatTheStateFileSaysStays) {
    UseState(R"("systems": {"A": "FAULTED"}, "downSystems": "accepted")");
    EXPECT_EQ(Run("hagrp", "-state G -sys B"), "OFFLINE\n");
    EXPECT_EQ(Run("hares", "-display g-ip -attribute State"),
              "#Resource    Attribute             System     Value\n"
              "g-ip         State                 A          ONLINE\n"
              "g-ip         State                 B          OFFLINE\n");
    EXPECT_THAT(ReadFile(L".state.json"), Not(HasSubstr("timeline")));
    EXPECT_EQ(Run("haconf", "-dump -makero"), "");
    EXPECT_THAT(ReadFile(L".state.json"), HasSubstr("\"downSystems\": \"accepted\"")) << "the switch stays";
    EXPECT_THAT(Run("vcssim", "clock 5"), "");
    EXPECT_EQ(Run("hagrp", "-state G -sys B"), "ONLINE\n") << "a clock lets the cluster notice, with the switch, too";
}

TEST_F(ToolFailover, TransitionsTakeTimeWhenAskedTo) {
    UseState(R"("clock": 0, "times": {"*": {"online": 10, "offline": 5}, "Service": {"online": 60, "offline": 30}})");
    EXPECT_EQ(Run("hagrp", "-switch G -to B"), "");
    EXPECT_EQ(GroupOn("A"), "ONLINE|STOPPING");
    EXPECT_EQ(Run("hagrp", "-state G"), "#Group       Attribute             System     Value\n"
                                        "G            State                 A          |ONLINE|STOPPING|\n"
                                        "G            State                 B          |OFFLINE|\n");
    EXPECT_EQ(Run("vcssim", "wait 30"), "    30  resource g-app is OFFLINE on A\n"
                                        "    30  resource g-ip goes offline on A\n");
    EXPECT_EQ(GroupOn("A"), "STOPPING|PARTIAL");
    Run("vcssim", "wait 5");
    EXPECT_EQ(GroupOn("B"), "OFFLINE|STARTING");
    EXPECT_EQ(Run("hagrp", "-online G -sys A"), "VCS WARNING V-16-1-10165 (simulated) Group G is online on system B\n");
    Run("vcssim", "wait 10");
    EXPECT_EQ(GroupOn("B"), "STARTING|PARTIAL");
    EXPECT_EQ(Run("vcssim", "wait 60"), "   105  resource g-app is ONLINE on B\n"
                                        "   105  group G is ONLINE on B\n");
    EXPECT_EQ(Run("vcssim", "clock"), "105\n");
    const std::string told = Run("vcssim", "timeline");
    EXPECT_THAT(told, HasSubstr("     0  group G goes offline on A: switch to B asked for\n"));
    EXPECT_THAT(told, HasSubstr("    45  resource g-ip is ONLINE on B\n"));
}

TEST_F(ToolFailover, TimePassesByItselfWithoutASimulatedClock) {
    UseState(R"("times": {"*": {"online": 200, "offline": 200}})");
    EXPECT_EQ(Run("hagrp", "-offline G -sys A"), "");
    EXPECT_EQ(GroupOn("A"), "ONLINE|STOPPING");
    EXPECT_EQ(Run("vcssim", "clock"), "real\n");
    EXPECT_EQ(Run("vcssim", "wait 10"),
              "VCS WARNING V-16-1-99067 (simulated) The clock is the real one: vcssim clock 0 "
              "makes it a simulated one\n");
    EXPECT_THAT(Run("vcssim", "clock 0"), HasSubstr("Something is under way"));
    // Begun long ago, as far as the files tell.
    UseState(
        R"("times": {"*": {"online": 200, "offline": 200}}, "transitions": {"g-app": {"A": {"now": "goes offline",
             "due": 1000}}}, "moves": [{"group": "G", "from": "A", "cause": "offline", "phase": "stopping"}])");
    EXPECT_EQ(Run("hares", "-state g-app -sys A"), "OFFLINE\n");
}

TEST_F(ToolFailover, TheClockBecomesASimulatedOneOnce) {
    UseState(R"("probed": {})");
    EXPECT_EQ(Run("vcssim", "clock 5"), "");
    EXPECT_EQ(Run("vcssim", "clock"), "5\n");
    EXPECT_THAT(Run("vcssim", "clock 0"), HasSubstr("The clock is a simulated one already"));
    EXPECT_EQ(Run("vcssim", "wait 10"), "");
    EXPECT_EQ(Run("vcssim", "clock"), "15\n");
    for (const char* arguments : {"wait", "wait -1", "wait x", "wait 99999999999", "wait 1 2", "other", ""}) {
        EXPECT_THAT(Run("vcssim", arguments), HasSubstr("usage: vcssim ")) << arguments;
        EXPECT_EQ(m_exitCode, 2);
    }
}

TEST_F(ToolFailover, AGroupWithoutSystemsIsSwitchedNowhere) {
    WriteFile(L"", "system A\ngroup E (\n)\n");
    EXPECT_EQ(Run("hagrp", "-switch E -any"),
              "VCS WARNING V-16-1-50837 (simulated) The SystemList of group E is empty\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolFailover, AFrozenGroupIsLeftAlone) {
    EXPECT_EQ(Run("hagrp", "-freeze G"), "");
    EXPECT_EQ(Run("hagrp", "-display G -attribute TFrozen Frozen"),
              "#Group       Attribute             System     Value\n"
              "G            TFrozen               global     1\n"
              "G            Frozen                global     0\n");
    for (const char* arguments : {"-offline G -sys A", "-switch G -to A", "-switch G -to B", "-online G -sys A"}) {
        const std::string number = std::string(arguments).find("-switch") == 0 ? "51055" : "99060";
        EXPECT_EQ(Run("hagrp", arguments), "VCS WARNING V-16-1-" + number + " (simulated) Group G is frozen\n");
        EXPECT_EQ(m_exitCode, 1);
    }
    for (const char* arguments : {"-offline g-app -sys A", "-online g-app -sys A"}) {
        EXPECT_EQ(Run("hares", arguments), "VCS WARNING V-16-1-99060 (simulated) Group G is frozen\n");
    }
    EXPECT_EQ(Run("vcssim", "fault g-app A"), "   100  resource g-app is FAULTED on A: fault\n"
                                              "   100  nothing is done about it: group G is frozen\n");
    EXPECT_EQ(GroupOn("A"), "PARTIAL|FAULTED");
    EXPECT_EQ(Run("hagrp", "-unfreeze G"), "");
    EXPECT_EQ(GroupOn("B"), "ONLINE");
    EXPECT_EQ(Run("hagrp", "-unfreeze G"), "VCS WARNING V-16-1-99063 (simulated) Group G is not frozen\n");
}

TEST_F(ToolFailover, FreezingPersistentlyChangesTheConfiguration) {
    EXPECT_EQ(Run("hagrp", "-freeze G -persistent"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("\tAutoStartList = { A, B }\n\tFrozen = 1\n\t)\n"));
    EXPECT_EQ(Run("hagrp", "-freeze G -persistent"), "VCS WARNING V-16-1-40209 Group is already persistently frozen\n");
    EXPECT_EQ(Run("hagrp", "-unfreeze G -persistent"), "");
    EXPECT_EQ(Run("hagrp", "-unfreeze G -persistent"), "VCS WARNING V-16-1-40202 Group is not persistently frozen\n");
    EXPECT_EQ(Run("hasys", "-freeze -persistent B"), "");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("system B (\n\tFrozen = 1\n\t)\n"));
    EXPECT_EQ(Run("hasys", "-freeze -persistent B"),
              "VCS WARNING V-16-1-99064 (simulated) System is already persistently frozen\n");
    EXPECT_EQ(Run("hasys", "-unfreeze -persistent B"), "");
    EXPECT_EQ(Run("hasys", "-unfreeze -persistent B"), "VCS WARNING V-16-1-40205 System is not persistently frozen\n");
    Run("haconf", "-dump -makero");
    const std::string refusal = "VCS WARNING V-16-1-11309 Configuration must be ReadWrite : Use haconf -makerw\n";
    EXPECT_EQ(Run("hagrp", "-freeze G -persistent"), refusal);
    EXPECT_EQ(Run("hasys", "-freeze -persistent A"), refusal);
}

TEST_F(ToolFailover, AFrozenSystemTakesNoGroup) {
    EXPECT_EQ(Run("hasys", "-freeze B"), "");
    EXPECT_EQ(Run("hasys", "-display B -attribute TFrozen"), "#System    Attribute             Value\n"
                                                             "B          TFrozen               1\n");
    EXPECT_EQ(Run("hagrp", "-switch G -to B"), "VCS WARNING V-16-1-51055 (simulated) System B is frozen\n");
    EXPECT_EQ(Run("hasys", "-unfreeze B"), "");
    EXPECT_EQ(Run("hasys", "-freeze -evacuate A"), "");
    EXPECT_EQ(GroupOn("B"), "ONLINE");
    EXPECT_EQ(Run("hasys", "-unfreeze B"), "VCS WARNING V-16-1-99065 (simulated) System B is not frozen\n");
    EXPECT_EQ(Run("hasys", "-freeze C"),
              "VCS WARNING V-16-1-10357 (simulated) System C does not exist in the local cluster\n");
}

TEST_F(ToolFailover, TheStatesAreShownAsTheyAre) {
    UseState(R"("clock": 0, "times": {"g-app": {"online": 0, "offline": 9}}, "frozen": {"systems": ["B"]})");
    Run("hagrp", "-offline G -sys A");
    EXPECT_EQ(Run("vcssim", "state"), "clock    0                    \n"
                                      "system   A                    RUNNING\n"
                                      "system   B                    RUNNING, frozen\n"
                                      "group    G                    A            ONLINE|STOPPING\n"
                                      "group    G                    B            OFFLINE\n"
                                      "resource g-ip                 A            ONLINE, stopping\n"
                                      "resource g-ip                 B            OFFLINE\n"
                                      "resource g-app                A            ONLINE, stopping\n"
                                      "resource g-app                B            OFFLINE\n");
}

TEST_F(ToolFailover, EqualFilesAndEventsGiveEqualBytes) {
    const auto play = [this] {
        WriteFile(L".live", ReadFile(L""));
        UseState(R"("clock": 0, "times": {"*": {"online": 10, "offline": 5}})");
        std::string all;
        for (const char* arguments : {"fault g-ip A", "wait 12", "system-down B", "system-up B", "wait 100", "state"}) {
            all += Run("vcssim", arguments);
        }
        return all + ReadFile(L".state.json");
    };
    const std::string first = play();
    EXPECT_EQ(play(), first);
    EXPECT_THAT(first, HasSubstr("\"timeline\": ["));
}

TEST_F(ToolFailover, WhatIsNotSimulatedIsNamed) {
    WriteFile(L"", "system A\ngroup G (\n\tSystemList = { A = 0 }\n\trequires group H online site soft\n\t)\n"
                   "group H (\n\tSystemList = { A = 0 }\n\t)\n\tService h-app ( )\n");
    UseState(R"("clock": 0)");
    const std::string refusal =
        "VCS WARNING V-16-1-99061 (simulated) Not simulated: the dependency 'online site soft' of "
        "group G on group H\n";
    EXPECT_EQ(Run("hagrp", "-online G -sys A"), refusal);
    EXPECT_EQ(Run("vcssim", "system-down A"), refusal);
    EXPECT_EQ(Run("hagrp", "-online H -sys A"), "");
}

TEST_F(ToolFailover, MembersOfTheStateFileAreChecked) {
    const std::vector<std::pair<const char*, const char*>> wrong = {
        {R"("clock": -1)", "clock"},
        {R"("times": {"*": {"up": 1}})", "times.*"},
        {R"("frozen": {"groups": [1]})", "frozen.groups[0]"},
        {R"("transitions": {"g-ip": {"A": {"now": "sleeps"}}})", "transitions.g-ip.A.now"},
        {R"("moves": [{"group": "G", "cause": "fault", "phase": "stopping"}])", "moves[0].from"},
        {R"("moves": 1)", "moves"},
        {R"("timeline": [{"at": 1}])", "timeline[0].event"},
        {R"("restarts": {"g-ip": 1})", "restarts.g-ip"},
        {R"("retries": [])", "retries"}};
    for (const auto& entry : wrong) {
        UseState(entry.first);
        EXPECT_THAT(Run("vcssim", "state"), HasSubstr(std::string("main.cf.state.json: ") + entry.second))
            << entry.first;
        EXPECT_EQ(m_exitCode, 1);
    }
}
