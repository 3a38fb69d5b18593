#include "DiskCommand.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "Text.h"

#include <memory>

namespace {

const char Heading[] = "The cluster";

Report Disk(const std::wstring& resourceName) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const ResourceHandle resource = RequireResource(cluster, resourceName);
    std::vector<std::wstring> paths;
    if (!GetDiskLettersFromResource(resource.get(), paths)) {
        throw Failure("cannot read the disk information of " + Quoted(resourceName));
    }
    Json records = Json::array();
    for (const std::wstring& path : paths) {
        records.push_back({{"path", path}});
    }
    Report report;
    report.AddTable("paths", records, {{"path", "PATH"}},
                    "No partition of " + Quoted(resourceName) + " has a path on this node.");
    return report;
}

} // namespace

void AddDiskCommand(CommandLine& commandLine) {
    const auto name = std::make_shared<std::wstring>();
    CLI::App& disk = commandLine.Add(Heading, "disk", "List the paths of a cluster disk's partitions on this node",
                                     [name](const LogCapture&) { return Disk(*name); });
    CommandLine::AddText(disk, "RESOURCE", *name, "RESOURCE", "The disk's resource").required();
}
