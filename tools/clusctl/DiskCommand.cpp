#include "DiskCommand.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "PropertyJson.h"
#include "Text.h"

#include <memory>

namespace {

Report Disk(const std::wstring& resourceName) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const ResourceHandle resource = RequireResource(cluster, resourceName);
    std::vector<unsigned char> information;
    DWORD code = 0;
    std::vector<std::wstring> paths;
    if (!QueryResource(resource.get(), CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, information, code)) {
        throw code == ERROR_INVALID_FUNCTION
            ? Failure(Errors::NotPossible, Quoted(resourceName) + " is no disk")
            : Failure::OfCode("cannot read the disk information of " + Quoted(resourceName), code, Errors::Incomplete);
    }
    if (!GetDiskLettersFromResource(resource.get(), paths)) {
        throw Failure(Errors::Incomplete, "cannot read the disk information of " + Quoted(resourceName));
    }
    Json records = Json::array();
    for (const std::wstring& path : paths) {
        records.push_back({{"path", path}});
    }
    Report report;
    const size_t partitions = DiskJson(information)["partitions"].size();
    if (paths.size() < partitions) {
        report.MarkIncomplete(std::to_string(partitions - paths.size()) + " of " + std::to_string(partitions) +
                              (partitions == 1 ? " partition" : " partitions") + " of " + Quoted(resourceName) +
                              " has no path that this node can tell");
    }
    report.AddTable("paths", records, {{"path", "PATH"}},
                    "No partition of " + Quoted(resourceName) + " has a path on this node.");
    return report;
}

} // namespace

void AddDiskCommand(CommandLine& commandLine) {
    const auto name = std::make_shared<std::wstring>();
    CLI::App& disk =
        commandLine.Add(headings::TheCluster, "disk", "List the paths of a cluster disk's partitions on this node",
                        [name](const LogCapture&) { return Disk(*name); });
    CommandLine::AddText(disk, "RESOURCE", *name, "RESOURCE", "The disk's resource").required();
}
