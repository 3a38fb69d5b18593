#include "LogWriterProcess.h"
#include "DebugLog.h"
#include "ImportPatch.h"
#include "OpenHandles.h"

#include <algorithm>
#include <set>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

namespace {

const wchar_t File[] = L"CLUSUTIL_LOG_FILE";
const wchar_t Level[] = L"CLUSUTIL_LOG_LEVEL";

// The texts of log lines, without the part before ": ".
std::vector<std::string> TextsOf(const std::vector<std::string>& lines) {
    std::vector<std::string> texts;
    for (const std::string& line : lines) {
        texts.push_back(line.substr(std::min(line.size(), line.find("): ") + 3)));
    }
    return texts;
}

// A registry key of the current user that plays HKEY_LOCAL_MACHINE in a child.
class MachineKey {
public:
    MachineKey() : m_name(L"Software\\clusutil_support_test_" + std::to_wstring(GetCurrentProcessId())) {
        RegCreateKeyExW(HKEY_CURRENT_USER, (m_name + L"\\SOFTWARE\\clusutil\\DebugLog").c_str(), 0, nullptr, 0,
                        KEY_ALL_ACCESS, nullptr, &m_key, nullptr);
    }
    ~MachineKey() {
        RegCloseKey(m_key);
        for (const wchar_t* below : {L"\\SOFTWARE\\clusutil\\DebugLog", L"\\SOFTWARE\\clusutil", L"\\SOFTWARE", L""}) {
            RegDeleteKeyW(HKEY_CURRENT_USER, (m_name + below).c_str());
        }
    }
    MachineKey(const MachineKey&) = delete;
    MachineKey& operator=(const MachineKey&) = delete;

    void Set(const wchar_t* name, const std::wstring& value, DWORD type = REG_SZ) {
        ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(m_key, name, 0, type, reinterpret_cast<const BYTE*>(value.c_str()),
                                                static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))));
    }
    std::wstring Command() const {
        return L"registry " + m_name;
    }

private:
    std::wstring m_name;
    HKEY m_key = nullptr;
};

} // namespace

TEST(DebugLog, WritesErrorsAndWarningsToTheDebuggerByDefault) {
    const ChildResult child = RunLogWriter(L"levels", {});
    EXPECT_EQ(0u, child.exitCode);
    EXPECT_THAT(TextsOf(child.debugLines), ElementsAre("level error", "level warning"));
}

TEST(DebugLog, WritesEverythingToANamedFileAndNothingToTheDebugger) {
    const TemporaryFile file;
    const ChildResult child = RunLogWriter(L"levels", {{File, file.Path()}});
    EXPECT_THAT(child.debugLines, IsEmpty());
    EXPECT_THAT(TextsOf(file.Lines()),
                ElementsAre("level entry", "level leaving", "level information", "level error", "level warning"));
}

TEST(DebugLog, PutsTimeProcessThreadLevelModuleSourceAndLineInFront) {
    const TemporaryFile file;
    RunLogWriter(L"levels", {{File, file.Path()}});
    const std::vector<std::string> lines = file.Lines();
    ASSERT_THAT(lines, SizeIs(5));
    const char* const words[] = {"ENTER", "LEAVE", "INFO", "ERROR", "WARNING"};
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_THAT(lines[i], MatchesRegex("\\d\\d\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d \\d+ \\d+ \\w+ "
                                           "log_writer\\.exe Writer\\.cpp\\(7\\): level \\w+"));
        EXPECT_THAT(lines[i], HasSubstr(std::string(" ") + words[i] + " "));
    }
}

TEST(DebugLog, LetsThroughTheLevelsThatTheVariableNames) {
    const struct {
        const wchar_t* word;
        size_t count;
    } cases[] = {{L"off", 0}, {L"error", 1},   {L"warning", 2}, {L"info", 3},
                 {L"all", 5}, {L"WARNING", 2}, {L"nonsense", 5}};
    for (const auto& c : cases) {
        const TemporaryFile file;
        RunLogWriter(L"levels", {{File, file.Path()}, {Level, c.word}});
        EXPECT_THAT(file.Lines(), SizeIs(c.count)) << c.word;
    }
}

TEST(DebugLog, AppliesTheLevelToTheDebuggerChannelToo) {
    EXPECT_THAT(RunLogWriter(L"levels", {{Level, L"all"}}).debugLines, SizeIs(5));
    EXPECT_THAT(RunLogWriter(L"levels", {{Level, L"off"}}).debugLines, IsEmpty());
    EXPECT_THAT(TextsOf(RunLogWriter(L"levels", {{Level, L"error"}}).debugLines), ElementsAre("level error"));
}

TEST(DebugLog, AppendsToAnExistingFile) {
    const TemporaryFile file;
    RunLogWriter(L"levels", {{File, file.Path()}, {Level, L"error"}});
    RunLogWriter(L"levels", {{File, file.Path()}, {Level, L"error"}});
    EXPECT_THAT(file.Lines(), SizeIs(2));
}

TEST(DebugLog, KeepsEveryLineWholeWhenTwoProcessesShareAFile) {
    const TemporaryFile file;
    const int count = 1000;
    const std::wstring id = std::to_wstring(GetCurrentProcessId());
    const std::wstring readyName = L"clusutil_support_ready_" + id;
    const std::wstring goName = L"clusutil_support_go_" + id;
    const HANDLE ready = CreateSemaphoreW(nullptr, 0, 2, readyName.c_str());
    const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, goName.c_str());
    std::unique_ptr<harness::ChildProcess> processes[2];
    for (int i = 0; i < 2; ++i) {
        processes[i] = StartLogWriter((i == 0 ? L"many A " : L"many B ") + std::to_wstring(count) + L" " + readyName +
                                          L" " + goName,
                                      {{File, file.Path()}});
        ASSERT_NE(nullptr, processes[i]->get());
        ASSERT_EQ(static_cast<DWORD>(WAIT_OBJECT_0), WaitForSingleObject(ready, 30000));
    }
    SetEvent(go);
    for (const auto& process : processes) {
        EXPECT_EQ(0u, process->Wait());
    }
    CloseHandle(ready);
    CloseHandle(go);
    std::multiset<std::string> expected = {"A ready", "B ready"};
    for (const char* tag : {"A", "B"}) {
        for (int thread = 1; thread <= 2; ++thread) {
            for (int i = 0; i < count; ++i) {
                expected.insert(std::string(tag) + "." + std::to_string(thread) + "." + std::to_string(i) + " " +
                                std::string(static_cast<size_t>(i * 37 % 400), 'x') + "|");
            }
        }
    }
    const std::vector<std::string> texts = TextsOf(file.Lines());
    EXPECT_TRUE(std::multiset<std::string>(texts.begin(), texts.end()) == expected) << texts.size() << " lines";
    size_t changes = 0;
    for (size_t i = 1; i < texts.size(); ++i) {
        changes += texts[i][0] != texts[i - 1][0];
    }
    EXPECT_GT(changes, 10u) << "the two processes did not write at the same time";
}

TEST(DebugLog, WritesLongTextsCompletely) {
    const TemporaryFile file;
    EXPECT_EQ(0u, RunLogWriter(L"texts", {{File, file.Path()}}).exitCode);
    const std::vector<std::string> texts = TextsOf(file.Lines());
    const size_t lengths[] = {1022, 1023, 1024, 1025, 8191, 8192, 100000};
    ASSERT_GE(texts.size(), 7u);
    for (size_t i = 0; i < 7; ++i) {
        EXPECT_EQ("long " + std::string(lengths[i], 'a') + " end", texts[i]) << lengths[i];
    }
}

TEST(DebugLog, WritesOneLineWhateverTheTextHolds) {
    const TemporaryFile file;
    EXPECT_EQ(0u, RunLogWriter(L"texts", {{File, file.Path()}}).exitCode);
    const std::vector<std::string> lines = file.Lines();
    ASSERT_EQ(15u, lines.size());
    const std::vector<std::string> texts = TextsOf(lines);
    EXPECT_EQ("line end", texts[7]);
    EXPECT_EQ("one\\ntwo\\rthree\\tfour\\x1b five\\u2028six\\x85", texts[8]);
    EXPECT_EQ("Gr\xc3\xbc\xc3\x9f"
              "e \xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x98\x80",
              texts[9]);
    EXPECT_THAT(lines[10], EndsWith(" ERROR DebugLog.dll -(0): null (null) argument"));
    EXPECT_THAT(lines[11], EndsWith(" Writer.cpp(1): (null)"));
    EXPECT_THAT(lines[12], EndsWith(" (-1): "));
    EXPECT_THAT(lines[13], EndsWith(" WARNING DebugLog.dll Writer.cpp(2): unknown 100% serious"));
    EXPECT_THAT(lines[14], EndsWith(" TRACE DebugLog.dll Writer.cpp(3): unknown level, 12 ff"));
}

TEST(DebugLog, TouchesNoArgumentOfADisabledLevel) {
    const ChildResult child = RunLogWriter(L"disabled", {});
    EXPECT_EQ(0u, child.exitCode);
    EXPECT_THAT(TextsOf(child.debugLines), ElementsAre("before", "after"));
}

TEST(DebugLog, KeepsTheLastErrorValue) {
    const TemporaryFile file;
    EXPECT_EQ(0u, RunLogWriter(L"lasterror", {}).exitCode);
    EXPECT_EQ(0u, RunLogWriter(L"lasterror", {{File, file.Path()}}).exitCode);
    EXPECT_EQ(0u, RunLogWriter(L"lasterror", {{File, L"C:\\no such folder\\log.txt"}}).exitCode);
}

TEST(DebugLog, FallsBackToTheDebuggerWhenTheFileCannotBeOpened) {
    const ChildResult child = RunLogWriter(L"levels", {{File, L"C:\\no such folder\\log.txt"}});
    ASSERT_THAT(child.debugLines, SizeIs(3));
    EXPECT_EQ("DebugLog: cannot open C:\\no such folder\\log.txt, error 3", child.debugLines[0]);
    EXPECT_THAT(TextsOf({child.debugLines[1], child.debugLines[2]}), ElementsAre("level error", "level warning"));
}

TEST(DebugLog, GoesOnInTheDebuggerWhenTheDiskIsFull) {
    const TemporaryFile file;
    const ChildResult child = RunLogWriter(L"diskfull", {{File, file.Path()}});
    EXPECT_EQ(0u, child.exitCode);
    EXPECT_THAT(TextsOf(file.Lines()), ElementsAre("number 1", "number 2"));
    ASSERT_THAT(child.debugLines, SizeIs(3));
    EXPECT_EQ("DebugLog: cannot write to the log file, error 112", child.debugLines[0]);
    EXPECT_THAT(TextsOf({child.debugLines[1], child.debugLines[2]}), ElementsAre("number 3", "number 4"));
}

TEST(DebugLog, ReadsTheRegistryWhenTheVariablesAreAbsent) {
    const TemporaryFile file;
    MachineKey key;
    key.Set(L"File", file.Path());
    key.Set(L"Level", L"warning");
    EXPECT_THAT(RunLogWriter(key.Command(), {}).debugLines, IsEmpty());
    EXPECT_THAT(TextsOf(file.Lines()), ElementsAre("level error", "level warning"));
}

TEST(DebugLog, PrefersVariablesToTheRegistry) {
    const TemporaryFile named;
    const TemporaryFile other;
    MachineKey key;
    key.Set(L"File", other.Path());
    key.Set(L"Level", L"all");
    RunLogWriter(key.Command(), {{File, named.Path()}, {Level, L"error"}});
    EXPECT_THAT(named.Lines(), SizeIs(1));
    EXPECT_EQ("", other.Bytes());
}

TEST(DebugLog, ExpandsVariablesInTheRegistry) {
    const TemporaryFile file;
    MachineKey key;
    key.Set(L"File", L"%SUPPORT_TEST_LOG%", REG_EXPAND_SZ);
    RunLogWriter(key.Command(), {{L"SUPPORT_TEST_LOG", file.Path()}});
    EXPECT_THAT(file.Lines(), SizeIs(5));
}

TEST(DebugLog, IgnoresRegistryValuesOfAnotherType) {
    const TemporaryFile file;
    MachineKey key;
    key.Set(L"File", file.Path(), REG_BINARY);
    key.Set(L"Level", L"off", REG_MULTI_SZ);
    EXPECT_THAT(RunLogWriter(key.Command(), {}).debugLines, SizeIs(2));
    EXPECT_EQ("", file.Bytes());
}

namespace {

struct SinkRecord {
    std::vector<std::wstring> texts;
    std::vector<unsigned int> levels;
    std::string sourceFile;
    int line = 0;
};

void RecordLine(void* context, unsigned int level, const char* sourceFile, int line, const wchar_t* text) {
    SinkRecord& record = *static_cast<SinkRecord*>(context);
    record.texts.push_back(text);
    record.levels.push_back(level);
    record.sourceFile = sourceFile;
    record.line = line;
    DBG::DebugLogEx(nullptr, DBG::LEVEL_ENTRY, "sink", 0, L"from the sink"); // must not come back here
}

} // namespace

TEST(DebugLogSink, IsFoundByName) {
    EXPECT_NE(nullptr, GetProcAddress(GetModuleHandleW(L"DebugLog.dll"), "DebugLogSetSink"));
}

TEST(DebugLogSink, ReceivesEveryLevelUntilItIsRemoved) {
    SinkRecord record;
    DebugLogSetSink(&RecordLine, &record);
    DBG::DebugLogEx(nullptr, DBG::LEVEL_ENTRY, "dir/file.cpp", 12, L"in %d", 1);
    DBG::DebugLogEx(nullptr, DBG::LEVEL_INFORMATION, "dir/file.cpp", 13, L"two\nlines");
    DebugLogSetSink(nullptr, nullptr);
    DBG::DebugLogEx(nullptr, DBG::LEVEL_LEAVING, "dir/file.cpp", 14, L"out");
    EXPECT_THAT(record.texts, ElementsAre(L"in 1", L"two\nlines"));
    EXPECT_THAT(record.levels, ElementsAre(DBG::LEVEL_ENTRY, DBG::LEVEL_INFORMATION));
    EXPECT_EQ("dir/file.cpp", record.sourceFile);
    EXPECT_EQ(13, record.line);
}

TEST(DebugLogSink, IsCalledByOneThreadAtATime) {
    SinkRecord record;
    DebugLogSetSink(&RecordLine, &record);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 500; ++n) {
                DBG::DebugLogEx(nullptr, DBG::LEVEL_INFORMATION, "s", n, L"%d", n);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    DebugLogSetSink(nullptr, nullptr);
    EXPECT_THAT(record.texts, SizeIs(2000));
}

namespace {

const char* const LogFunction = harness::Decorated("_ZN3DBG10DebugLogExEP11HINSTANCE__jPKciPKwz",
                                                   "?DebugLogEx@DBG@@YAXPEAUHINSTANCE__@@IPEBDHPEB_WZZ");

// DebugLog.dll once more, under another name: this program's own stays loaded.
class LogCopy {
public:
    LogCopy() {
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(GetModuleHandleW(L"DebugLog.dll"), path, MAX_PATH);
        EXPECT_TRUE(CopyFileW(path, m_path.c_str(), FALSE)) << GetLastError();
    }

    // Loads it, logs a line and unloads it.
    void LogOnce(const wchar_t* text) const {
        const HMODULE module = LoadLibraryW(m_path.c_str());
        ASSERT_NE(module, nullptr) << GetLastError();
        const auto log =
            reinterpret_cast<decltype(&DBG::DebugLogEx)>(reinterpret_cast<void*>(GetProcAddress(module, LogFunction)));
        ASSERT_NE(log, nullptr);
        log(module, DBG::LEVEL_ERROR, "Copy.cpp", 1, L"%s", text);
        ASSERT_TRUE(FreeLibrary(module));
        ASSERT_EQ(GetModuleHandleW(m_path.c_str()), nullptr);
    }

private:
    const common::TemporaryFolder m_folder{L"clusutil-log-copy"};
    const std::wstring m_path = m_folder.File(L"DebugLogCopy.dll");
};

} // namespace

TEST(DebugLog, GivesBackWhatIsOpenWhenItIsUnloaded) {
    const TemporaryFile file;
    const LogCopy copy;
    SetEnvironmentVariableW(File, file.Path().c_str());
    copy.LogOnce(L"first");
    const int handles = harness::CountOpenHandles();
    ASSERT_GT(handles, 0);
    for (int i = 0; i < 100; ++i) {
        copy.LogOnce(L"again");
    }
    EXPECT_EQ(harness::CountOpenHandles(), handles);
    SetEnvironmentVariableW(File, nullptr);
    EXPECT_THAT(file.Lines(), SizeIs(101));
}
