// What becomes of a run when the platform fails it. The fixture sees after each test that no file and no handle is
// left.
#include "Runs.h"

using namespace harness;

namespace {

// The result of listing systems into a list that holds "before".
std::string ListSystems(const CVeritasCluster& cluster) {
    Names systems = {L"before"};
    const bool done = cluster.EnumSystemNames(systems);
    return TrueOrFalse(done) + Spaced(systems);
}

const std::string Success = RunLog("hasys -list ", {"I Process exit code: 0", "I Result: NODE1"});
const std::string WithoutOutput = RunLog("hasys -list ", {"I Process exit code: 0"});
const std::string NotStarted = RunLog("hasys -list ", {});

// One failing call
// ---------------------------------------------------------------------------------------------------------------------

// A call of a run that fails. The run's own calls are given where the failure ends it early.
struct FailedRun {
    const char* name;
    const char* call;
    DWORD code;
    std::string result;
    std::string log;
    Texts calls = {};
    unsigned occurrence = 1;
    FaultMode mode = FaultMode::Once;

    friend void PrintTo(const FailedRun& row, std::ostream* out) {
        *out << row.name;
    }
};

FailedRun WithoutName(const char* name, DWORD code) {
    return {name,           "GetTempFileNameW", code,
            "false before", Lines({RunEnter}),  {"GetTempFileNameW(.,ha-,0)=" + std::to_string(code)}};
}

// The capture file of a tool that does not start is not read, only looked at for the log.
FailedRun WithoutTool(const char* name, DWORD code) {
    return {name,
            "CreateProcessW",
            code,
            "false before",
            NotStarted,
            {"GetTempFileNameW(.,ha-,0)", "CreateFileW(.\\ha-XXXX.tmp,c0000000,0,inherited,2,0)",
             "CreateProcessW(hasys -list )=" + std::to_string(code), "CloseHandle(.\\ha-XXXX.tmp)",
             "_wsopen(.\\ha-XXXX.tmp,4080,40)", "_read(4096)", "_close()", "DeleteFileW(.\\ha-XXXX.tmp)"}};
}

FailedRun OfNoMatter(const char* name, const char* call) {
    return {name, call, ERROR_ACCESS_DENIED, "true NODE1", Success};
}

const FailedRun FailedRuns[] = {
    WithoutName("WithoutATemporaryNameOnAFullDiskNothingIsRun", ERROR_DISK_FULL),
    WithoutName("WithoutATemporaryNameInAFolderOfOthersNothingIsRun", ERROR_ACCESS_DENIED),
    WithoutName("WithoutATemporaryNameThatIsNewNothingIsRun", ERROR_FILE_EXISTS),
    WithoutTool("AMissingToolFailsTheRunWithoutAWord", ERROR_FILE_NOT_FOUND),
    WithoutTool("AForbiddenToolFailsTheRunWithoutAWord", ERROR_ACCESS_DENIED),
    WithoutTool("AToolWithoutMemoryFailsTheRunWithoutAWord", ERROR_NOT_ENOUGH_MEMORY),
    {"AnUnreadableExitCodeIsAWarningOnly", "GetExitCodeProcess", ERROR_INVALID_HANDLE, "true NODE1",
     RunLog("hasys -list ", {"W Cannot get process exit code, error code: 6", "I Result: NODE1"})},
    {"AnOutputThatCannotBeReadFailsTheRunAndDumpsNothing",
     "_wsopen",
     ERROR_SHARING_VIOLATION,
     "false before",
     WithoutOutput,
     {},
     1,
     FaultMode::FromThenOn},
    {"AnOutputThatCannotBeReadOnceFailsTheRunAndIsDumped", "_wsopen", ERROR_SHARING_VIOLATION, "false before", Success},
    {"AnOutputThatCannotBeDumpedIsReadAllTheSame",
     "_wsopen",
     ERROR_SHARING_VIOLATION,
     "true NODE1",
     WithoutOutput,
     {},
     2},
    {"AReadErrorEndsTheText", "_read", ERROR_READ_FAULT, "true", Success},
    OfNoMatter("AHandleThatStaysInheritableIsNoMatter", "SetHandleInformation"),
    OfNoMatter("AFailedWaitIsNoMatter", "WaitForSingleObject"),
    OfNoMatter("AHandleThatIsNotClosedIsNoMatter", "CloseHandle"),
    OfNoMatter("AFileThatIsNotClosedIsNoMatter", "_close"),
    OfNoMatter("AFileThatIsNotDeletedIsNoMatter", "DeleteFileW")};

class VeritasFailedRun : public VeritasTest, public ::testing::WithParamInterface<FailedRun> {};

TEST_P(VeritasFailedRun, GivesItsResultAndLogAndLeavesTheNextRunAlone) {
    const FailedRun& row = GetParam();
    tools.Answer(L"hasys -list ", "NODE1\r\n");
    Platform().FailCall(row.call, row.code, row.occurrence, row.mode);
    EXPECT_EQ(ListSystems(cluster), row.result);
    EXPECT_EQ(TakeLog(), row.log);
    const std::string journal = TakeJournal();
    if (!row.calls.empty()) {
        EXPECT_EQ(journal, Lines(row.calls));
    }
    if (row.mode == FaultMode::Once) {
        EXPECT_EQ(ListSystems(cluster), "true NODE1");
        EXPECT_EQ(TakeLog(), Success);
        EXPECT_EQ(Folder().Entries(), Names());
    }
}

INSTANTIATE_TEST_SUITE_P(Failing, VeritasFailedRun, ::testing::ValuesIn(FailedRuns), RowName());

// More than a failing call
// ---------------------------------------------------------------------------------------------------------------------

class VeritasRunnerFailure : public VeritasTest {
protected:
    VeritasRunnerFailure() {
        tools.Answer(L"hasys -list ", "NODE1\r\n");
    }
};

TEST_F(VeritasRunnerFailure, ACurrentDirectoryThatIsGoneFailsTheRun) {
    {
        // Wine and Windows keep the current directory from being removed, but not a name from being unusable.
        const auto patch = PatchImport(kernel32, GetTempFileNameW, [&](LPCWSTR folder, LPCWSTR, UINT, LPWSTR name) {
            return ::GetTempFileNameW((std::wstring(folder) + L"\\gone").c_str(), L"ha-", 0, name);
        });
        EXPECT_EQ(ListSystems(cluster), "false before");
    }
    EXPECT_EQ(TakeLog(), Lines({RunEnter}));
}

TEST_F(VeritasRunnerFailure, WithoutACaptureFileTheToolRunsWithAnEmptyStartUpRecord) {
    for (const DWORD code : {ERROR_DISK_FULL, ERROR_SHARING_VIOLATION}) {
        Platform().FailCall("CreateFileW", code, 1, FaultMode::FromThenOn);
        EXPECT_EQ(ListSystems(cluster), "true");
        ASSERT_EQ(tools.Runs().size(), 1u);
        STARTUPINFOW zero;
        std::memset(&zero, 0, sizeof(zero));
        EXPECT_EQ(std::memcmp(&tools.Runs()[0].startup, &zero, sizeof(zero)), 0);
        EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list "});
        EXPECT_EQ(TakeLog(), WithoutOutput);
        const std::string journal = TakeJournal();
        EXPECT_THAT(journal, ::testing::HasSubstr("CloseHandle(INVALID)"));
        EXPECT_THAT(journal, ::testing::Not(::testing::HasSubstr("SetHandleInformation")));
        EXPECT_THAT(journal, ::testing::HasSubstr("DeleteFileW(.\\ha-XXXX.tmp)\n"));
    }
}

// A capture file that another program has open
// ---------------------------------------------------------------------------------------------------------------------

const char OpenCapture[] = "CreateFileW(.\\ha-XXXX.tmp,c0000000,0,inherited,2,0)";

TEST_F(VeritasRunnerFailure, ACaptureFileThatIsInUseIsTriedAgain) {
    Platform().FailCall("CreateFileW", ERROR_SHARING_VIOLATION, 1);
    Platform().FailCall("CreateFileW", ERROR_SHARING_VIOLATION, 1);
    EXPECT_EQ(ListSystems(cluster), "true NODE1");
    EXPECT_EQ(TakeLog(), Success);
    const std::string open = OpenCapture;
    EXPECT_THAT(TakeJournal(),
                ::testing::StartsWith(Lines({"GetTempFileNameW(.,ha-,0)", open + "=32", "Sleep(50)", open + "=32",
                                             "Sleep(50)", open, "CreateProcessW(hasys -list )"})));
}

TEST_F(VeritasRunnerFailure, ACaptureFileThatStaysInUseIsTriedForASecond) {
    Platform().FailCall("CreateFileW", ERROR_SHARING_VIOLATION, 1, FaultMode::FromThenOn);
    EXPECT_EQ(ListSystems(cluster), "true");
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(20, 50));
    EXPECT_EQ(Platform().CountCalls("CreateFileW("), 21u);
    EXPECT_EQ(TakeLog(), WithoutOutput);
}

TEST_F(VeritasRunnerFailure, OnlyASharingViolationIsTriedAgain) {
    for (const DWORD code : {ERROR_ACCESS_DENIED, ERROR_LOCK_VIOLATION, ERROR_DISK_FULL, ERROR_PATH_NOT_FOUND}) {
        Platform().FailCall("CreateFileW", code);
        EXPECT_EQ(ListSystems(cluster), "true");
        EXPECT_EQ(Platform().CountCalls("CreateFileW("), 1u) << code;
        Forget();
    }
    EXPECT_TRUE(Platform().sleeps.empty());
}

// Another program, a scanner say, that opens each temporary file as soon as it is there, sharing it with all.
class SecondHandle {
public:
    ~SecondHandle() {
        Close();
    }
    void Close() {
        if (m_file != INVALID_HANDLE_VALUE) {
            CloseHandle(m_file);
            m_file = INVALID_HANDLE_VALUE;
        }
    }

private:
    HANDLE m_file = INVALID_HANDLE_VALUE;
    ImportPatch<UINT(LPCWSTR, LPCWSTR, UINT, LPWSTR), SecondHandle> m_patch{
        FindImports(LibraryModule(), "kernel32.dll", "GetTempFileNameW"),
        [this](LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR name) {
            const UINT result = m_patch.Next(folder, prefix, unique, name);
            m_file = CreateFileW(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, 0, nullptr);
            EXPECT_NE(m_file, INVALID_HANDLE_VALUE);
            return result;
        }};
};

TEST_F(VeritasRunnerFailure, TheOutputIsThereWhenAScannerLetsGoOfTheFile) {
    SecondHandle scanner;
    Platform().onSleep = [&](DWORD) {
        if (Platform().sleeps.size() == 3) {
            scanner.Close();
        }
    };
    EXPECT_EQ(ListSystems(cluster), "true NODE1");
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(3, 50));
    EXPECT_EQ(TakeLog(), Success);
    EXPECT_EQ(Folder().Entries(), Names());
}

TEST_F(VeritasRunnerFailure, TheToolRunsWithoutRedirectionWhenAScannerKeepsTheFile) {
    SecondHandle scanner;
    EXPECT_EQ(ListSystems(cluster), "true");
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(20, 50));
    EXPECT_EQ(TakeLog(), WithoutOutput);
    ASSERT_EQ(tools.Runs().size(), 1u);
    EXPECT_EQ(tools.Runs()[0].startup.dwFlags, 0u);
}

TEST_F(VeritasRunnerFailure, WithoutCaptureFileAndToolTheResultIsThatOfTheStart) {
    Platform().FailCall("CreateFileW", ERROR_DISK_FULL);
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ListSystems(cluster), "false before");
    EXPECT_EQ(TakeLog(), NotStarted);
}

TEST_F(VeritasRunnerFailure, ANullCaptureHandleSkipsTheToolAndReadsTheEmptyFile) {
    {
        const auto patch = PatchImport(
            kernel32, CreateFileW,
            [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) -> HANDLE { return nullptr; });
        EXPECT_EQ(ListSystems(cluster), "true");
    }
    EXPECT_EQ(tools.TakeCommandLines(), CommandList());
    EXPECT_EQ(TakeLog(), NotStarted);
    EXPECT_THAT(TakeJournal(), ::testing::Not(::testing::HasSubstr("CloseHandle")));
}

TEST_F(VeritasRunnerFailure, AStartThatFailsWithoutAReasonCountsAsSuccessWithoutOutput) {
    tools.FailStart(1, ERROR_SUCCESS);
    EXPECT_EQ(ListSystems(cluster), "true");
    EXPECT_EQ(TakeLog(), NotStarted);
    tools.FailStart(1, ERROR_SUCCESS);
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
}

TEST_F(VeritasRunnerFailure, AnOldLastErrorIsNotTakenForTheReason) {
    tools.FailStart(1, ERROR_SUCCESS);
    SetLastError(ImpossibleCode);
    EXPECT_EQ(ListSystems(cluster), "true");
}

TEST_F(VeritasRunnerFailure, EveryFailureLeavesTheNextRunAlone) {
    for (const char* call :
         {"GetTempFileNameW", "CreateFileW", "CreateProcessW", "SetHandleInformation", "WaitForSingleObject",
          "GetExitCodeProcess", "CloseHandle", "_wsopen", "_read", "_close", "DeleteFileW"}) {
        Platform().FailCall(call, ERROR_ACCESS_DENIED);
        ListSystems(cluster);
        Forget();
        EXPECT_EQ(ListSystems(cluster), "true NODE1") << call;
        EXPECT_EQ(TakeLog(), Success) << call;
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
