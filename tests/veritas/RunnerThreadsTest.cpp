// Runs on several threads at once: each gets its own output, and no tool holds the capture file of another run.
#include "RealTools.h"
#include "Runs.h"

#include <atomic>
#include <thread>

using namespace harness;

namespace {

using VeritasRunnerThreads = RealToolTest;

// Until a call is in the journal that often.
void AwaitCalls(const PlatformTap& platform, const std::string& call, std::size_t count) {
    for (int turn = 0; platform.CountCalls(call) < count; ++turn) {
        ASSERT_LT(turn, 3000) << call;
        Sleep(10);
    }
}

TEST_F(VeritasRunnerThreads, EightThreadsGetTheirOwnOutputsAndLeaveNoFile) {
    const int threadCount = 8;
    const int runCount = 8;
    Act(L"args;out:end\\x0a");
    std::atomic<int> failed{0};
    std::atomic<int> wrong{0};
    std::atomic<int> waiting{threadCount};
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([&, number] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            for (int run = 0; run < runCount; ++run) {
                const std::wstring name = std::to_wstring(number) + L"-" + std::to_wstring(run);
                const NameValuePairList filter = {{L"Name", name}};
                Names tokens;
                if (!cluster.EnumSystemNames(tokens, &filter)) {
                    ++failed;
                } else if (tokens != Names{L"hasys", L"-list", L"Name=" + name, L"end"}) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Platform().CountCalls("DeleteFileW(.\\ha-XXXX.tmp)\n"), std::size_t(threadCount * runCount));
    EXPECT_EQ(Folder().Entries(), Names());
    const std::string log = TakeLog();
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("\nW ")));
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("\nE ")));
}

TEST_F(VeritasRunnerThreads, ALongRunThatBeginsDuringAnotherDoesNotHoldItsCaptureFile) {
    const NamedEvent shortMayEnd(L"short");
    const NamedEvent longRuns(L"long-runs");
    const NamedEvent longMayEnd(L"long");
    Act(L"out:S\\x0a;wait:" + shortMayEnd.Name(), L"short");
    Act(L"out:L\\x0a;set:" + longRuns.Name() + L";wait:" + longMayEnd.Name(), L"long");
    Names shortTokens;
    Names longTokens;
    bool shortDone = false;
    bool longDone = false;
    std::thread shortRun([&] { shortDone = RunOf(L"short", shortTokens); });
    AwaitCalls(Platform(), "SetHandleInformation(", 1);
    std::thread longRun([&] { longDone = RunOf(L"long", longTokens); });
    EXPECT_TRUE(longRuns.Wait(30000));
    shortMayEnd.Set();
    shortRun.join();
    EXPECT_EQ(Platform().CountCalls("DeleteFileW(.\\ha-XXXX.tmp)\n"), 1u) << "the file could not be deleted";
    EXPECT_EQ(Folder().Entries().size(), 1u); // that of the long run
    EXPECT_EQ(Platform().LiveChildren(), 1u);
    longMayEnd.Set();
    longRun.join();
    EXPECT_TRUE(shortDone);
    EXPECT_TRUE(longDone);
    EXPECT_EQ(shortTokens, Names{L"S"});
    EXPECT_EQ(longTokens, Names{L"L"});
}

// What the test above is able to see: with a handle that stays inheritable the long tool holds the other file.
TEST_F(VeritasRunnerThreads, ACaptureHandleThatStaysInheritableWouldBeHeldByTheOtherTool) {
    const NamedEvent shortMayEnd(L"short");
    const NamedEvent longRuns(L"long-runs");
    const NamedEvent longMayEnd(L"long");
    Act(L"out:S\\x0a;wait:" + shortMayEnd.Name(), L"short");
    Act(L"set:" + longRuns.Name() + L";wait:" + longMayEnd.Name(), L"long");
    Platform().FailCall("SetHandleInformation", ERROR_ACCESS_DENIED);
    Names shortTokens;
    Names longTokens;
    bool shortDone = true;
    std::thread shortRun([&] { shortDone = RunOf(L"short", shortTokens); });
    AwaitCalls(Platform(), "SetHandleInformation(", 1);
    std::thread longRun([&] { RunOf(L"long", longTokens); });
    EXPECT_TRUE(longRuns.Wait(30000));
    shortMayEnd.Set();
    shortRun.join();
    EXPECT_FALSE(shortDone);
    longMayEnd.Set();
    longRun.join();
    for (const std::wstring& entry : Folder().Entries()) {
        DeleteFileW(entry.c_str());
    }
}

TEST_F(VeritasRunnerThreads, NoCaptureFileIsOpenedWhileAnotherRunStarts) {
    const NamedEvent longMayEnd(L"long");
    Act(L"out:S\\x0a", L"short");
    Act(L"out:L\\x0a;wait:" + longMayEnd.Name(), L"long");
    std::thread longRun;
    Names longTokens;
    std::size_t opened = 0;
    starter.beforeStart = [&](const std::wstring& commandLine) {
        if (commandLine.find(L"Id=short") == std::wstring::npos) {
            return;
        }
        // The capture file of this run is open and inheritable now.
        longRun = std::thread([&] { RunOf(L"long", longTokens); });
        AwaitCalls(Platform(), "GetTempFileNameW(", 2);
        Sleep(300);
        opened = Platform().CountCalls("CreateFileW(");
    };
    Names shortTokens;
    EXPECT_TRUE(RunOf(L"short", shortTokens));
    EXPECT_EQ(opened, 1u);
    EXPECT_EQ(Platform().CountCalls("DeleteFileW(.\\ha-XXXX.tmp)\n"), 1u);
    longMayEnd.Set();
    longRun.join();
    EXPECT_EQ(shortTokens, Names{L"S"});
    EXPECT_EQ(longTokens, Names{L"L"});
}

TEST_F(VeritasRunnerThreads, TheCaptureFileOfARunThatFailsToStartIsNotHeldByAnother) {
    const NamedEvent longRuns(L"long-runs");
    const NamedEvent longMayEnd(L"long");
    Act(L"set:" + longRuns.Name() + L";wait:" + longMayEnd.Name(), L"long");
    Platform().FailCall("CreateProcessW", ERROR_FILE_NOT_FOUND);
    std::thread longRun;
    Names longTokens;
    bool longBegan = false;
    {
        ImportPatch<BOOL(HANDLE), struct CloseCaptureTag>* self = nullptr;
        ImportPatch<BOOL(HANDLE), struct CloseCaptureTag> patch(
            FindImports(LibraryModule(), "kernel32.dll", "CloseHandle"), [&](HANDLE handle) {
                if (!longBegan) {
                    // The capture file of the failed run is still open: another run begins, if it may.
                    longBegan = true;
                    longRun = std::thread([&] { RunOf(L"long", longTokens); });
                    longRuns.Wait(1000);
                }
                return self->Next(handle);
            });
        self = &patch;
        Names tokens;
        EXPECT_FALSE(RunOf(L"short", tokens));
        EXPECT_TRUE(longRuns.Wait(30000));
        EXPECT_EQ(Folder().Entries().size(), 1u) << "only the long run has a file";
        longMayEnd.Set();
        longRun.join();
    }
    for (const std::wstring& entry : Folder().Entries()) {
        DeleteFileW(entry.c_str());
    }
}

TEST_F(VeritasRunnerThreads, ARunThatFailsToStartLetsTheOthersStart) {
    for (const char* call : {"CreateFileW", "CreateProcessW"}) {
        Platform().FailCall(call, ERROR_ACCESS_DENIED);
        Act(L"");
        Names tokens;
        cluster.EnumSystemNames(tokens);
        Act(L"out:A\\x0a");
        std::thread other([&] { EXPECT_EQ(Systems(cluster), Names{L"A"}); });
        other.join();
    }
}

} // namespace
