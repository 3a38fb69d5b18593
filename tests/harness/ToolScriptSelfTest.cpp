#include "FaultSweep.h"
#include "VeritasTest.h"

#include <gtest/gtest-spi.h>

using namespace harness;

namespace {

class HarnessToolScript : public VeritasTest {
protected:
    Names Systems() {
        Names systems;
        EXPECT_TRUE(cluster.EnumSystemNames(systems));
        return systems;
    }

    // What the audit finds fault with.
    std::string AuditFailures() {
        ::testing::TestPartResultArray failures;
        {
            const ::testing::ScopedFakeTestPartResultReporter reporter(
                ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
            Audit();
        }
        std::string messages;
        for (int i = 0; i < failures.size(); ++i) {
            messages += failures.GetTestPartResult(i).message();
        }
        return messages;
    }
};

TEST_F(HarnessToolScript, AnswersACommandLineAndRecordsTheRun) {
    tools.Answer(L"hasys -list ", "NODE1\r\nNODE2\r\n", 7);
    EXPECT_EQ(Systems(), (Names{L"NODE1", L"NODE2"}));
    ASSERT_EQ(tools.Runs().size(), 1u);
    EXPECT_TRUE(tools.Runs()[0].started);
    EXPECT_EQ(tools.Runs()[0].arguments.application, nullptr);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list "});
    EXPECT_EQ(tools.TakeCommandLines(), CommandList());
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("I Process exit code: 7\n"));
}

TEST_F(HarnessToolScript, GivesSeveralAnswersInTheirOrderAndTheLastOneFromThenOn) {
    tools.Answer(L"hasys -list ", "A\n");
    tools.Answer(L"hasys -list ", "B\n");
    EXPECT_EQ(Systems(), Names{L"A"});
    EXPECT_EQ(Systems(), Names{L"B"});
    EXPECT_EQ(Systems(), Names{L"B"});
}

TEST_F(HarnessToolScript, PrefersTheQueueThenTheWholeCommandLineThenTheLongestBeginning) {
    tools.AnswerPrefix(L"ha", "SHORT\n");
    tools.AnswerPrefix(L"hasys", "LONG\n");
    EXPECT_EQ(Systems(), Names{L"LONG"});
    tools.Answer(L"hasys -list ", "WHOLE\n");
    EXPECT_EQ(Systems(), Names{L"WHOLE"});
    tools.AnswerNext("QUEUED\n");
    EXPECT_EQ(Systems(), Names{L"QUEUED"});
    EXPECT_EQ(Systems(), Names{L"WHOLE"});
}

TEST_F(HarnessToolScript, LetsStartsFailByNumberAndByCommandLine) {
    tools.Answer(L"hasys -list ", "A\n");
    tools.FailStart(2, ERROR_FILE_NOT_FOUND);
    tools.FailStart(L"haconf -makerw ", ERROR_ACCESS_DENIED);
    Names systems;
    EXPECT_TRUE(cluster.EnumSystemNames(systems));
    EXPECT_FALSE(cluster.EnumSystemNames(systems));
    EXPECT_TRUE(cluster.EnumSystemNames(systems));
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(tools.Runs().size(), 4u);
    EXPECT_FALSE(tools.Runs()[1].started);
}

TEST_F(HarnessToolScript, TheAuditNamesCommandLinesWithoutAnAnswer) {
    EXPECT_EQ(Systems(), Names());
    EXPECT_THAT(AuditFailures(), ::testing::HasSubstr("command lines without an answer"));
    tools.AllowUnscripted();
    EXPECT_EQ(AuditFailures(), "");
}

TEST_F(HarnessToolScript, TheAuditFindsFilesLeft) {
    const HANDLE file = CreateFileW(L"ha-1.tmp", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    EXPECT_THAT(AuditFailures(), ::testing::HasSubstr("files left in the current directory"));
    EXPECT_TRUE(DeleteFileW(L"ha-1.tmp"));
    EXPECT_EQ(AuditFailures(), "");
}

TEST_F(HarnessToolScript, TheAuditFindsHandlesLeftAndClosedTwice) {
    Platform().HandleOpened(reinterpret_cast<HANDLE>(4), "process");
    EXPECT_THAT(AuditFailures(), ::testing::HasSubstr("process"));
    Platform().HandleClosed(reinterpret_cast<HANDLE>(4));
    EXPECT_EQ(AuditFailures(), "");
    Platform().HandleClosed(reinterpret_cast<HANDLE>(4));
    EXPECT_THAT(Platform().BadCloses(), ::testing::HasSubstr("handle 4"));
    Platform().HandleOpened(reinterpret_cast<HANDLE>(8), "thread");
    EXPECT_NE(AuditFailures(), "");
    Platform().HandleClosed(reinterpret_cast<HANDLE>(8));
    Platform().ForgetBadCloses();
}

TEST_F(HarnessToolScript, TheAuditFindsALivingChild) {
    wchar_t commandLine[] = L"cmd.exe /c pause";
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE input = nullptr;
    HANDLE ours = nullptr;
    ASSERT_TRUE(CreatePipe(&input, &ours, &inheritable, 0));
    SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process));
    Platform().WatchChild(process.hProcess);
    EXPECT_THAT(AuditFailures(), ::testing::HasSubstr("child processes that still run"));
    CloseHandle(ours); // the end of its input ends it
    CloseHandle(input);
    EXPECT_EQ(WaitForSingleObject(process.hProcess, 30000), WAIT_OBJECT_0);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    EXPECT_EQ(AuditFailures(), "");
}

TEST_F(HarnessToolScript, TheJournalShowsProcessAndFileCalls) {
    tools.Answer(L"haconf -makerw ", "");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(TakeJournal(),
              Lines({"GetTempFileNameW(.,ha-,0)", "CreateFileW(.\\ha-XXXX.tmp,c0000000,0,inherited,2,0)",
                     "CreateProcessW(haconf -makerw )", "SetHandleInformation(.\\ha-XXXX.tmp,1,0)",
                     "WaitForSingleObject(process,INFINITE)", "GetExitCodeProcess(process)", "CloseHandle(process)",
                     "CloseHandle(thread)", "CloseHandle(.\\ha-XXXX.tmp)", "_wsopen(.\\ha-XXXX.tmp,4080,40)",
                     "_read(4096)", "_close()", "_wsopen(.\\ha-XXXX.tmp,4080,40)", "_read(4096)", "_close()",
                     "DeleteFileW(.\\ha-XXXX.tmp)"}));
}

TEST_F(HarnessToolScript, ASweepReachesProcessAndFileCalls) {
    std::vector<std::string> faults;
    FaultSweep(*this, {[&] { tools.Answer(L"hasys -list ", "NODE1\r\n"); },
                       [&] {
                           Names systems;
                           const bool done = cluster.EnumSystemNames(systems);
                           return std::string(done ? "true " : "false ") + std::to_string(systems.size());
                       },
                       [&](const SweepRun& run) {
                           if (!run.faulted) {
                               EXPECT_EQ(run.result, "true 1");
                           } else if (!run.threw) {
                               EXPECT_THAT(run.result, ::testing::AnyOf("true 1", "true 0", "false 0"));
                           }
                           faults.push_back(run.fault.substr(0, run.fault.find('(')));
                       }});
    for (const char* call :
         {"GetTempFileNameW", "CreateFileW", "CreateProcessW", "SetHandleInformation", "WaitForSingleObject",
          "GetExitCodeProcess", "CloseHandle", "_wsopen", "_read", "_close", "DeleteFileW", "operator new"}) {
        EXPECT_THAT(faults, ::testing::Contains(call));
    }
}

TEST(HarnessText, TempNamesAreMaskedAndNothingElse) {
    EXPECT_EQ(WithoutTempNames("a .\\ha-1a2F.tmp, ha-.tmp ha-12.txt ha-xyz.tmp ha-0.tmp"),
              "a .\\ha-XXXX.tmp, ha-.tmp ha-12.txt ha-xyz.tmp ha-XXXX.tmp");
}

} // namespace
