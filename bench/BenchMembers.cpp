#include "BenchMembers.h"

#include "BareCalls.h"
#include "BareSupport.h"
#include "BenchCluster.h"
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
const std::size_t GoalSize = 10000; // goals are set for so many resources

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
    if (times.Allocations("library") != 0) {
        report.Add({size, "allocations", static_cast<double>(times.Allocations("library")) / parts, "per resource",
                    GoalAt(size, 0.5)});
        report.Add(
            {size, "peak memory", static_cast<double>(times.PeakBytes("library")) / parts, "bytes per resource"});
    }
}

// How much longer it takes than a tenth of it did.
class Growth {
public:
    // Gives it too: 0 for the first size.
    double Add(Report& report, std::size_t size, const Comparison& times, const char* contestant, const char* measure,
               double goal = 0) {
        const double seconds = times.Seconds(contestant);
        const double growth = m_last != 0 ? seconds / m_last : 0;
        if (growth != 0) {
            report.Add({size, measure, growth, "times a tenth", goal});
        }
        m_last = seconds;
        return growth;
    }

private:
    double m_last = 0;
};

void MeasureServersOnStubs(Report& report, Scale scale) {
    report.Begin("EnumServersOnCurrentNode on stubs",
                 "Calls that make up names; own cost is the time beyond that of the same calls alone. No "
                 "server is on this node. The best loop is written for this case alone and logs the same lines.",
                 "resources");
    Growth growth;
    for (const std::size_t size : ResourceCounts(scale)) {
        const StubCluster cluster(size);
        CVirtualServerUtil util;
        const auto library = [&util]() {
            int count = 0;
            Require(util.EnumServersOnCurrentNode(nullptr, &count) == CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA &&
                        count == 0,
                    "EnumServersOnCurrentNode failed");
        };
        const auto best = []() { Require(BestEnumServers() == 0, "the best loop finds a server"); };
        const auto calls = [size]() { CallsOfEnumServers(size); };
        Require(cluster.CallsOf(library) == cluster.CallsOf(calls) && cluster.CallsOf(best) == cluster.CallsOf(calls),
                "the contestants make other numbers of calls");
        const Comparison times = Compare({{"library", library}, {"best", best}, {"calls", calls}});
        AddOwnCost(report, size, times, 250);
        growth.Add(report, size, times, "library", "growth");
    }
}

void MeasureNamesOnStubs(Report& report, Scale scale) {
    report.Begin("EnumResourceNamesByType on stubs",
                 "The same; one resource in ten is of the type asked for. The result list is that of the names found, "
                 "and nothing else.",
                 "resources");
    Growth growth, growthOfList;
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
        const auto list = [&expected]() {
            std::list<std::wstring> names;
            names.insert(names.end(), expected.begin(), expected.end());
            Require(names.size() == expected.size(), "a list of another length");
        };
        Require(NamesByType() == expected, "the library and the best loop find other names");
        Require(cluster.CallsOf(library) == cluster.CallsOf(calls) && cluster.CallsOf(best) == cluster.CallsOf(calls),
                "the contestants make other numbers of calls");
        const Comparison times = Compare({{"library", library}, {"best", best}, {"calls", calls}, {"list", list}});
        AddOwnCost(report, size, times, 150);
        const double most = growthOfList.Add(report, size, times, "list", "growth of the result list alone");
        growth.Add(report, size, times, "library", "growth", GoalAt(size, most));
    }
}

// On the simulator
// ---------------------------------------------------------------------------------------------------------------------

void AddRatio(Report& report, std::size_t size, const Comparison& times, double goal) {
    Require(times.Calls("library") >= times.Calls("bare"), "the bare calls are more than the library's");
    report.Add({size, "library / bare calls", times.Ratio("library", "bare"), "", goal});
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
    return Compare({{"library",
                     [&]() {
                         int count = static_cast<int>(servers);
                         Require(util.EnumServersOnCurrentNode(records.data(), &count) ==
                                         CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS &&
                                     static_cast<std::size_t>(count) == servers,
                                 "EnumServersOnCurrentNode failed");
                     }},
                    {"bare", [&]() {
                         Require(BareEnumServers(records.data(), records.size()) == servers,
                                 "the bare loop finds another number of servers");
                     }}});
}

Comparison CompareNames(std::size_t size) {
    const std::size_t expected = size / ResourcesPerGroup;
    return Compare(
        {{"library",
          [&]() { Require(NamesByType().size() == expected, "EnumResourceNamesByType finds another number"); }},
         {"bare", [&]() {
              Require(BareNamesOfType(StubStoreType) == expected, "the bare loop finds another number of stores");
          }}});
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
    {"EnumServersOnCurrentNode on the simulator", "One resource in twenty is a server of this node.", 1.02,
     &CompareServers},
    {"EnumResourceNamesByType on the simulator", "One resource in ten is of the type.", 1.02, &CompareNames},
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
