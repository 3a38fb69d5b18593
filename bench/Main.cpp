// clusutil_bench [cluster|veritas|clusctl]: what the library costs on top of the platform calls it needs.
//
// Library and bare calls run in turns in this process, on the same simulated cluster; the figures are medians.
#include "BareCalls.h"
#include "BareSupport.h"
#include "BenchCluster.h"
#include "BenchCommands.h"
#include "BenchVeritas.h"
#include "Measurement.h"

#include "ClusSimControl.h"
#include "clus_Cluster.h"
#include "clus_VirtualServerUtil.h"

#include <cstdio>
#include <exception>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const wchar_t StoreType[] = L"Microsoft Exchange Information Store";

bench::Result MeasureEnumServers(std::size_t resources, std::size_t& servers) {
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
    return bench::Measure(
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

bench::Result MeasureNamesByType(std::size_t resources) {
    const std::size_t expected = resources / bench::ResourcesPerGroup;
    return bench::Measure(
        [&]() {
            CCluster cluster;
            std::list<std::wstring> names;
            if (!cluster.OpenByLPC() || !cluster.EnumResourceNamesByType(StoreType, names) ||
                names.size() != expected) {
                throw std::runtime_error("EnumResourceNamesByType failed");
            }
        },
        [&]() {
            if (bench::BareNamesOfType(StoreType) != expected) {
                throw std::runtime_error("the bare loop finds another number of stores");
            }
        });
}

// The deletion of the first virtual server's product resource and its creation.
bench::Result MeasureProductResource() {
    const wchar_t server[] = L"EXVS0";
    const wchar_t name[] = L"Product 0";
    const wchar_t dataPath[] = L"E:\\data\\EXVS0";
    const wchar_t disk[] = L"Disk 0";
    bench::TakeOffline(name);
    return bench::Measure(
        [&]() {
            if (!CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(server) ||
                !CVirtualServerUtil::CreateKOVAResource(nullptr, name, dataPath, server, disk,
                                                        CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY)) {
                throw std::runtime_error("the library does not delete and create the product resource");
            }
        },
        [&]() {
            bench::BareDeleteProductResource(server);
            bench::BareCreateProductResource(server, name, dataPath, disk);
        });
}

bench::Result MeasureDiskPaths() {
    const std::size_t repetitions = 500; // one takes microseconds
    const wchar_t root[] = L"F:\\";
    CCluster cluster;
    CClusterResource disk;
    if (!cluster.OpenByLPC() || !cluster.OpenResourceByName(disk, L"Disk 0")) {
        throw std::runtime_error("the disk cannot be opened");
    }
    return bench::Measure(
        [&]() {
            std::vector<std::wstring> paths;
            if (!GetDiskLettersFromResource(disk.GetResourceHandle(), paths) || paths.size() != 1 ||
                paths.front() != root) {
                throw std::runtime_error("GetDiskLettersFromResource failed");
            }
        },
        [&]() {
            if (bench::BareDiskPath(disk.GetResourceHandle()) != root) {
                throw std::runtime_error("the bare calls find another path");
            }
        },
        repetitions);
}

void MeasureCluster() {
    if (ClusSimVersion() != 1) {
        throw std::runtime_error("another clusapi.dll than the simulator was loaded");
    }
    const bench::ClusteredRegistry registry;
    std::printf("Medians of rounds in which library and bare calls take turns; log off, simulated cluster in memory.\n"
                "One server in %u resources is on this node; a record takes %u bytes.\n"
                "Memory is what malloc of the C++ runtime and the library's LocalAlloc hand out during one call.\n",
                static_cast<unsigned>(bench::ResourcesPerGroup * 2),
                static_cast<unsigned>(sizeof(CClusterVirtualServerInfo)));
    const std::size_t sizes[] = {100, 1000, 10000};
    std::vector<bench::Result> servers, names, products, disks;
    std::vector<std::size_t> serverCounts;
    for (const std::size_t size : sizes) {
        bench::LoadCluster(size);
        ClusSimRecordJournal(0);
        serverCounts.push_back(0);
        servers.push_back(MeasureEnumServers(size, serverCounts.back()));
        names.push_back(MeasureNamesByType(size));
        disks.push_back(MeasureDiskPaths());
        products.push_back(MeasureProductResource());
    }
    const auto before = [](const std::vector<bench::Result>& results, std::size_t i) {
        return i ? &results[i - 1] : nullptr;
    };
    std::printf("\nCVirtualServerUtil::EnumServersOnCurrentNode\n");
    for (std::size_t i = 0; i < servers.size(); ++i) {
        bench::Print(sizes[i], servers[i], before(servers, i), sizes[i], "resource",
                     4096 * serverCounts[i] + 200 * sizes[i]);
    }
    std::printf("\nCCluster::EnumResourceNamesByType\n");
    for (std::size_t i = 0; i < names.size(); ++i) {
        bench::Print(sizes[i], names[i], before(names, i), sizes[i], "resource", 200 * sizes[i]);
    }
    std::printf("\nCVirtualServerUtil::DeleteKOVAResurceOnCurrentNode, then CreateKOVAResource\n");
    for (std::size_t i = 0; i < products.size(); ++i) {
        bench::Print(sizes[i], products[i], nullptr, 1, "pair", 0);
    }
    std::printf("\nGetDiskLettersFromResource, device name \"F:\"\n");
    for (std::size_t i = 0; i < disks.size(); ++i) {
        bench::Print(sizes[i], disks[i], nullptr, 1, "call", 0);
    }
    if (ClusSimOpenHandles(nullptr) != 0) {
        throw std::runtime_error("cluster handles are left open");
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::string part = argumentCount == 2 ? arguments[1] : "";
    const bool isBare = argumentCount == 3 && std::string(arguments[1]) == "bare"; // a process of the third part
    if (!isBare &&
        (argumentCount > 2 || (argumentCount == 2 && part != "cluster" && part != "veritas" && part != "clusctl"))) {
        std::fprintf(stderr, "usage: clusutil_bench [cluster|veritas|clusctl]\n");
        return 2;
    }
    SetEnvironmentVariableW(L"CLUSUTIL_LOG_LEVEL", L"off"); // read with the first log line
    SetEnvironmentVariableW(L"CLUSUTIL_LOG_FILE", nullptr);
    try {
        if (isBare) {
            bench::RunBareCommand(arguments[2]);
            return 0;
        }
        if (part.empty() || part == "cluster") {
            MeasureCluster();
        }
        if (part.empty() || part == "veritas") {
            bench::MeasureVeritas();
        }
        if (part.empty() || part == "clusctl") {
            bench::MeasureCommands();
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "clusutil_bench: %s\n", error.what());
        return 1;
    }
}
