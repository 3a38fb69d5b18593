#include "FaultSweep.h"

#include <gtest/gtest-spi.h>

#include "clus_Cluster.h"
#include "platform/ClusterApi.h"

#include <list>
#include <string>

using namespace harness;

namespace {

// Guarded
// ---------------------------------------------------------------------------------------------------------------

TEST(Guarded, SeesWritesIntoAndBesideTheRecords) {
    Guarded<int, 2> records;
    EXPECT_TRUE(records.Untouched(0));
    records[1] = 5;
    EXPECT_TRUE(records.Untouched(0));
    EXPECT_FALSE(records.Untouched(1));
    EXPECT_TRUE(records.GuardsIntact());
    int* behind = records.get() + 2;
    *behind = 0;
    EXPECT_FALSE(records.GuardsIntact());
}

// Registry
// --------------------------------------------------------------------------------------------------------------

TEST(IsolatedRegistry, TheKeyGoesWithTheObject) {
    HKEY root = nullptr;
    {
        IsolatedRegistry registry;
        root = registry.Root();
        registry.SetNumber(L"SOFTWARE\\A\\B", L"N", 3);
        registry.SetText(L"SOFTWARE\\A", L"T", L"text");
        HKEY key = nullptr;
        ASSERT_EQ(RegOpenKeyExW(root, L"SOFTWARE\\A\\B", 0, KEY_READ, &key), ERROR_SUCCESS);
        RegCloseKey(key);
    }
    HKEY tests = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\clusutil-tests", 0, KEY_READ, &tests), ERROR_SUCCESS);
    wchar_t name[256];
    const std::wstring mine = std::to_wstring(GetCurrentProcessId()) + L"-";
    for (DWORD index = 0; RegEnumKeyW(tests, index, name, 256) == ERROR_SUCCESS; ++index) {
        EXPECT_NE(std::wstring(name).rfind(mine, 0), 0u) << Utf8(name);
    }
    RegCloseKey(tests);
}

// Fixture
// ---------------------------------------------------------------------------------------------------------------

ModelBuilder SmallCluster() {
    return GivenCluster().Node("NODE-A").Node("NODE-B").Group("EVS1", "NODE-A").NetworkName("EVS1 Name", "EVS1");
}

using HarnessFixture = ClusterTest;

TEST_F(HarnessFixture, LogAndJournalAreCompactText) {
    Load(SmallCluster());
    {
        CCluster cluster;
        CClusterResource resource;
        ASSERT_TRUE(cluster.OpenByLPC());
        EXPECT_TRUE(cluster.OpenResourceByName(resource, L"evs1 name"));
        CClusterResource missing;
        EXPECT_FALSE(cluster.OpenResourceByName(missing, L"EVS2"));
    }
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()", "OpenClusterResource(evs1 name)", "OpenClusterResource(EVS2)=5007",
                                    "CloseClusterResource(evs1 name)", "CloseCluster()"}));
    EXPECT_EQ(TakeLog(),
              Lines({"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()", "E Open resource failed:EVS2, err=5007"}));
}

TEST_F(HarnessFixture, MessagesAreTheLogWithoutEntriesAndLeavings) {
    Load(SmallCluster());
    CCluster cluster;
    CClusterResource missing;
    ASSERT_TRUE(cluster.OpenByLPC());
    EXPECT_FALSE(cluster.OpenResourceByName(missing, L"EVS2"));
    EXPECT_EQ(TakeMessages(), Texts{"E Open resource failed:EVS2, err=5007"});
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(HarnessFixture, CallsAreCountedByTheBeginningOfTheirLine) {
    Load(SmallCluster());
    CCluster cluster;
    CClusterResource resource;
    ASSERT_TRUE(cluster.OpenByLPC());
    Platform().FailCall("OpenClusterResource", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(cluster.OpenResourceByName(resource, L"EVS1 Name"));
    EXPECT_TRUE(cluster.OpenResourceByName(resource, L"EVS1 Name"));
    EXPECT_EQ(Platform().CountCalls("OpenClusterResource("), 2u);
    EXPECT_EQ(Platform().CountCalls("OpenClusterResource(EVS1 Name)\n"), 1u);
    EXPECT_EQ(Platform().CountCalls("ClusterResource"), 0u);
}

TEST_F(HarnessFixture, WhatIsLeftForTheEndRunsLastInFirstOut) {
    const auto order = std::make_shared<std::string>();
    AtEnd([order] { EXPECT_EQ(*order, "third second "); });
    AtEnd([order] { *order += "second "; });
    AtEnd([order] { *order += "third "; });
}

TEST_F(HarnessFixture, AFailedCallIsNotPassedOn) {
    Load(SmallCluster());
    Platform().FailCall("OpenCluster", 1753, 2);
    CCluster first;
    CCluster second;
    EXPECT_TRUE(first.OpenByLPC());
    EXPECT_FALSE(second.OpenByLPC());
    EXPECT_EQ(Cluster().OpenHandles("cluster"), 1u);
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()", "OpenCluster()=1753"}));
}

TEST_F(HarnessFixture, AFailingCloseStillCloses) {
    Load(SmallCluster());
    Platform().FailCall("CloseCluster", 6);
    {
        CCluster cluster;
        ASSERT_TRUE(cluster.OpenByLPC());
    }
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()", "CloseCluster()=6"}));
}

TEST_F(HarnessFixture, AuditFindsAHandleLeftOpen) {
    Load(SmallCluster());
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    EXPECT_EQ(Cluster().OpenHandles("cluster"), 1u);
    ::testing::TestPartResultArray failures;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        Audit();
    }
    ASSERT_EQ(failures.size(), 1);
    EXPECT_THAT(failures.GetTestPartResult(0).message(), ::testing::HasSubstr("cluster handles left open"));
}

TEST_F(HarnessFixture, AFailingLocalAllocIsSeenByTheLibrary) {
    Load(SmallCluster());
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    Heap().FailLocalAlloc(1);
    std::list<std::wstring> names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_TRUE(Heap().Fired());
}

TEST_F(HarnessFixture, ASweepMeetsEveryCallAndEveryAllocation) {
    int callRuns = 0;
    int allocationRuns = 0;
    int good = 0;
    FaultSweep(*this,
               {[&] { Load(SmallCluster()); },
                [] {
                    CCluster cluster;
                    std::list<std::wstring> names;
                    return std::string(cluster.OpenByLPC() && cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names)
                                           ? "true"
                                           : "false");
                },
                [&](const SweepRun& run) {
                    if (!run.faulted) {
                        EXPECT_EQ(run.result, "true");
                        ++good;
                    } else if (run.fault == "operator new" || run.fault == "LocalAlloc") {
                        ++allocationRuns;
                    } else {
                        ++callRuns;
                    }
                }});
    // OpenCluster, ClusterOpenEnum, ClusterEnum twice, ClusterCloseEnum, CloseCluster; once and from then on.
    EXPECT_EQ(callRuns, 12);
    EXPECT_GE(allocationRuns, 4); // the name buffer and the list entry
    EXPECT_EQ(good, 5);
}

TEST_F(HarnessFixture, ASweepReportsWhatIsLeftBehind) {
    std::vector<HCLUSTER> handles;
    std::list<std::list<std::wstring>> kept; // blocks that the library allocated
    Sweep leaking;
    leaking.prepare = [&] { Load(SmallCluster()); };
    leaking.body = [&] {
        CCluster cluster;
        if (!cluster.OpenByLPC()) {
            handles.push_back(OpenCluster(nullptr));
            CCluster again;
            kept.emplace_back();
            again.OpenByLPC();
            again.EnumResourceNamesByType(L"Network Name", kept.back());
        }
        return std::string();
    };
    leaking.check = [](const SweepRun&) {};
    ::testing::TestPartResultArray failures;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        FaultSweep(*this, leaking);
    }
    std::string messages;
    for (int i = 0; i < failures.size(); ++i) {
        messages += failures.GetTestPartResult(i).message();
    }
    EXPECT_THAT(messages, ::testing::HasSubstr("C++ blocks kept"));
    EXPECT_THAT(messages, ::testing::HasSubstr("cluster handles left open"));
    EXPECT_THAT(messages, ::testing::HasSubstr("failing call 1: OpenCluster()"));
    for (const HCLUSTER handle : handles) {
        CloseCluster(handle);
    }
}

TEST(Watchdog, NamesTheHangingTestAndEndsTheProcessWithItsOwnCode) {
    const auto hang = [] {
        const Watchdog watchdog("Suite.Name", 100);
        Sleep(30000);
    };
    EXPECT_EXIT(hang(), ::testing::ExitedWithCode(WatchdogExitCode), "watchdog: Suite.Name hangs");
}

TEST_F(HarnessFixture, SleepAdvancesTheClusterClockOnly) {
    Load(SmallCluster());
    const auto sleepEntries = FindImports(LibraryModule(), "kernel32.dll", "Sleep");
    ASSERT_FALSE(sleepEntries.empty());
    const DWORD before = GetTickCount();
    reinterpret_cast<decltype(&Sleep)> (*sleepEntries.front())(60000);
    EXPECT_LT(GetTickCount() - before, 10000u);
    EXPECT_EQ(TakeJournal(), Lines({"Sleep(60000)"}));
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>{60000});
}

} // namespace
