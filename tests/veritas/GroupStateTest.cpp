// On which system a service group is online.
#include "Runs.h"

using namespace harness;

namespace {

const std::string StateHeader = "#Group       Attribute             System     Value\r\n";

class VeritasGroupState : public VeritasTest {
protected:
    // The system told for an output; "<none>" when the group is not online, in which case the system before must be
    // untouched.
    std::wstring OnlineNode(const std::string& output, bool acceptPartial = false) {
        tools.AnswerNext(output);
        bool online = true;
        std::wstring system = L"OLD";
        EXPECT_TRUE(cluster.GetGroupOnlineNode(L"G", online, system, acceptPartial)) << output;
        if (!online) {
            EXPECT_EQ(system, L"OLD") << output;
            return L"<none>";
        }
        return system;
    }
};

TEST_F(VeritasGroupState, TheSystemOfTheOnlineRowIsTold) {
    tools.Answer(L"hagrp -state EVS1 ", StateHeader + "EVS1         State                 NODE1      |OFFLINE|\r\n"
                                                      "EVS1         State                 NODE2      |ONLINE|\r\n");
    bool online = false;
    std::wstring system;
    EXPECT_TRUE(cluster.GetGroupOnlineNode(L"EVS1", online, system, false));
    EXPECT_TRUE(online);
    EXPECT_EQ(system, L"NODE2");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hagrp -state EVS1 "});
    EXPECT_EQ(TakeLog(),
              RunLog("hagrp -state EVS1 ",
                     {"I Process exit code: 0", "I Result: #Group       Attribute             System     Value",
                      "I Result: EVS1         State                 NODE1      |OFFLINE|",
                      "I Result: EVS1         State                 NODE2      |ONLINE|"}));
}

TEST_F(VeritasGroupState, TheFirstMatchIsTaken) {
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |ONLINE|\nG State N2 |ONLINE|\n"), L"N1");
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |PARTIAL|\nG State N2 |ONLINE|\n", true), L"N1");
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |PARTIAL|\nG State N2 |ONLINE|\n", false), L"N2");
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |ONLINE|\nG State N2 |PARTIAL|\n", true), L"N1");
}

TEST_F(VeritasGroupState, PartlyOnlineCountsOnlyWhenAccepted) {
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |PARTIAL|\n", false), L"<none>");
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |PARTIAL|\n", true), L"N1");
}

TEST_F(VeritasGroupState, StatesAreComparedWithoutCase) {
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |online|\n"), L"N1");
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |OnLine|\n", true), L"N1");
    EXPECT_EQ(OnlineNode(StateHeader + "G State N1 |Partial|\n", true), L"N1");
}

TEST_F(VeritasGroupState, OtherStatesDoNotCount) {
    for (const char* state : {"|OFFLINE|", "ONLINE", "PARTIAL", "|ONLINE|FAULTED|", "|ONLINE", "ONLINE|",
                              "|PARTIAL|FAULTED|", "|ONLINE|PARTIAL|", "|STARTING|", "x|ONLINE|", "|ONLINE|x"}) {
        EXPECT_EQ(OnlineNode(StateHeader + "G State N1 " + state + "\n", true), L"<none>") << state;
    }
}

TEST_F(VeritasGroupState, TheHeaderIsWalkedLikeARow) {
    EXPECT_EQ(OnlineNode("G State N1 |ONLINE|\n"), L"N1");
    EXPECT_EQ(OnlineNode(StateHeader), L"<none>");
}

TEST_F(VeritasGroupState, GroupAndAttributeOfTheRowAreNotCompared) {
    EXPECT_EQ(OnlineNode(StateHeader + "Other Thing N1 |ONLINE|\n"), L"N1");
}

TEST_F(VeritasGroupState, OnlyTheFourthOfFourTokensIsAState) {
    EXPECT_EQ(OnlineNode("|ONLINE| |ONLINE| |ONLINE| x\n", true), L"<none>");
    EXPECT_EQ(OnlineNode("one-more " + StateHeader + "G State N1 |ONLINE|\n"), L"<none>");
    EXPECT_EQ(OnlineNode("a b\nc\nd\nG\nState N1\n|ONLINE|\n"), L"N1");
}

TEST_F(VeritasGroupState, ARowCutShortDoesNotMatch) {
    for (const char* rest :
         {"G", "G State", "G State N1", "G State |ONLINE|", "|ONLINE|", "|ONLINE| |ONLINE| |ONLINE|"}) {
        EXPECT_EQ(OnlineNode(StateHeader + rest, true), L"<none>") << rest;
    }
}

TEST_F(VeritasGroupState, WithoutOutputTheGroupIsNotOnline) {
    EXPECT_EQ(OnlineNode(""), L"<none>");
}

TEST_F(VeritasGroupState, AMessageIsNoFailureAndTheGroupNotOnline) {
    for (const char* output : {"VCS WARNING V-16-1-40131 Group G does not exist in the local cluster\r\n",
                               "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n", "G ERROR a b\n"}) {
        EXPECT_EQ(OnlineNode(output, true), L"<none>") << output;
    }
}

TEST_F(VeritasGroupState, AnErrorBeforeTheRowsDoesNotHideThem) {
    EXPECT_EQ(OnlineNode("G ERROR a b\nG State N1 |ONLINE|\n"), L"N1");
}

TEST_F(VeritasGroupState, NullCountsAsAnEmptyName) {
    tools.AnswerNext("");
    bool online = true;
    std::wstring system;
    EXPECT_TRUE(cluster.GetGroupOnlineNode(nullptr, online, system, true));
    EXPECT_FALSE(online);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hagrp -state  "});
}

TEST_F(VeritasGroupState, AToolThatCannotBeRunMeansNotOnlineAndTheSystemUntouched) {
    tools.Answer(L"hagrp -state G ", StateHeader + "G State N1 |ONLINE|\n");
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_ACCESS_DENIED);
        bool online = true;
        std::wstring system = L"OLD";
        EXPECT_FALSE(cluster.GetGroupOnlineNode(L"G", online, system, true));
        EXPECT_FALSE(online);
        EXPECT_EQ(system, L"OLD");
    }
}

TEST_F(VeritasGroupState, NotOnlineIsSetBeforeTheToolRuns) {
    bool online = true;
    std::wstring system;
    bool seen = true;
    tools.AnswerNext("");
    tools.onRun = [&](const ToolRun&) { seen = online; };
    EXPECT_TRUE(cluster.GetGroupOnlineNode(L"G", online, system, true));
    EXPECT_FALSE(seen);
}

} // namespace
