// clusrecord.dll records a process that uses the library without clusctl; what it wrote is answered again.
#include "clusrecord.h"

#include "Player.h"
#include "Recording.h"

#include "ClusSimControl.h"
#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <clus_Cluster.h>

#include <gtest/gtest.h>

#include <string>

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
        FreeLibrary(m_library);
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

    common::TemporaryFolder folder{L"clusrecord"};
    std::wstring file = folder.File(L"a.rec");
    Record record = nullptr;

private:
    HMODULE m_library;
};

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
