// The model in a file: reading, writing back, several processes at once.
#include "ModelFileFixture.h"

#include "common/Files.h"

#include <sstream>

using testing::HasSubstr;

namespace {

const DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

} // namespace

TEST_F(ModelFile, ReadingCallsLeaveItAsItIs) {
    UseFile();
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 IP")), 0u) << "nothing changes";
    EXPECT_EQ(Read(), MailCluster);
}

TEST_F(ModelFile, AChangeIsWrittenBack) {
    UseFile();
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS2 IP")), 0u);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), 0u);
    const nlohmann::json model = ReadJson();
    EXPECT_EQ(model["resources"].size(), 5u);
    EXPECT_EQ(model["resources"][3]["state"], "Online");
}

TEST_F(ModelFile, AChangeByAnotherProcessIsSeen) {
    UseFile();
    const ResourceOwner attendant = Resource(L"EVS1 SA");
    EXPECT_EQ(Child(L"online \"EVS1 SA\"", OnFile()).Wait(), 0u);
    EXPECT_EQ(GetClusterResourceState(attendant, nullptr, nullptr, nullptr, nullptr), ClusterResourceOnline);
}

TEST_F(ModelFile, APendingTransitionEndsForAllProcesses) {
    UseFile(Replaced(MailCluster, "-000000000004\"", "-000000000004\", \"onlineMs\": 700"));
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_IO_PENDING));
    EXPECT_THAT(Read(), HasSubstr("\"dueAt\": "));
    DWORD state = 0;
    for (int i = 0; i < 100 && state != 1000 + ClusterResourceOnline; ++i) {
        state = Child(L"state \"EVS1 SA\"", OnFile()).Wait();
        ASSERT_TRUE(state == 1000 + ClusterResourceOnline || state == 1000 + ClusterResourceOnlinePending) << state;
    }
    EXPECT_EQ(state, static_cast<DWORD>(1000 + ClusterResourceOnline));
}

TEST_F(ModelFile, ProcessesThatChangeItAtOnceLoseNothing) {
    Write(MailCluster);
    Child first(L"create A 25", OnFile());
    Child second(L"create B 25", OnFile());
    Child third(L"create C 25", OnFile());
    EXPECT_EQ(first.Wait(), 0u);
    EXPECT_EQ(second.Wait(), 0u);
    EXPECT_EQ(third.Wait(), 0u);
    EXPECT_EQ(ReadJson()["resources"].size(), 6u + 75u);
}

TEST_F(ModelFile, AStoppedProcessLeavesAWholeFileAndItsTurn) {
    Write(MailCluster);
    std::size_t known = 6;
    for (int round = 0; round < 8; ++round) {
        Child writer(L"create R" + std::to_wstring(round) + L"- 0", OnFile());
        const DWORD start = GetTickCount();
        while (ReadJson()["resources"].size() == known && GetTickCount() - start < 20000) {
            Sleep(1);
        }
        Sleep(static_cast<DWORD>(round * 7 % 11));
        writer.Stop();
        const std::size_t now = ReadJson()["resources"].size();
        EXPECT_GT(now, known);
        known = now;
    }
    EXPECT_EQ(Child(L"create Last 1", OnFile()).Wait(), 0u) << "the turn of a stopped process is free";
    EXPECT_EQ(ReadJson()["resources"].size(), known + 1);
}

TEST_F(ModelFile, AFailingWriteFailsTheCallAndLeavesTheOldFile) {
    UseFile();
    ASSERT_TRUE(CreateDirectoryW((m_path + L".new").c_str(), nullptr)); // where the new text would go
    const DWORD code = DeleteClusterResource(Resource(L"EVS2 IP"));
    EXPECT_NE(code, 0u);
    EXPECT_EQ(Read(), MailCluster);
    EXPECT_EQ(StateOf(L"EVS2 IP"), ClusterResourceOffline) << "the change is undone";
    EXPECT_EQ(CreateClusterResource(Group(L"EVS1"), L"New", L"IP Address", 0), nullptr);
    ASSERT_TRUE(RemoveDirectoryW((m_path + L".new").c_str()));
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS2 IP")), 0u);
}

TEST_F(ModelFile, AReaderDoesNotKeepOthersFromWriting) {
    UseFile();
    const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_READ, ShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    HANDLE timer = CreateThread(
        nullptr, 0,
        [](void* handle) -> DWORD {
            Sleep(100);
            CloseHandle(handle);
            return 0;
        },
        file, 0, nullptr);
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS2 IP")), 0u);
    WaitForSingleObject(timer, INFINITE);
    CloseHandle(timer);
    EXPECT_EQ(ReadJson()["resources"].size(), 5u);
}

TEST_F(ModelFile, AMalformedFileIsToldOnceWithItsPlaceAndOpensNoCluster) {
    Write(Replaced(MailCluster, "\"owner\": \"NODE-C\"", "\"owner\": \"NODE-X\""));
    Child child(L"open x", OnFile());
    EXPECT_EQ(child.Wait(), static_cast<DWORD>(EPT_S_NOT_REGISTERED));
    EXPECT_THAT(child.Errors(), HasSubstr("model.json: groups[1].owner: there is no node NODE-X"));
}

TEST_F(ModelFile, AMissingFileOpensNoCluster) {
    Child child(L"open x", OnFile());
    EXPECT_EQ(child.Wait(), static_cast<DWORD>(EPT_S_NOT_REGISTERED));
    EXPECT_THAT(child.Errors(), HasSubstr("model.json: cannot be opened, error 2"));
    EXPECT_EQ(Child(L"open x", {}).Wait(), static_cast<DWORD>(EPT_S_NOT_REGISTERED)) << "without CLUSSIM_FILE";
}

TEST_F(ModelFile, ItIsReadAgainOnceItIsWellFormed) {
    Write("{");
    SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
    UseFile();
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
}

TEST_F(ModelFile, ASuccessfulCallLeavesTheCallersLastError) {
    UseFile();
    const ResourceOwner resource = Resource(L"EVS2 IP");
    SetLastError(1234);
    EXPECT_EQ(OnlineClusterResource(resource), static_cast<DWORD>(ERROR_SHARING_PAUSED));
    EXPECT_EQ(GetLastError(), 1234u);
    EXPECT_EQ(DeleteClusterResource(resource), 0u);
    EXPECT_EQ(GetLastError(), 1234u);
}

TEST_F(ModelFile, FaultsComeFromTheEnvironmentAndTheFile) {
    Variables variables = OnFile();
    Write(MailCluster);
    variables[L"CLUSSIM_FAULTS"] = L"OpenClusterNode=5 ; OnlineClusterResource@EVS1 SA=1450";
    EXPECT_EQ(Child(L"online \"EVS1 SA\"", variables).Wait(), 1450u);
    variables[L"CLUSSIM_FAULTS"] = L"Nonsense";
    Child child(L"online \"EVS1 SA\"", variables);
    EXPECT_EQ(child.Wait(), 0u);
    EXPECT_THAT(child.Errors(),
                HasSubstr("CLUSSIM_FAULTS: \"Nonsense\" is no fault like call@object#n=code: there is"));
    Write(Replaced(MailCluster, "\"nodes\":", "\"faults\": [\"OnlineClusterResource=1\"], \"nodes\":"));
    EXPECT_EQ(Child(L"online \"EVS1 SA\"", OnFile()).Wait(), 1u);
}

TEST_F(ModelFile, TheJournalFileTakesTheLinesOfAllProcesses) {
    Variables variables = OnFile();
    variables[L"CLUSSIM_JOURNAL"] = m_journal;
    Write(MailCluster);
    {
        Child first(L"create A 10", variables);
        Child second(L"create B 10", variables);
        EXPECT_EQ(first.Wait(), 0u);
        EXPECT_EQ(second.Wait(), 0u);
    }
    std::istringstream journal(common::ReadWholeFile(m_journal));
    std::size_t creations = 0;
    for (std::string line; std::getline(journal, line);) {
        creations += nlohmann::json::parse(line)["call"] == "CreateClusterResource";
    }
    EXPECT_EQ(creations, 20u);
}
