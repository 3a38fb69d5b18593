#include "BenchMembers.h"

#include "BareCalls.h"
#include "BareSupport.h"
#include "BenchCluster.h"
#include "Growth.h"
#include "Measurement.h"
#include "StubCluster.h"
#include "StubLoops.h"

#include "ClusSimControl.h"
#include "clus_Cluster.h"
#include "clus_VirtualServerUtil.h"

#include <list>
#include <string>
#include <vector>

namespace bench {

namespace {

const double Nano = 1e9;
const double Milli = 1e3;
const std::size_t GoalSize = 10000;        // goals are set for so many resources
const std::size_t GrowthGoalSize = 100000; // those of growth for so many

double GoalAt(std::size_t size, double goal) {
    return size >= GoalSize ? goal : 0;
}

std::list<std::wstring> NamesByType() {
    CCluster cluster;
    std::list<std::wstring> names;
    Require(cluster.OpenByLPC() && cluster.EnumResourceNamesByType(StubStoreType, names),
            "EnumResourceNamesByType failed");
    return names;
}

// Own costs
// ---------------------------------------------------------------------------------------------------------------------

void AddOwnCost(Report& report, std::size_t size, const Comparison& times, double goal) {
    const double parts = static_cast<double>(size);
    report.Add({size, "library, own cost", times.Difference("library", "calls") * Nano / parts, "ns per resource",
                GoalAt(size, goal)});
    report.Add({size, "best loop, own cost", times.Difference("best", "calls") * Nano / parts, "ns per resource"});
    report.Add({size, "stub calls", times.Seconds("calls") * Nano / parts, "ns per resource"});
    report.Add(
        {size, "library with the calls, on the wall", times.WallSeconds("library") * Nano / parts, "ns per resource"});
    if (times.Allocations("library") != 0) {
        report.Add({size, "allocations", static_cast<double>(times.Allocations("library")) / parts, "per resource",
                    GoalAt(size, 0.5)});
        report.Add(
            {size, "peak memory", static_cast<double>(times.PeakBytes("library")) / parts, "bytes per resource"});
    }
}

// What the last size took, in seconds.
struct OwnTimes {
    double list = 0;
    double best = 0;
    double library = 0;
};

// That of the own costs, against that of the time of "list".
void AddGrowths(Report& report, std::size_t size, const Comparison& times, const char* list, OwnTimes& last) {
    const double most = AddGrowth(report, size, list, times.Seconds("list"), last.list);
    AddGrowth(report, size, "growth, best loop's own cost", times.Difference("best", "calls"), last.best);
    AddGrowth(report, size, "growth, own cost", times.Difference("library", "calls"), last.library,
              size == GrowthGoalSize ? most : 0);
}

void MeasureServersOnStubs(Report& report, Scale scale) {
    report.Begin("EnumServersOnCurrentNode on stubs",
                 "Calls that make up names; own cost is the time beyond that of the same calls alone. No "
                 "server is on this node. The best loop is written for this case alone and logs the same lines. The "
                 "names of all resources have to be kept until each is opened: the list is that of these names, one "
                 "behind the other in one block, and nothing else.",
                 "resources");
    OwnTimes last;
    for (const std::size_t size : ResourceCounts(scale)) {
        const StubCluster cluster(size);
        CVirtualServerUtil util;
        const auto library = [&util]() {
            int count = 0;
            Require(util.EnumServersOnCurrentNode(nullptr, &count) == CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA &&
                        count == 0,
                    "EnumServersOnCurrentNode failed");
        };
        const auto best = []() {
            Require(BestEnumServers([](HRESOURCE, bool) {}) == 0, "the best loop finds a server");
        };
        const auto calls = [size]() { CallsOfEnumServers(size); };
        const auto list = [size]() {
            std::vector<wchar_t> names;
            wchar_t text[LongestName];
            for (DWORD i = 0; i < size; ++i) {
                names.insert(names.end(), text, text + StubName(i, text, LongestName) + 1);
            }
            Require(names.size() > size, "names are missing");
        };
        Require(cluster.CallsOf(library) == cluster.CallsOf(calls) && cluster.CallsOf(best) == cluster.CallsOf(calls),
                "the contestants make other numbers of calls");
        const Comparison times = Compare({{"library", library}, {"best", best}, {"calls", calls}, {"list", list}});
        AddOwnCost(report, size, times, 250);
        AddGrowths(report, size, times, "growth of the list of names alone", last);
    }
}

void MeasureNamesOnStubs(Report& report, Scale scale) {
    report.Begin("EnumResourceNamesByType on stubs",
                 "The same; one resource in ten is of the type asked for. The result list is that of the names found, "
                 "made one by one as the calls make them, and nothing else.",
                 "resources");
    OwnTimes last;
    for (const std::size_t size : ResourceCounts(scale)) {
        const StubCluster cluster(size);
        const std::list<std::wstring> expected = BestNamesByType(StubStoreType);
        const auto library = [&expected]() {
            Require(NamesByType().size() == expected.size(), "EnumResourceNamesByType finds another number");
        };
        const auto best = [&expected]() {
            Require(BestNamesByType(StubStoreType).size() == expected.size(), "the best loop finds another number");
        };
        const auto calls = [size]() { CallsOfNamesByType(size); };
        const auto namesAlone = [size]() {
            std::list<std::wstring> names;
            wchar_t text[LongestName];
            for (DWORD i = StubStores; i < size; i += StubTypes) {
                StubName(i, text, LongestName);
                names.emplace_back(text);
            }
            return names;
        };
        const auto list = [&]() { Require(namesAlone().size() == expected.size(), "a list of another length"); };
        Require(NamesByType() == expected && namesAlone() == expected, "the contestants find other names");
        Require(cluster.CallsOf(library) == cluster.CallsOf(calls) && cluster.CallsOf(best) == cluster.CallsOf(calls),
                "the contestants make other numbers of calls");
        const Comparison times = Compare({{"library", library}, {"best", best}, {"calls", calls}, {"list", list}});
        AddOwnCost(report, size, times, 150);
        AddGrowths(report, size, times, "growth of the result list alone", last);
    }
}

// On the simulator
// ---------------------------------------------------------------------------------------------------------------------

void AddRatio(Report& report, std::size_t size, const Comparison& times, double goal) {
    Require(times.Calls("library") >= times.Calls("bare"), "the bare calls are more than the library's");
    report.Add({size, "library / bare calls", times.Ratio("library", "bare"), "", goal});
    if (times.Has("best")) {
        report.Add({size, "best loop / bare calls", times.Ratio("best", "bare"), ""});
    }
    report.Add({size, "library", times.Seconds("library") * Milli, "ms"});
    report.Add({size, "bare calls", times.Seconds("bare") * Milli, "ms"});
    report.Add({size, "library, on the wall", times.WallSeconds("library") * Milli, "ms"});
    report.Add({size, "cluster calls beyond the bare ones",
                static_cast<double>(times.Calls("library") - times.Calls("bare")), ""});
    if (times.Allocations("library") != 0) {
        report.Add({size, "peak memory", static_cast<double>(times.PeakBytes("library")), "bytes"});
    }
}

Comparison CompareServers(std::size_t size) {
    CVirtualServerUtil util;
    const std::size_t servers = size / ResourcesPerGroup - size / ResourcesPerGroup / 2; // every second group's
    std::vector<CClusterVirtualServerInfo> records(servers);
    const auto library = [&]() {
        int count = static_cast<int>(servers);
        Require(util.EnumServersOnCurrentNode(records.data(), &count) == CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS &&
                    static_cast<std::size_t>(count) == servers,
                "EnumServersOnCurrentNode failed");
    };
    const auto bare = [&]() {
        std::size_t next = 0;
        Require(BareEnumServers([&]() -> CClusterVirtualServerInfo& { return records.at(next++); }) == servers,
                "the bare loop finds another number of servers");
    };
    const auto best = [&]() {
        std::size_t next = 0;
        const auto fill = [&](HRESOURCE resource, bool isOnline) {
            CClusterVirtualServerInfo& record = records.at(next++);
            record.m_bIsOnline = isOnline;
            BareFillRecord(resource, record);
        };
        Require(BestEnumServers(fill) == servers, "the best loop finds another number of servers");
    };
    return Compare({{"library", library}, {"bare", bare}, {"best", best}});
}

Comparison CompareNames(std::size_t size) {
    const std::size_t expected = size / ResourcesPerGroup;
    const auto library = [=]() {
        Require(NamesByType().size() == expected, "EnumResourceNamesByType finds another number");
    };
    const auto bare = [=]() {
        Require(BareNamesOfType(StubStoreType) == expected, "the bare loop finds another number of stores");
    };
    const auto best = [=]() {
        Require(BestNamesByType(StubStoreType).size() == expected, "the best loop finds another number of stores");
    };
    return Compare({{"library", library}, {"bare", bare}, {"best", best}});
}

// The deletion of the first virtual server's product resource and its creation.
Comparison CompareProductResource() {
    const wchar_t server[] = L"EXVS0";
    const wchar_t name[] = L"Product 0";
    const wchar_t dataPath[] = L"E:\\data\\EXVS0";
    const wchar_t disk[] = L"Disk 0";
    TakeOffline(name);
    return Compare({{"library",
                     [&]() {
                         Require(
                             CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(server) &&
                                 CVirtualServerUtil::CreateKOVAResource(nullptr, name, dataPath, server, disk,
                                                                        CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY),
                             "the library does not delete and create the product resource");
                     }},
                    {"bare", [&]() {
                         BareDeleteProductResource(server);
                         BareCreateProductResource(server, name, dataPath, disk);
                     }}});
}

Comparison CompareDiskPaths() {
    const wchar_t root[] = L"F:\\";
    CCluster cluster;
    CClusterResource disk;
    Require(cluster.OpenByLPC() && cluster.OpenResourceByName(disk, L"Disk 0"), "the disk cannot be opened");
    return Compare({{"library",
                     [&]() {
                         std::vector<std::wstring> paths;
                         Require(GetDiskLettersFromResource(disk.GetResourceHandle(), paths) && paths.size() == 1 &&
                                     paths.front() == root,
                                 "GetDiskLettersFromResource failed");
                     }},
                    {"bare", [&]() {
                         Require(BareDiskPath(disk.GetResourceHandle()) == root, "the bare calls find another path");
                     }}});
}

struct Member {
    const char* subject;
    const char* explanation;
    double goal; // of the ratio
    Comparison (*compare)(std::size_t size);
};

const Member Members[] = {
    {"EnumServersOnCurrentNode on the simulator",
     "One resource in twenty is a server of this node. The best loop keeps the names in one block and logs the lines "
     "of "
     "the loop.",
     1.02, &CompareServers},
    {"EnumResourceNamesByType on the simulator",
     "One resource in ten is of the type. The best loop keeps the names in one block.", 1.02, &CompareNames},
    {"GetDiskLettersFromResource on the simulator", "One partition, whose device name is a drive.", 0,
     [](std::size_t) { return CompareDiskPaths(); }},
    {"DeleteKOVAResurceOnCurrentNode and CreateKOVAResource on the simulator", // last: it changes the cluster
     "Those of the first server; each looks through the network names first.", 1.0,
     [](std::size_t) { return CompareProductResource(); }}};

void MeasureOnSimulator(Report& report, Scale scale, const Member& member) {
    report.Begin(member.subject,
                 std::string(member.explanation) +
                     " The bare calls are those that the result needs, without owners of handles and without a log.",
                 "resources");
    for (const std::size_t size : ResourceCounts(scale)) {
        LoadCluster(size);
        ClusSimRecordJournal(0);
        AddRatio(report, size, member.compare(size), GoalAt(size, member.goal));
    }
    Require(ClusSimOpenHandles(nullptr) == 0, "cluster handles are left open");
}

} // namespace

void MeasureMembers(Report& report, Scale scale) {
    Require(ClusSimVersion() == 1, "another clusapi.dll than the simulator was loaded");
    const ClusteredRegistry registry;
    MeasureServersOnStubs(report, scale);
    MeasureNamesOnStubs(report, scale);
    for (const Member& member : Members) {
        MeasureOnSimulator(report, scale, member);
    }
}

} // namespace bench
