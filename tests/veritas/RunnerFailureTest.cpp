// What becomes of a run when the platform fails it. The fixture sees after each test that no file and no handle is
// left.
#include "RunnerFixture.h"

using namespace harness;

namespace {

class VeritasRunnerFailure : public RunnerTest {
protected:
    VeritasRunnerFailure() {
        tools.Answer(L"hasys -list ", "NODE1\r\n");
    }

    // The result of listing systems into a list that holds "before".
    std::string Listed() {
        Names systems = {L"before"};
        const bool done = cluster.EnumSystemNames(systems);
        std::string text = done ? "true" : "false";
        for (const std::wstring& system : systems) {
            text += " " + Utf8(system);
        }
        return text;
    }

    const std::string success = RunLog("hasys -list ", {"I Process exit code: 0", "I Result: NODE1"});
};

TEST_F(VeritasRunnerFailure, WithoutATemporaryNameNothingIsRunAndOnlyTheEntryIsLogged) {
    for (const DWORD code : {ERROR_DISK_FULL, ERROR_ACCESS_DENIED, ERROR_FILE_EXISTS}) {
        Platform().FailCall("GetTempFileNameW", code);
        EXPECT_EQ(Listed(), "false before");
        EXPECT_EQ(TakeLog(), Lines({RunEnter}));
        EXPECT_EQ(TakeJournal(), Lines({"GetTempFileNameW(.,ha-,0)=" + std::to_string(code)}));
    }
}

TEST_F(VeritasRunnerFailure, ACurrentDirectoryThatIsGoneFailsTheRun) {
    {
        // Wine and Windows keep the current directory from being removed, but not a name from being unusable.
        const auto patch = PatchImport(kernel32, GetTempFileNameW, [&](LPCWSTR folder, LPCWSTR, UINT, LPWSTR name) {
            return ::GetTempFileNameW((std::wstring(folder) + L"\\gone").c_str(), L"ha-", 0, name);
        });
        EXPECT_EQ(Listed(), "false before");
    }
    EXPECT_EQ(TakeLog(), Lines({RunEnter}));
}

TEST_F(VeritasRunnerFailure, WithoutACaptureFileTheToolRunsWithAnEmptyStartUpRecord) {
    for (const DWORD code : {ERROR_DISK_FULL, ERROR_SHARING_VIOLATION}) {
        Platform().FailCall("CreateFileW", code);
        EXPECT_EQ(Listed(), "true");
        ASSERT_EQ(tools.Runs().size(), 1u);
        STARTUPINFOW zero;
        std::memset(&zero, 0, sizeof(zero));
        EXPECT_EQ(std::memcmp(&tools.Runs()[0].startup, &zero, sizeof(zero)), 0);
        EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list "});
        EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0"}));
        const std::string journal = TakeJournal();
        EXPECT_THAT(journal, ::testing::HasSubstr("CloseHandle(INVALID)"));
        EXPECT_THAT(journal, ::testing::Not(::testing::HasSubstr("SetHandleInformation")));
        EXPECT_THAT(journal, ::testing::HasSubstr("DeleteFileW(.\\ha-XXXX.tmp)\n"));
    }
}

TEST_F(VeritasRunnerFailure, WithoutCaptureFileAndToolTheResultIsThatOfTheStart) {
    Platform().FailCall("CreateFileW", ERROR_DISK_FULL);
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Listed(), "false before");
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {}));
}

TEST_F(VeritasRunnerFailure, ANullCaptureHandleSkipsTheToolAndReadsTheEmptyFile) {
    {
        const auto patch = PatchImport(
            kernel32, CreateFileW,
            [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) -> HANDLE { return nullptr; });
        EXPECT_EQ(Listed(), "true");
    }
    EXPECT_EQ(tools.TakeCommandLines(), CommandList());
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {}));
    EXPECT_THAT(TakeJournal(), ::testing::Not(::testing::HasSubstr("CloseHandle")));
}

TEST_F(VeritasRunnerFailure, AToolThatCannotBeStartedFailsTheRunWithoutAWord) {
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY}) {
        tools.FailStart(1, code);
        EXPECT_EQ(Listed(), "false before");
        EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {}));
        // The capture file is not read, only looked at for the log.
        EXPECT_EQ(TakeJournal(),
                  Lines({"GetTempFileNameW(.,ha-,0)", "CreateFileW(.\\ha-XXXX.tmp,c0000000,0,inherited,2,0)",
                         "CreateProcessW(hasys -list )=" + std::to_string(code), "CloseHandle(.\\ha-XXXX.tmp)",
                         "_wsopen(.\\ha-XXXX.tmp,4080,40)", "_read(4096)", "_close()", "DeleteFileW(.\\ha-XXXX.tmp)"}));
    }
}

TEST_F(VeritasRunnerFailure, AStartThatFailsWithoutAReasonCountsAsSuccessWithoutOutput) {
    tools.FailStart(1, ERROR_SUCCESS);
    EXPECT_EQ(Listed(), "true");
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {}));
    tools.FailStart(1, ERROR_SUCCESS);
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
}

TEST_F(VeritasRunnerFailure, AnOldLastErrorIsNotTakenForTheReason) {
    tools.FailStart(1, ERROR_SUCCESS);
    SetLastError(ImpossibleCode);
    EXPECT_EQ(Listed(), "true");
}

TEST_F(VeritasRunnerFailure, AnUnreadableExitCodeIsAWarningOnly) {
    Platform().FailCall("GetExitCodeProcess", ERROR_INVALID_HANDLE);
    EXPECT_EQ(Listed(), "true NODE1");
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"W Cannot get process exit code, error code: 6", "I Result: NODE1"}));
}

TEST_F(VeritasRunnerFailure, AnOutputThatCannotBeReadFailsTheRunAndDumpsNothing) {
    Platform().FailCall("_wsopen", ERROR_SHARING_VIOLATION, 1, FaultMode::FromThenOn);
    EXPECT_EQ(Listed(), "false before");
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0"}));
}

TEST_F(VeritasRunnerFailure, ReadingAndDumpingFailIndependently) {
    Platform().FailCall("_wsopen", ERROR_SHARING_VIOLATION, 1);
    EXPECT_EQ(Listed(), "false before");
    EXPECT_EQ(TakeLog(), success);
    Platform().FailCall("_wsopen", ERROR_SHARING_VIOLATION, 2);
    EXPECT_EQ(Listed(), "true NODE1");
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0"}));
}

TEST_F(VeritasRunnerFailure, AReadErrorEndsTheText) {
    Platform().FailCall("_read", ERROR_READ_FAULT);
    EXPECT_EQ(Listed(), "true");
    EXPECT_EQ(TakeLog(), success);
}

TEST_F(VeritasRunnerFailure, CallsWhoseResultIsNoMatterMayFail) {
    for (const char* call : {"SetHandleInformation", "WaitForSingleObject", "CloseHandle", "_close", "DeleteFileW"}) {
        Platform().FailCall(call, ERROR_ACCESS_DENIED);
        EXPECT_EQ(Listed(), "true NODE1") << call;
        EXPECT_EQ(TakeLog(), success) << call;
    }
}

TEST_F(VeritasRunnerFailure, EveryFailureLeavesTheNextRunAlone) {
    for (const char* call :
         {"GetTempFileNameW", "CreateFileW", "CreateProcessW", "SetHandleInformation", "WaitForSingleObject",
          "GetExitCodeProcess", "CloseHandle", "_wsopen", "_read", "_close", "DeleteFileW"}) {
        Platform().FailCall(call, ERROR_ACCESS_DENIED);
        Listed();
        Forget();
        EXPECT_EQ(Listed(), "true NODE1") << call;
        EXPECT_EQ(TakeLog(), success) << call;
        EXPECT_EQ(Folder().Entries(), Names()) << call;
    }
}

TEST_F(VeritasRunnerFailure, TheLastErrorSaysWhyAToolCouldNotBeStarted) {
    const auto patch = PatchImport(kernel32, DeleteFileW, [](LPCWSTR name) {
        const BOOL deleted = ::DeleteFileW(name);
        SetLastError(ImpossibleCode);
        return deleted;
    });
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED}) {
        tools.FailStart(1, code);
        EXPECT_FALSE(cluster.SwitchToReadWriteMode());
        EXPECT_EQ(GetLastError(), code);
        tools.FailStart(1, code);
        std::wstring encrypted;
        EXPECT_FALSE(cluster.EncryptVeritasPassword(L"p", encrypted));
        EXPECT_EQ(GetLastError(), code);
    }
}

} // namespace
