// The command runner with real processes.
#include "RealTools.h"
#include "Runs.h"

using namespace harness;

namespace {

using VeritasRunnerProcess = RealToolTest;

TEST_F(VeritasRunnerProcess, BothOutputsEndUpInOneTextInTheirOrder) {
    Act(L"out:a\\x0d\\x0a;err:b\\x0d\\x0a;out:c\\x0d\\x0a;err:d");
    EXPECT_EQ(Systems(cluster), (Names{L"a", L"b", L"c", L"d"}));
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0", "I Result: a", "I Result: b", "I Result: c",
                                                 "I Result: d"}));
}

TEST_F(VeritasRunnerProcess, AToolThatPrintsToStandardErrorOnlyIsHeard) {
    Act(L"err:VCS ERROR V-16-1-10600\\x0d\\x0a;exit:1");
    EXPECT_EQ(Systems(cluster), (Names{L"VCS", L"ERROR", L"V-16-1-10600"}));
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 1", "I Result: VCS ERROR V-16-1-10600"}));
}

TEST_F(VeritasRunnerProcess, TheExitCodeIsNoMatter) {
    Act(L"out:NODE1\\x0a;exit:1");
    EXPECT_EQ(Systems(cluster), Names{L"NODE1"});
    Act(L"exit:255");
    EXPECT_TRUE(cluster.SwitchToReadOnlyMode());
}

TEST_F(VeritasRunnerProcess, AToolThatClosesItsOutputEarlyIsWaitedFor) {
    const NamedEvent done(L"done");
    Act(L"out:NODE1\\x0a;close;sleep:300;set:" + done.Name());
    EXPECT_EQ(Systems(cluster), Names{L"NODE1"});
    EXPECT_TRUE(done.Wait(0));
}

TEST_F(VeritasRunnerProcess, WhatAKilledToolPrintedCounts) {
    Act(L"out:NODE1\\x0aNOD;kill:9;out:E2\\x0a");
    EXPECT_EQ(Systems(cluster), (Names{L"NODE1", L"NOD"}));
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("I Process exit code: 9\n"));
}

TEST_F(VeritasRunnerProcess, AToolThatReadsItsInputGetsNothing) {
    Act(L"stdin;out:on\\x0a");
    EXPECT_EQ(Systems(cluster), (Names{L"read=0", L"on"}));
}

TEST_F(VeritasRunnerProcess, TheToolIsToldToHideItsWindow) {
    Act(L"startup");
    EXPECT_EQ(Systems(cluster), (Names{L"flags=257", L"show=0"}));
}

TEST_F(VeritasRunnerProcess, TheToolSeesItsCommandLineAsItStands) {
    Act(L"args");
    const NameValuePairList filter = {{L"Name", L"\"a b\" > x | y & %PATH% $HOME *"}};
    EXPECT_EQ(Systems(cluster, &filter), (Names{L"hasys", L"-list", L"Name=\"a", L"b\"", L">", L"x", L"|", L"y", L"&",
                                                L"%PATH%", L"$HOME", L"*"}));
}

TEST_F(VeritasRunnerProcess, TheToolRunsInTheCallersDirectoryAndEnvironment) {
    Act(L"directory;variable:VCS_TEST_VALUE");
    SetEnvironmentVariableW(L"VCS_TEST_VALUE", L"seen");
    const Names tokens = Systems(cluster);
    SetEnvironmentVariableW(L"VCS_TEST_VALUE", nullptr);
    EXPECT_EQ(tokens, (Names{Folder().Path(), L"seen"}));
}

TEST_F(VeritasRunnerProcess, AToolThatIsMissingFailsTheRunAndLeavesNoFile) {
    starter.program = Folder().File(L"missing.exe");
    Names systems = {L"before"};
    EXPECT_FALSE(cluster.EnumSystemNames(systems));
    EXPECT_EQ(systems, Names{L"before"});
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {}));
    EXPECT_EQ(Folder().Entries(), Names());
}

TEST_F(VeritasRunnerProcess, WithoutACaptureFileTheToolStillRuns) {
    const NamedEvent done(L"done");
    Act(L"set:" + done.Name() + L";exit:3");
    Platform().FailCall("CreateFileW", ERROR_DISK_FULL);
    EXPECT_EQ(Systems(cluster), Names());
    EXPECT_TRUE(done.Wait(0));
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 3"}));
}

TEST_F(VeritasRunnerProcess, WhatAToolWroteBeforeItsWritesFailedCounts) {
    // As on a full disk, but for the error code: here the output is closed.
    Act(L"out:NODE1\\x0a;close;out:NODE2\\x0a");
    EXPECT_EQ(Systems(cluster), Names{L"NODE1"});
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("I Process exit code: 6\n"));
}

TEST_F(VeritasRunnerProcess, ALongRunIsWaitedForToItsEnd) {
    Act(L"sleep:1500;out:NODE1");
    EXPECT_EQ(Systems(cluster), Names{L"NODE1"});
    EXPECT_THAT(TakeJournal(), ::testing::HasSubstr("WaitForSingleObject(process,INFINITE)\n"));
}

TEST_F(VeritasRunnerProcess, AHundredMegabytesAreReadAndTheFileIsDeleted) {
    const std::size_t lines = 50000;
    Act(L"fill:50000:2098"); // with its line end 2,100 bytes each: 105,000,000
    Names systems;
    ASSERT_TRUE(cluster.EnumSystemNames(systems));
    ASSERT_EQ(systems.size(), lines);
    const std::wstring expected = Repeated(511);
    EXPECT_EQ(std::count(systems.begin(), systems.end(), expected), static_cast<std::ptrdiff_t>(lines));
    // The entry, file name, command line, exit code and leaving, and each line of output as long as it was.
    ASSERT_EQ(Log().Entries().size(), lines + 5);
    EXPECT_EQ(Log().Entries()[4].text, "Result: " + std::string(2098, 'x'));
    EXPECT_EQ(Folder().Entries(), Names());
}

} // namespace
