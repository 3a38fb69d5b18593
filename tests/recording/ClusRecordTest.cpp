// clusrecord.dll records a process that uses the library without clusctl; what it wrote is answered again.
#include "clusrecord.h"

#include "Player.h"
#include "Recording.h"

#include "ClusSimControl.h"
#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <clus_Cluster.h>
#include <clus_VeritasCluster.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

const char Model[] =
    R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "."}], "groups": [{"name": "EVS1", "owner": "."}],
    "resources": [{"name": "EVS1 SA", "type": "Generic Service", "id": "11111111-2222-3333-4444-555555555501",
    "group": "EVS1", "state": "Online"}]})";

typedef DWORD(WINAPI* Record)(LPCWSTR file, DWORD flags);

class Recorded : public testing::Test {
protected:
    Recorded() : m_library(LoadLibraryW(L"clusrecord.dll")) {
        ClusSimReset();
        EXPECT_EQ(ClusSimLoadModel(Model, nullptr, 0), 1);
        record = reinterpret_cast<Record>(reinterpret_cast<void*>(GetProcAddress(m_library, "ClusRecord")));
    }
    ~Recorded() override {
        if (m_library != nullptr) {
            FreeLibrary(m_library);
        }
        ClusSimReset();
    }

    // What the library makes of the resource: its state, and that after it is taken offline; -1 for a failure.
    static std::string Ask() {
        CCluster cluster;
        CClusterResource resource;
        if (!cluster.OpenByLPC() || !cluster.OpenResourceByName(resource, L"EVS1 SA")) {
            return "not opened";
        }
        const int before = resource.GetResourceState(nullptr, nullptr);
        return std::to_string(before) + ", then " + std::to_string(resource.OfflineResource());
    }

    // The calls of one function in the recording.
    std::vector<recording::RecordedCall> CallsOf(const std::string& name) const {
        const recording::Recording whole = recording::ReadRecording(common::ReadWholeFile(file));
        EXPECT_FALSE(whole.isCut);
        std::vector<recording::RecordedCall> calls;
        std::copy_if(whole.calls.begin(), whole.calls.end(), std::back_inserter(calls),
                     [&name](const recording::RecordedCall& call) { return call.name == name; });
        return calls;
    }

    void FreeRecorder() {
        FreeLibrary(m_library);
        m_library = nullptr;
    }

    common::TemporaryFolder folder{L"clusrecord"};
    std::wstring file = folder.File(L"a.rec");
    Record record = nullptr;

private:
    HMODULE m_library;
};

std::wstring BesideThisProgram(const wchar_t* name) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\') + 1) + name;
}

} // namespace

TEST_F(Recorded, CallsAreWrittenAndAnsweredAgainAndChangesAreRefused) {
    ASSERT_NE(record, nullptr);
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    EXPECT_EQ(record(file.c_str(), 0), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    const std::string said = Ask();
    EXPECT_EQ(record(nullptr, 0), 0u);
    EXPECT_EQ(said, "1, then -1");

    recording::Recording recording = recording::ReadRecording(common::ReadWholeFile(file));
    EXPECT_FALSE(recording.isCut);
    ASSERT_GE(recording.calls.size(), 4u);
    EXPECT_EQ(recording.calls[0].name, "OpenCluster");
    ClusSimReset(); // there is no cluster any more
    recording::Player player(std::move(recording));
    const recording::Interception interception(player, {GetModuleHandleW(L"clusutil.dll")});
    EXPECT_EQ(Ask(), said);
    EXPECT_EQ(player.Missing(), "");
    EXPECT_TRUE(player.HasAnswered());
    EXPECT_THROW(Ask(), recording::NotRecorded); // it was asked once
    EXPECT_NE(player.Missing(), "");
}

TEST_F(Recorded, ChangesAreMadeWhenAllowed) {
    ASSERT_EQ(record(file.c_str(), CLUSRECORD_ALLOW_CHANGES), 0u);
    EXPECT_EQ(Ask(), "1, then 2");
    EXPECT_EQ(record(nullptr, 0), 0u);
    EXPECT_EQ(Ask(), "2, then 2"); // recorded no more
}

TEST_F(Recorded, NamesAreReplacedOnDemand) {
    ASSERT_EQ(record(file.c_str(), CLUSRECORD_ANONYMISE), 0u);
    Ask();
    EXPECT_EQ(record(nullptr, 0), 0u);
    const std::string text = common::ReadWholeFile(file);
    EXPECT_EQ(text.find("EVS1"), std::string::npos);
    EXPECT_NE(text.find("BABA SA"), std::string::npos);
}

TEST_F(Recorded, WrongRequestsAreRefused) {
    EXPECT_EQ(record(nullptr, 0), static_cast<DWORD>(ERROR_NOT_FOUND));
    EXPECT_EQ(record(file.c_str(), 4), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    common::WriteWholeFile(file, "mine");
    EXPECT_EQ(record(file.c_str(), 0), static_cast<DWORD>(ERROR_FILE_EXISTS));
    EXPECT_EQ(common::ReadWholeFile(file), "mine");
}

// By their IDs threads could not be counted: the system gives the same one again.
TEST_F(Recorded, ThreadsHaveNumbersOfTheirOwn) {
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    Ask();
    for (int i = 0; i < 3; ++i) {
        std::thread(&Recorded::Ask).join();
    }
    Ask();
    EXPECT_EQ(record(nullptr, 0), 0u);
    std::vector<unsigned> threads;
    for (const recording::RecordedCall& call : CallsOf("OpenCluster")) {
        threads.push_back(call.thread);
    }
    EXPECT_EQ(threads, (std::vector<unsigned>{0, 1, 2, 3, 0}));
}

// The simulated tool beside this program, which has no cluster.
TEST_F(Recorded, ToolsOfVcsAreRecordedAndTheLibraryGetsWhatTheyPrint) {
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    std::vector<std::wstring> systems;
    CVeritasCluster().EnumSystemNames(systems);
    EXPECT_EQ(record(nullptr, 0), 0u);
    EXPECT_EQ(std::count(systems.begin(), systems.end(), L"V-16-1-99001"), 1);

    const recording::Recording recording = recording::ReadRecording(common::ReadWholeFile(file));
    ASSERT_EQ(recording.tools.size(), 1u);
    const recording::RecordedTool& tool = recording.tools.front();
    EXPECT_EQ(tool.commandLine.substr(0, 11), "hasys -list");
    EXPECT_NE(tool.exitCode, 0u);
    ASSERT_EQ(tool.output.size(), 1u);
    EXPECT_TRUE(tool.output[0].isError);
    EXPECT_EQ(tool.output[0].text, "VCS ERROR V-16-1-99001 (simulated) VCSSIM_MAIN_CF is not set\r\n");
}

// The call that is under way is the last one of the recording, and comes back to its caller.
TEST_F(Recorded, EndingWaitsForTheCallsThatOthersAreIn) {
    ASSERT_EQ(ClusSimAddFault("GetClusterResourceState=delay_ms:300"), 1);
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    std::string said;
    std::thread other([&said] { said = Ask(); });
    while (ClusSimCallCount("GetClusterResourceState") == 0) {
        Sleep(1);
    }
    EXPECT_EQ(record(nullptr, 0), 0u);
    EXPECT_EQ(CallsOf("GetClusterResourceState").size(), 1u);
    other.join();
    EXPECT_EQ(said, "1, then 2"); // the second call is no longer recorded, nor refused
}

TEST_F(Recorded, TheRecorderStaysWhenItIsFreed) {
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    FreeRecorder();
    EXPECT_EQ(Ask(), "1, then -1");
    EXPECT_EQ(record(nullptr, 0), 0u);
    EXPECT_EQ(CallsOf("OpenClusterResource").size(), 1u);
}

TEST_F(Recorded, ModulesThatAreFreedMeanwhileAreLeftAlone) {
    const std::wstring copy = folder.File(L"component.dll");
    ASSERT_TRUE(CopyFileW(BesideThisProgram(L"clusutil.dll").c_str(), copy.c_str(), TRUE));
    const HMODULE component = LoadLibraryW(copy.c_str());
    ASSERT_NE(component, nullptr);
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    FreeLibrary(component);
    EXPECT_EQ(GetModuleHandleW(L"component.dll"), nullptr);
    EXPECT_EQ(Ask(), "1, then -1");
    EXPECT_EQ(record(nullptr, 0), 0u);
    EXPECT_EQ(Ask(), "1, then 2");
}

TEST_F(Recorded, AnotherRecordingMayFollow) {
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    EXPECT_EQ(record(nullptr, 0), 0u);
    file = folder.File(L"b.rec");
    ASSERT_EQ(record(file.c_str(), 0), 0u);
    Ask();
    EXPECT_EQ(record(nullptr, 0), 0u);
    const std::vector<recording::RecordedCall> calls = CallsOf("OpenCluster");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].thread, 0u);
}
