// Adding, linking and deleting resources, and bringing them online and offline.
#include "Runs.h"

using namespace harness;

namespace {

const std::string RefusedMessage = "VCS ERROR V-16-1-10160 Configuration must be ReadWrite\r\n";

class VeritasOperations : public VeritasTest {
protected:
    // Every tool answers alike.
    VeritasOperations() {
        tools.AnswerPrefix(L"hares -", "");
    }

    // An operation's command lines when its n-th run fails; 0: none.
    template <typename Operation> CommandList CommandLines(unsigned failing, bool result, Operation operation) {
        if (failing) {
            tools.FailStart(failing, ERROR_FILE_NOT_FOUND);
        }
        EXPECT_EQ(operation(), result) << "run " << failing;
        return tools.TakeCommandLines();
    }
};

// Create -------------------------------------------------------------------------------------------------------------

TEST_F(VeritasOperations, CreatingAPlainResourceRunsOneTool) {
    EXPECT_TRUE(cluster.CreateResource(L"R", L"MountV", L"G", nullptr, {}));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -add R MountV G "});
    EXPECT_EQ(TakeLog(), RunLog("hares -add R MountV G ", {"I Process exit code: 0"}));
}

TEST_F(VeritasOperations, CreatingAddsThenSetsAttributesInOrderThenLinks) {
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"Child", {{L"B", L"1"}, {L"A", L"2"}}));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hares -add R T G ", L"hares -modify R  B 1 ",
                                                     L"hares -modify R  A 2 ", L"hares -link R Child "}));
    EXPECT_EQ(TakeLog(), RunLog("hares -add R T G ", {"I Process exit code: 0"}) +
                             RunLog("hares -modify R  B 1 ", {"I Process exit code: 0"}) +
                             RunLog("hares -modify R  A 2 ", {"I Process exit code: 0"}) +
                             RunLog("hares -link R Child ", {"I Process exit code: 0"}));
}

TEST_F(VeritasOperations, CreatingSetsAnAttributeAsOftenAsItIsNamedAndValuesUnquoted) {
    EXPECT_TRUE(
        cluster.CreateResource(L"R", L"T", L"G", nullptr,
                               {{L"A", L"one two"}, {L"A", L"\"x\" \"\""}, {L"A", L""}, {L"", L"v"}, {L"a", L"%s"}}));
    EXPECT_EQ(tools.TakeCommandLines(),
              (CommandList{L"hares -add R T G ", L"hares -modify R  A one two ", L"hares -modify R  A \"x\" \"\" ",
                           L"hares -modify R  A  ", L"hares -modify R   v ", L"hares -modify R  a %s "}));
}

TEST_F(VeritasOperations, CreatingLinksToAnEmptyNameButNotToNull) {
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"", {}));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hares -add R T G ", L"hares -link R  "}));
}

TEST_F(VeritasOperations, CreatingSucceedsAndRunsEveryToolWhateverTheyPrint) {
    for (int i = 0; i < 4; ++i) {
        tools.AnswerNext(RefusedMessage, 1);
    }
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"C", {{L"A", L"1"}, {L"B", L"2"}}));
    EXPECT_EQ(tools.TakeCommandLines().size(), 4u);
}

TEST_F(VeritasOperations, CreatingSucceedsAndTriesEveryToolWhicheverCannotBeRun) {
    const CommandList all = {L"hares -add R T G ", L"hares -modify R  A 1 ", L"hares -modify R  B 2 ",
                             L"hares -link R C "};
    for (unsigned failing = 0; failing <= all.size(); ++failing) {
        const CommandList run = CommandLines(failing, true, [this] {
            return cluster.CreateResource(L"R", L"T", L"G", L"C", {{L"A", L"1"}, {L"B", L"2"}});
        });
        EXPECT_EQ(run, all) << failing;
    }
    Platform().FailCall("GetTempFileNameW", ERROR_DISK_FULL, 1, FaultMode::FromThenOn);
    Forget();
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"C", {{L"A", L"1"}, {L"B", L"2"}}));
    EXPECT_EQ(TakeLog(), Lines({RunEnter, RunEnter, RunEnter, RunEnter}));
}

TEST_F(VeritasOperations, CreatingTakesNullForEmptyNames) {
    EXPECT_TRUE(cluster.CreateResource(nullptr, nullptr, nullptr, nullptr, {{L"A", L"1"}}));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hares -add    ", L"hares -modify   A 1 "}));
}

TEST_F(VeritasOperations, TheConfigurationIsNeitherOpenedNorClosed) {
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"C", {{L"A", L"1"}}));
    EXPECT_TRUE(cluster.LinkResource(L"P", L"C"));
    EXPECT_TRUE(cluster.DeleteResource(L"R"));
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"N", true));
    for (const std::wstring& line : tools.TakeCommandLines()) {
        EXPECT_EQ(line.find(L"haconf"), std::wstring::npos) << Utf8(line);
    }
}

// Link and delete ----------------------------------------------------------------------------------------------------

TEST_F(VeritasOperations, LinkingNamesTheParentFirst) {
    EXPECT_TRUE(cluster.LinkResource(L"Parent", L"Child"));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -link Parent Child "});
    EXPECT_EQ(TakeLog(), RunLog("hares -link Parent Child ", {"I Process exit code: 0"}));
}

TEST_F(VeritasOperations, LinkingSucceedsWhateverTheToolPrints) {
    tools.AnswerNext(RefusedMessage, 1);
    EXPECT_TRUE(cluster.LinkResource(L"P", L"C"));
}

TEST_F(VeritasOperations, LinkingFailsWhenTheToolCannotBeRun) {
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_ACCESS_DENIED);
        EXPECT_FALSE(cluster.LinkResource(L"P", L"C"));
    }
    EXPECT_TRUE(cluster.LinkResource(L"P", L"C"));
}

TEST_F(VeritasOperations, LinkingTakesNullForEmptyNames) {
    EXPECT_TRUE(cluster.LinkResource(nullptr, nullptr));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -link   "});
}

TEST_F(VeritasOperations, DeletingRunsOneTool) {
    EXPECT_TRUE(cluster.DeleteResource(L"R"));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -delete R "});
    EXPECT_EQ(TakeLog(), RunLog("hares -delete R ", {"I Process exit code: 0"}));
}

TEST_F(VeritasOperations, DeletingSucceedsWhateverBecomesOfTheTool) {
    tools.AnswerNext(RefusedMessage, 1);
    EXPECT_TRUE(cluster.DeleteResource(L"R"));
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_ACCESS_DENIED);
        EXPECT_TRUE(cluster.DeleteResource(L"R"));
    }
    EXPECT_TRUE(cluster.DeleteResource(nullptr));
    EXPECT_EQ(tools.CommandLines().back(), L"hares -delete  ");
}

// Online and offline -------------------------------------------------------------------------------------------------

TEST_F(VeritasOperations, TheFaultIsClearedEverywhereAndTheResourceProbedBeforeItComesOnline) {
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"NODE1", true));
    EXPECT_EQ(tools.TakeCommandLines(),
              (CommandList{L"hares -clear  R", L"hares -probe R -sys  NODE1", L"hares -online R -sys NODE1 "}));
    EXPECT_EQ(TakeLog(), RunLog("hares -clear  R", {"I Process exit code: 0"}) +
                             RunLog("hares -probe R -sys  NODE1", {"I Process exit code: 0"}) +
                             RunLog("hares -online R -sys NODE1 ", {"I Process exit code: 0"}));
}

TEST_F(VeritasOperations, TheSameComesBeforeItGoesOffline) {
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"NODE1", false));
    EXPECT_EQ(tools.TakeCommandLines(),
              (CommandList{L"hares -clear  R", L"hares -probe R -sys  NODE1", L"hares -offline R -sys NODE1 "}));
}

TEST_F(VeritasOperations, TheNewStateIsNotWaitedFor) {
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"NODE1", true));
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>());
}

TEST_F(VeritasOperations, WithoutASystemNothingIsProbed) {
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", nullptr, true));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hares -clear  R", L"hares -online R -sys  "}));
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"", false));
    EXPECT_EQ(tools.TakeCommandLines(),
              (CommandList{L"hares -clear  R", L"hares -probe R -sys  ", L"hares -offline R -sys  "}));
}

TEST_F(VeritasOperations, OnlyTheLastToolOfTurningOnOrOffMatters) {
    for (const bool online : {true, false}) {
        const CommandList all = {L"hares -clear  R", L"hares -probe R -sys  N",
                                 online ? L"hares -online R -sys N " : L"hares -offline R -sys N "};
        for (unsigned failing = 0; failing <= all.size(); ++failing) {
            const CommandList run = CommandLines(failing, failing != all.size(), [this, online] {
                return cluster.TurnOnOrOffResource(L"R", L"N", online);
            });
            EXPECT_EQ(run, all) << failing;
        }
    }
}

TEST_F(VeritasOperations, WhatTheToolsOfTurningOnOrOffPrintIsNoMatter) {
    for (int i = 0; i < 3; ++i) {
        tools.AnswerNext(RefusedMessage, 1);
    }
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"N", true));
    EXPECT_EQ(tools.TakeCommandLines().size(), 3u);
}

TEST_F(VeritasOperations, TurningOnOrOffTakesNullForAnEmptyResource) {
    EXPECT_TRUE(cluster.TurnOnOrOffResource(nullptr, L"N", true));
    EXPECT_EQ(tools.TakeCommandLines(),
              (CommandList{L"hares -clear  ", L"hares -probe  -sys  N", L"hares -online  -sys N "}));
}

} // namespace
