// A model file that changes: when it is read, and what is known of it afterwards.
#include "ModelFileFixture.h"

#include "ImportPatch.h"

namespace {

HMODULE Simulator() {
    return GetModuleHandleW(L"clusapi.dll");
}

// While the result lives, the simulator's opening of files is counted.
auto CountOpening(std::size_t& count) {
    return PatchImportOf(Simulator(), kernel32, CreateFileW,
                         [&count](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD how,
                                  DWORD flags, HANDLE sample) -> HANDLE {
                             ++count;
                             return CreateFileW(path, access, share, security, how, flags, sample);
                         });
}

Bytes DescriptionList(const std::wstring& text) {
    Bytes list;
    Append(list, 1);
    AppendEntry(list, 0x00040003, TextOf(L"Description"));
    AppendEntry(list, 0x00010003, TextOf(text));
    Append(list, 0);
    return list;
}

} // namespace

class ModelFileVersions : public ModelFile {
protected:
    // When the file was written, for those who ask its file system.
    void SetTime(const FILETIME& time) {
        const HANDLE file = CreateFileW(m_path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        EXPECT_TRUE(SetFileTime(file, nullptr, nullptr, &time));
        CloseHandle(file);
    }

    // A file that nobody has written for long.
    void UseOldFile(const std::string& text = MailCluster) {
        Write(text);
        SetTime(m_longAgo);
        SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
        m_cluster = ClusterOwner(OpenCluster(nullptr));
        ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
    }

    DWORD ErrorOfOpening(const wchar_t* resource) {
        const ResourceOwner opened(OpenClusterResource(m_cluster, resource));
        return opened ? 0 : GetLastError();
    }

    CLUSTER_GROUP_STATE GroupState(const wchar_t* group) {
        return GetClusterGroupState(Group(group), nullptr, nullptr);
    }

    const FILETIME m_longAgo = {0, 0x01C00000};
};

TEST_F(ModelFileVersions, AnUnchangedFileIsNeitherOpenedNorWaitedFor) {
    UseOldFile();
    std::size_t opened = 0;
    std::size_t waited = 0;
    const auto counting = CountOpening(opened);
    const auto waiting =
        PatchImportOf(Simulator(), kernel32, WaitForSingleObject, [&waited](HANDLE object, DWORD timeout) -> DWORD {
            ++waited;
            return WaitForSingleObject(object, timeout);
        });
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
        EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupPartialOnline);
        EXPECT_EQ(ListGroup(Group(L"EVS1"), CLUSTER_GROUP_ENUM_CONTAINS).size(), 5u);
    }
    EXPECT_EQ(opened, 0u);
    EXPECT_EQ(waited, 0u);
    Write(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"OTHER\""));
    SetTime(m_longAgo); // its size tells
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    EXPECT_EQ(opened, 1u);
    EXPECT_EQ(waited, 1u);
}

TEST_F(ModelFileVersions, AChangeByOthersIsSeenTwentyMicrosecondsAfterTheLastLook) {
    UseOldFile();
    LARGE_INTEGER perSecond;
    ASSERT_TRUE(QueryPerformanceFrequency(&perSecond));
    LONGLONG now = perSecond.QuadPart * 1000000;
    const auto clock =
        PatchImportOf(Simulator(), kernel32, QueryPerformanceCounter, [&now](LARGE_INTEGER* ticks) -> BOOL {
            ticks->QuadPart = now;
            return TRUE;
        });
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    Write(Replaced(MailCluster, "\"Online\", \"private\": {\"Address\"", "\"Failed\", \"private\": {\"Address\""));
    SetTime({1, m_longAgo.dwHighDateTime});
    now += perSecond.QuadPart / 50000 - 1;
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    now += 1;
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceFailed);
}

TEST_F(ModelFileVersions, WhatTheSimulatorWritesIsSeenAtOnce) {
    UseOldFile();
    const auto clock = PatchImportOf(Simulator(), kernel32, QueryPerformanceCounter, [](LARGE_INTEGER* ticks) -> BOOL {
        ticks->QuadPart = 1;
        return TRUE;
    });
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOffline);
}

TEST_F(ModelFileVersions, ARelativePathIsThatOfTheFirstCall) {
    wchar_t before[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryW(MAX_PATH, before), 0u);
    const std::size_t slash = m_path.find_last_of(L'\\');
    Write(MailCluster);
    SetTime(m_longAgo);
    ASSERT_TRUE(SetCurrentDirectoryW(m_path.substr(0, slash).c_str()));
    SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.substr(slash + 1).c_str());
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_TRUE(SetCurrentDirectoryW(before));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
    std::size_t opened = 0;
    const auto counting = CountOpening(opened);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    EXPECT_EQ(opened, 0u);
    Write(Replaced(MailCluster, "\"Online\", \"private\": {\"Address\"", "\"Failed\", \"private\": {\"Address\""));
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceFailed);
}

TEST_F(ModelFileVersions, APathInTheSystemsOwnFormIsLookedAtToo) {
    Write(MailCluster);
    SetTime(m_longAgo);
    SetEnvironmentVariableW(L"CLUSSIM_FILE", (L"\\\\?\\" + m_path).c_str());
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
    std::size_t opened = 0;
    const auto counting = CountOpening(opened);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    EXPECT_EQ(opened, 0u);
}

TEST_F(ModelFileVersions, AMalformedFileThatStaysIsNotReadAgain) {
    UseOldFile();
    Write("{");
    SetTime(m_longAgo);
    std::size_t opened = 0;
    const auto counting = CountOpening(opened);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(OpenCluster(nullptr), nullptr);
    }
    EXPECT_LE(opened, 2u) << "once to read it, and once more as its text was not known to stay";
    Write(MailCluster);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
}

TEST_F(ModelFileVersions, AReplacementOfEqualSizeInTheSameTickIsSeen) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const auto clock =
        PatchImportOf(Simulator(), kernel32, GetSystemTimeAsFileTime, [now](LPFILETIME time) { *time = now; });
    Write(MailCluster);
    SetTime(now);
    SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    Write(Replaced(MailCluster, "\"Online\", \"private\": {\"Address\"", "\"Failed\", \"private\": {\"Address\""));
    SetTime(now);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceFailed);
}

TEST_F(ModelFileVersions, AReplacementOfEqualSizeIsSeenByItsTime) {
    UseOldFile();
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    Write(Replaced(MailCluster, "\"Online\", \"private\": {\"Address\"", "\"Failed\", \"private\": {\"Address\""));
    SetTime({1, m_longAgo.dwHighDateTime});
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceFailed);
}

TEST_F(ModelFileVersions, NamesAndIdsAreThoseOfTheLatestFile) {
    UseOldFile();
    const ResourceOwner address = Resource(L"EVS2 IP");
    std::string text = Replaced(MailCluster, "\"EVS2 IP\"", "\"Renamed\"");
    text = Replaced(text, "-000000000006\", \"group\": \"EVS2\"", "-000000000006\", \"group\": \"EVS1\"");
    text = Replaced(text, "-000000000005\"", "-000000000055\"");
    Write(text);
    EXPECT_EQ(ErrorOfOpening(L"EVS2 IP"), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
    EXPECT_EQ(ErrorOfOpening(L"RENAMED"), 0u);
    EXPECT_EQ(ErrorOfOpening(L"aaaaaaaa-0000-0000-0000-000000000006"), 0u);
    EXPECT_EQ(ErrorOfOpening(L"aaaaaaaa-0000-0000-0000-000000000005"), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
    EXPECT_EQ(ErrorOfOpening(L"AAAAAAAA-0000-0000-0000-000000000055"), 0u);
    wchar_t group[16];
    DWORD cch = 16;
    EXPECT_EQ(GetClusterResourceState(address, nullptr, nullptr, group, &cch), ClusterResourceOffline);
    EXPECT_STREQ(group, L"EVS1") << "the handle's resource has moved";
    EXPECT_EQ(ListGroup(Group(L"EVS1"), CLUSTER_GROUP_ENUM_CONTAINS).size(), 6u);
    EXPECT_EQ(ListGroup(Group(L"EVS2"), CLUSTER_GROUP_ENUM_CONTAINS).size(), 0u);
}

TEST_F(ModelFileVersions, WhatIsMadeAndDeletedIsFoundAndNotFound) {
    UseFile();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(ErrorOfOpening(L"Made"), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
        const ResourceOwner made(CreateClusterResource(Group(L"EVS2"), L"Made", L"Generic Service", 0));
        ASSERT_NE(static_cast<HRESOURCE>(made), nullptr);
        EXPECT_EQ(ErrorOfOpening(L"made"), 0u);
        EXPECT_EQ(Child(L"online MADE", OnFile()).Wait(), static_cast<DWORD>(ERROR_SHARING_PAUSED)) << "found too";
        EXPECT_EQ(DeleteClusterResource(made), 0u);
        EXPECT_EQ(GetClusterResourceState(made, nullptr, nullptr, nullptr, nullptr), ClusterResourceStateUnknown);
    }
}

TEST_F(ModelFileVersions, AGroupsStateFollowsItsResources) {
    UseFile();
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupPartialOnline);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), 0u);
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupOnline);
    const ResourceOwner made(CreateClusterResource(Group(L"EVS1"), L"Made", L"Generic Service", 0));
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupPartialOnline);
    EXPECT_EQ(DeleteClusterResource(made), 0u);
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupOnline);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 Disk")), 0u);
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupOffline);
    Write(Replaced(MailCluster, "\"Online\", \"private\": {\"Address\"", "\"Failed\", \"private\": {\"Address\""));
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupFailed);
    Write(Replaced(MailCluster, "\"Online\", \"private\": {\"Address\"", "\"Pending\", \"private\": {\"Address\""));
    EXPECT_EQ(GroupState(L"EVS1"), ClusterGroupPending);
}

TEST_F(ModelFileVersions, DependantsAreInTheFilesOrderWhoeverMadeThem) {
    UseFile();
    const ResourceOwner address = Resource(L"EVS1 IP");
    const std::vector<ListedName> expected = {{CLUSTER_RESOURCE_ENUM_PROVIDES, L"EVS1 Name"},
                                              {CLUSTER_RESOURCE_ENUM_PROVIDES, L"EVS1 SA"},
                                              {CLUSTER_RESOURCE_ENUM_PROVIDES, L"EVS1 Store"}};
    EXPECT_EQ(AddClusterResourceDependency(Resource(L"EVS1 Store"), address), 0u);
    EXPECT_EQ(AddClusterResourceDependency(Resource(L"EVS1 SA"), address), 0u);
    EXPECT_EQ(ListResource(address, CLUSTER_RESOURCE_ENUM_PROVIDES), expected);
    Write(Read() + " "); // read anew
    EXPECT_EQ(ListResource(address, CLUSTER_RESOURCE_ENUM_PROVIDES), expected);
}

TEST_F(ModelFileVersions, InvalidTextIsAtOnceWhatTheFileHoldsOfIt) {
    UseFile();
    const ResourceOwner made(CreateClusterResource(Group(L"EVS2"), L"Half \xD800", L"Generic Service", 0));
    ASSERT_NE(static_cast<HRESOURCE>(made), nullptr);
    EXPECT_EQ(ErrorOfOpening(L"Half \xFFFD"), 0u);
}

TEST_F(ModelFileVersions, WhatChangesNothingIsNotWritten) {
    const std::string text = Replaced(Replaced(MailCluster, "\"dependsOn\": [\"EVS1 SA\"]",
                                               "\"common\": {\"Description\": \"Shop\"}, \"failsOnline\": true"),
                                      "\"none\"", R"("none", "behaviour": {"requiredDependencies": "ignored"})");
    UseFile(text);
    const ResourceOwner store = Resource(L"EVS1 Store");
    EXPECT_EQ(SetControl(store, CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, DescriptionList(L"Shop")), 0u);
    EXPECT_EQ(RemoveClusterResourceDependency(store, Resource(L"EVS1 IP")),
              static_cast<DWORD>(ERROR_DEPENDENCY_NOT_FOUND));
    EXPECT_EQ(Read(), text);
    EXPECT_NE(OnlineClusterResource(store), 0u);
    const std::string failed = Read();
    EXPECT_NE(failed, text);
    Write(failed + " ");
    EXPECT_NE(OnlineClusterResource(store), 0u) << "from failed to failed";
    EXPECT_EQ(Read(), failed + " ");
    EXPECT_EQ(SetControl(store, CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, DescriptionList(L"Post")), 0u);
    EXPECT_EQ(Read(), Replaced(failed, "\"Shop\"", "\"Post\""));
}

TEST_F(ModelFileVersions, WhatAnotherProcessMakesIsSeenWhileItGoesOn) {
    UseFile();
    Child writer(L"create Made 25", OnFile());
    const DWORD start = GetTickCount();
    int found = 0;
    while (found < 25 && GetTickCount() - start < 60000) {
        const std::wstring name = L"Made" + std::to_wstring(found);
        found += ErrorOfOpening(name.c_str()) == 0 ? 1 : 0;
    }
    EXPECT_EQ(found, 25);
    EXPECT_EQ(writer.Wait(), 0u);
}

TEST_F(ModelFileVersions, AKeptFileIsWrittenAtLast) {
    UseOldFile();
    ClusSimKeepFile();
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOffline);
    EXPECT_EQ(Read(), MailCluster);
    EXPECT_EQ(ClusSimWriteKeptFile(), 0u);
    const std::string written = Read();
    EXPECT_EQ(written, ReadModel());
    EXPECT_NE(written, MailCluster);
    Write(MailCluster);
    EXPECT_EQ(ClusSimWriteKeptFile(), 0u);
    EXPECT_EQ(Read(), MailCluster) << "nothing has been changed since it was written";
}

TEST_F(ModelFileVersions, AKeptFileIsNotLookedAtAgain) {
    Write(MailCluster); // just now: it would be read at each call
    SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
    ClusSimKeepFile();
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
    std::size_t opened = 0;
    const auto counting = CountOpening(opened);
    Write("{");
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    EXPECT_EQ(opened, 0u);
    EXPECT_EQ(ClusSimWriteKeptFile(), 0u);
    EXPECT_EQ(Read(), "{") << "nothing has been changed";
}

TEST_F(ModelFileVersions, AKeptFileThatCannotBeWrittenIsTold) {
    UseOldFile();
    ClusSimKeepFile();
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    const auto full = PatchImportOf(Simulator(), kernel32, CreateFileW,
                                    [](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                       DWORD how, DWORD flags, HANDLE sample) -> HANDLE {
                                        if (access == GENERIC_WRITE) {
                                            SetLastError(ERROR_DISK_FULL);
                                            return INVALID_HANDLE_VALUE;
                                        }
                                        return CreateFileW(path, access, share, security, how, flags, sample);
                                    });
    EXPECT_EQ(ClusSimWriteKeptFile(), static_cast<unsigned long>(ERROR_DISK_FULL));
    EXPECT_EQ(Read(), MailCluster);
}

TEST_F(ModelFileVersions, AResetEndsTheKeepingOfAFile) {
    UseOldFile();
    ClusSimKeepFile();
    m_cluster = ClusterOwner();
    ClusSimReset();
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_NE(Read(), MailCluster);
}
