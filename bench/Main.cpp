// clusutil_bench: what enumeration costs on top of the cluster calls it needs.
//
// Library and bare loop run in turns in this process, on the same simulated cluster; the figures are medians.
#include "BareCalls.h"
#include "BenchCluster.h"
#include "MemoryMeter.h"

#include "ClusSimControl.h"
#include "clus_Cluster.h"
#include "clus_VirtualServerUtil.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const std::size_t MinimumRounds = 15;
const std::size_t MaximumRounds = 201;
const double SecondsPerCase = 8; // of six cases; more than that only for the minimum of rounds

const wchar_t StoreType[] = L"Microsoft Exchange Information Store";

double Seconds() {
    LARGE_INTEGER count, frequency;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double TimeOf(const std::function<void()>& call) {
    const double started = Seconds();
    call();
    return Seconds() - started;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Result {
    std::size_t rounds = 0;
    double library = 0;
    double bare = 0;
    std::size_t libraryCalls = 0;
    std::size_t bareCalls = 0;
    std::size_t peakBytes = 0;
    std::size_t allocations = 0;
};

std::size_t CallsOf(const std::function<void()>& call) {
    ClusSimClearJournal();
    call();
    return ClusSimCallCount(nullptr);
}

Result Measure(const std::function<void()>& library, const std::function<void()>& bare) {
    Result result;
    result.libraryCalls = CallsOf(library);
    result.bareCalls = CallsOf(bare);

    bench::MemoryMeter meter;
    if (meter.Works()) {
        meter.Start();
        library();
        meter.Stop();
        result.peakBytes = meter.PeakBytes();
        result.allocations = meter.Allocations();
    }

    std::vector<double> libraryTimes, bareTimes;
    const double started = Seconds();
    while (libraryTimes.size() < MinimumRounds ||
           (libraryTimes.size() < MaximumRounds && Seconds() - started < SecondsPerCase)) {
        // Whoever goes first finds colder caches: take turns in that too.
        if (libraryTimes.size() % 2 == 0) {
            libraryTimes.push_back(TimeOf(library));
            bareTimes.push_back(TimeOf(bare));
        } else {
            bareTimes.push_back(TimeOf(bare));
            libraryTimes.push_back(TimeOf(library));
        }
    }
    result.rounds = libraryTimes.size();
    result.library = Median(libraryTimes);
    result.bare = Median(bareTimes);
    return result;
}

Result MeasureEnumServers(std::size_t resources, std::size_t& servers) {
    CVirtualServerUtil util;
    int count = 0;
    if (util.EnumServersOnCurrentNode(nullptr, &count) != CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA) {
        throw std::runtime_error("EnumServersOnCurrentNode does not answer with a count");
    }
    servers = static_cast<std::size_t>(count);
    if (servers != resources / bench::ResourcesPerGroup / 2) {
        throw std::runtime_error("EnumServersOnCurrentNode finds another number of servers than were made");
    }
    std::vector<CClusterVirtualServerInfo> records(servers);
    return Measure(
        [&]() {
            int capacity = count;
            if (util.EnumServersOnCurrentNode(records.data(), &capacity) !=
                CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS) {
                throw std::runtime_error("EnumServersOnCurrentNode failed");
            }
        },
        [&]() {
            if (bench::BareEnumServers(records.data(), records.size()) != servers) {
                throw std::runtime_error("the bare loop finds another number of servers");
            }
        });
}

Result MeasureNamesByType(std::size_t resources) {
    const std::size_t expected = resources / bench::ResourcesPerGroup;
    return Measure(
        [&]() {
            CCluster cluster;
            std::list<std::wstring> names;
            if (!cluster.OpenByLPC() || !cluster.EnumResourceNamesByType(StoreType, names) ||
                names.size() != expected) {
                throw std::runtime_error("EnumResourceNamesByType failed");
            }
        },
        [&]() {
            if (bench::BareCountResourcesOfType(StoreType) != expected) {
                throw std::runtime_error("the bare loop finds another number of stores");
            }
        });
}

void Print(std::size_t resources, const Result& result, const Result* smaller, std::size_t recordsHeld) {
    std::printf(
        "%6u resources: library %9.3f ms, bare %9.3f ms, ratio %.3f (target 1.10 at most), %.3f us more per resource",
        static_cast<unsigned>(resources), result.library * 1e3, result.bare * 1e3, result.library / result.bare,
        (result.library - result.bare) * 1e6 / static_cast<double>(resources));
    if (smaller) {
        std::printf(", growth x%.2f, bare x%.2f (target 11 at most)", result.library / smaller->library,
                    result.bare / smaller->bare);
    }
    std::printf("; %u rounds\n", static_cast<unsigned>(result.rounds));
    std::printf("%17s  cluster calls: library %u, needed %u\n", "", static_cast<unsigned>(result.libraryCalls),
                static_cast<unsigned>(result.bareCalls));
    if (result.allocations == 0) {
        std::printf("%17s  memory: not measured, the C++ runtime is no DLL of its own\n", "");
        return;
    }
    const std::size_t target = 4096 * recordsHeld + 200 * resources;
    std::printf(
        "%17s  peak memory: %u bytes in %u allocations (target %u: 4 KiB per server found, 200 bytes per resource)\n",
        "", static_cast<unsigned>(result.peakBytes), static_cast<unsigned>(result.allocations),
        static_cast<unsigned>(target));
}

int Run() {
    if (ClusSimVersion() != 1) {
        throw std::runtime_error("another clusapi.dll than the simulator was loaded");
    }
    const bench::ClusteredRegistry registry;
    std::printf("Medians of rounds in which library and bare loop take turns; log off, simulated cluster in memory.\n"
                "One server in %u resources is on this node; a record takes %u bytes.\n"
                "Memory is what malloc of the C++ runtime and the library's LocalAlloc hand out during one call.\n",
                static_cast<unsigned>(bench::ResourcesPerGroup * 2),
                static_cast<unsigned>(sizeof(CClusterVirtualServerInfo)));
    const std::size_t sizes[] = {100, 1000, 10000};
    std::vector<Result> servers, names;
    std::vector<std::size_t> serverCounts;
    for (const std::size_t size : sizes) {
        bench::LoadCluster(size);
        ClusSimRecordJournal(0);
        serverCounts.push_back(0);
        servers.push_back(MeasureEnumServers(size, serverCounts.back()));
        names.push_back(MeasureNamesByType(size));
    }
    std::printf("\nCVirtualServerUtil::EnumServersOnCurrentNode\n");
    for (std::size_t i = 0; i < servers.size(); ++i) {
        Print(sizes[i], servers[i], i ? &servers[i - 1] : nullptr, serverCounts[i]);
    }
    std::printf("\nCCluster::EnumResourceNamesByType\n");
    for (std::size_t i = 0; i < names.size(); ++i) {
        Print(sizes[i], names[i], i ? &names[i - 1] : nullptr, 0);
    }
    if (ClusSimOpenHandles(nullptr) != 0) {
        throw std::runtime_error("cluster handles are left open");
    }
    return 0;
}

} // namespace

int main() {
    SetEnvironmentVariableW(L"CLUSUTIL_LOG_LEVEL", L"off"); // read with the first log line
    SetEnvironmentVariableW(L"CLUSUTIL_LOG_FILE", nullptr);
    try {
        return Run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "clusutil_bench: %s\n", error.what());
        return 1;
    }
}
