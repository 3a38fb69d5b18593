// The command runner with scripted tools: what is asked of the platform, and what is logged.
#include "Runs.h"

using namespace harness;

namespace {

using VeritasRunner = VeritasTest;

// Start --------------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunner, ACommandWithoutArgumentsEndsInOneBlank) {
    tools.AnswerPrefix(L"", "");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_TRUE(cluster.SwitchToReadOnlyMode());
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"haconf -makerw ", L"haconf -dump -makero "}));
}

TEST_F(VeritasRunner, TheStartUpRecordHidesTheToolAndGivesItOneFileForBothOutputsAndNoInput) {
    tools.AnswerNext("");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    ASSERT_EQ(tools.Runs().size(), 1u);
    STARTUPINFOW expected;
    std::memset(&expected, 0, sizeof(expected));
    expected.cb = sizeof(STARTUPINFOW);
    expected.dwFlags = 0x101;
    expected.wShowWindow = 0;
    expected.hStdInput = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x00000000FFFFFFF6));
    expected.hStdOutput = tools.Runs()[0].startup.hStdOutput;
    expected.hStdError = expected.hStdOutput;
    EXPECT_NE(expected.hStdOutput, nullptr);
    EXPECT_NE(expected.hStdOutput, INVALID_HANDLE_VALUE);
    EXPECT_EQ(std::memcmp(&tools.Runs()[0].startup, &expected, sizeof(expected)), 0);
}

TEST_F(VeritasRunner, TheToolIsFoundByItsCommandLineAndInheritsHandlesEnvironmentAndDirectory) {
    tools.AnswerNext("");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    ASSERT_EQ(tools.Runs().size(), 1u);
    const CreateProcessArguments& arguments = tools.Runs()[0].arguments;
    EXPECT_EQ(arguments.application, nullptr);
    EXPECT_EQ(arguments.processAttributes, nullptr);
    EXPECT_EQ(arguments.threadAttributes, nullptr);
    EXPECT_EQ(arguments.inheritHandles, TRUE);
    EXPECT_EQ(arguments.flags, 0u);
    EXPECT_EQ(arguments.environment, nullptr);
    EXPECT_EQ(arguments.directory, nullptr);
    EXPECT_EQ(tools.Runs()[0].outputFlags, DWORD(HANDLE_FLAG_INHERIT));
}

TEST_F(VeritasRunner, ThePlatformMayWriteIntoTheWholeCommandLineBuffer) {
    tools.AnswerNext("");
    const auto patch = PatchImport(kernel32, CreateProcessW,
                                   [&](LPCWSTR, LPWSTR line, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                                       LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION information) -> BOOL {
                                       EXPECT_EQ(information->hProcess, nullptr);
                                       EXPECT_EQ(information->hThread, nullptr);
                                       const std::wstring text = L"haconf -makerw ";
                                       EXPECT_EQ(line, text);
                                       // Zero to its end.
                                       EXPECT_EQ(std::wstring(line + text.size(), 16384 - text.size()),
                                                 std::wstring(16384 - text.size(), L'\0'));
                                       std::wmemset(line, L'x', 16384);
                                       SetLastError(ERROR_FILE_NOT_FOUND);
                                       return FALSE;
                                   });
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
}

TEST_F(VeritasRunner, TheCaptureFileIsCreatedAnewUnsharedAndInheritable) {
    tools.AnswerNext("");
    std::wstring capture;
    ImportPatch<std::remove_pointer_t<decltype(&CreateFileW)>, struct CaptureFileTag>* self = nullptr;
    ImportPatch<std::remove_pointer_t<decltype(&CreateFileW)>, struct CaptureFileTag> patch(
        FindImports(LibraryModule(), "kernel32.dll", "CreateFileW"),
        [&](LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
            HANDLE model) {
            capture = name;
            EXPECT_EQ(access, DWORD(GENERIC_READ | GENERIC_WRITE));
            EXPECT_EQ(share, 0u);
            EXPECT_EQ(security->nLength, sizeof(SECURITY_ATTRIBUTES));
            EXPECT_EQ(security->lpSecurityDescriptor, nullptr);
            EXPECT_EQ(security->bInheritHandle, TRUE);
            EXPECT_EQ(disposition, DWORD(CREATE_ALWAYS));
            EXPECT_EQ(flags, 0u);
            EXPECT_EQ(model, nullptr);
            // The platform chose the name and made the file already.
            EXPECT_EQ(Folder().Entries(), Names{capture.substr(2)});
            return self->Next(name, access, share, security, disposition, flags, model);
        });
    self = &patch;
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(capture.rfind(L".\\ha-", 0), 0u) << Utf8(capture);
    EXPECT_THAT(LibraryTest::TakeLog(), ::testing::HasSubstr("I temp file name: " + Utf8(capture) + "\n"));
}

TEST_F(VeritasRunner, EachRunHasACaptureFileOfItsOwn) {
    tools.AnswerPrefix(L"", "");
    std::vector<Names> files;
    tools.onRun = [&](const ToolRun& run) {
        if (run.commandLine == L"haconf -makerw ") {
            files.push_back(Folder().Entries());
            EXPECT_TRUE(CVeritasCluster().SwitchToReadOnlyMode());
        } else {
            files.push_back(Folder().Entries());
        }
    };
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].size(), 1u);
    EXPECT_EQ(files[1].size(), 2u);
}

TEST_F(VeritasRunner, TheCallsFollowOneAnother) {
    tools.AnswerNext("A\r\nB\r\n");
    EXPECT_EQ(Systems(cluster), (Names{L"A", L"B"}));
    EXPECT_EQ(TakeJournal(),
              Lines({"GetTempFileNameW(.,ha-,0)", "CreateFileW(.\\ha-XXXX.tmp,c0000000,0,inherited,2,0)",
                     "CreateProcessW(hasys -list )", "SetHandleInformation(.\\ha-XXXX.tmp,1,0)",
                     "WaitForSingleObject(process,INFINITE)", "GetExitCodeProcess(process)", "CloseHandle(process)",
                     "CloseHandle(thread)", "CloseHandle(.\\ha-XXXX.tmp)",
                     // Opened for reading, in text mode, not inheritable, shared with all: once to read, once to log.
                     "_wsopen(.\\ha-XXXX.tmp,4080,40)", "_read(4096)", "_read(4096)", "_close()",
                     "_wsopen(.\\ha-XXXX.tmp,4080,40)", "_read(4096)", "_read(4096)", "_close()",
                     "DeleteFileW(.\\ha-XXXX.tmp)"}));
}

// Log ----------------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunner, ARunIsLoggedFromItsFileNameToItsOutput) {
    tools.AnswerNext("NODE1\r\n\r\n  NODE2 up\r\nlast");
    EXPECT_EQ(Systems(cluster), (Names{L"NODE1", L"NODE2", L"up", L"last"}));
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0", "I Result: NODE1",
                                                 "I Result: ", "I Result:   NODE2 up", "I Result: last"}));
}

TEST_F(VeritasRunner, LinesOfTheRunCarryTheirSourceTagAndLevels) {
    tools.AnswerNext("NODE1\r\n");
    Systems(cluster);
    std::vector<unsigned> levels;
    for (const LogLine& line : Log().Entries()) {
        EXPECT_EQ(line.sourceTag, ".\\clus_VeritasCluster.cpp");
        levels.push_back(line.level);
    }
    EXPECT_EQ(levels, (std::vector<unsigned>{0x110, 0x102, 0x102, 0x102, 0x102, 0x111}));
}

TEST_F(VeritasRunner, AnExitCodeIsOnlyLogged) {
    for (const DWORD exitCode : {0ul, 1ul, 255ul, 0x7ffffffful, 0xc0000005ul}) {
        tools.AnswerNext("NODE1\n", exitCode);
        EXPECT_EQ(Systems(cluster), Names{L"NODE1"});
        EXPECT_EQ(TakeLog(),
                  RunLog("hasys -list ",
                         {"I Process exit code: " + std::to_string(static_cast<int>(exitCode)), "I Result: NODE1"}));
    }
}

TEST_F(VeritasRunner, AnEmptyOutputIsASuccessWithoutTokens) {
    tools.AnswerNext("");
    EXPECT_EQ(Systems(cluster), Names());
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0"}));
}

TEST_F(VeritasRunner, FormatCharactersInCommandAndOutputAreText) {
    const NameValuePairList filter = {{L"%s%n", L"100%d"}};
    tools.AnswerNext("%s %n %d%%\n");
    EXPECT_EQ(Systems(cluster, &filter), (Names{L"%s", L"%n", L"%d%%"}));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list  %s%n=100%d "});
    EXPECT_EQ(TakeLog(), RunLog("hasys -list  %s%n=100%d ", {"I Process exit code: 0", "I Result: %s %n %d%%"}));
}

TEST_F(VeritasRunner, EveryConditionStandsBetweenItsOwnBlanks) {
    const NameValuePairList filter = {{L"Type", L"Lanman"}, {L"Group", L"G1"}, {L"", L""}, {L"A", L"x \"y\""}};
    tools.AnswerNext("");
    Systems(cluster, &filter);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list  Type=Lanman  Group=G1  =  A=x \"y\" "});
}

// Secrets ------------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunner, AnEncryptionLogsStarsAndTheFileName) {
    tools.Answer(L"vcsencrypt -agent Pa55-word", "gPiRcLrUtq\r\n");
    std::wstring encrypted;
    EXPECT_TRUE(cluster.EncryptVeritasPassword(L"Pa55-word", encrypted));
    EXPECT_EQ(encrypted, L"gPiRcLrUtq");
    EXPECT_EQ(TakeLog(), Lines({RunEnter, RunTempFile, "I Command line is ***", "I Process exit code: 0",
                                "I Result: ***", RunLeave}));
    // The output is not read a second time.
    const std::string journal = TakeJournal();
    EXPECT_EQ(journal.find("_wsopen"), journal.rfind("_wsopen"));
}

TEST_F(VeritasRunner, NoLineOfAnEncryptionHoldsThePasswordOrItsResultWhateverFails) {
    tools.Answer(L"vcsencrypt -agent Pa55-word", "gPiRcLrUtq\r\n");
    for (const char* call :
         {"nothing", "GetTempFileNameW", "CreateFileW", "CreateProcessW", "SetHandleInformation", "WaitForSingleObject",
          "GetExitCodeProcess", "CloseHandle", "_wsopen", "_read", "_close", "DeleteFileW"}) {
        Platform().FailCall(call, ERROR_ACCESS_DENIED);
        std::wstring encrypted;
        cluster.EncryptVeritasPassword(L"Pa55-word", encrypted);
        const std::string log = TakeLog();
        EXPECT_THAT(log, ::testing::StartsWith(RunEnter)) << call;
        EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("Pa55"))) << call;
        EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("gPiRcLrUtq"))) << call;
    }
}

TEST_F(VeritasRunner, AnEncryptionThatCannotBeStartedLogsStarsOnly) {
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    std::wstring encrypted = L"before";
    EXPECT_FALSE(cluster.EncryptVeritasPassword(L"Pa55-word", encrypted));
    EXPECT_EQ(encrypted, L"before");
    EXPECT_EQ(TakeLog(), Lines({RunEnter, RunTempFile, "I Command line is ***", "I Result: ***", RunLeave}));
}

TEST_F(VeritasRunner, LeavesWhenTheFileIsGone) {
    tools.AnswerNext("");
    std::string before;
    {
        const auto patch = PatchImport(kernel32, DeleteFileW, [&](LPCWSTR name) {
            before = TakeLog();
            return ::DeleteFileW(name);
        });
        EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    }
    EXPECT_EQ(before + TakeLog(), RunLog("haconf -makerw ", {"I Process exit code: 0"}));
    EXPECT_THAT(before, ::testing::EndsWith("I Process exit code: 0\n"));
}

} // namespace
