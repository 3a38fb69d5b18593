#include "ReportCommand.h"

#include "ClusterInUse.h"
#include "CommandLine.h"
#include "Deployment.h"
#include "Doctor.h"
#include "NewFile.h"
#include "Simulation.h"
#include "Status.h"
#include "Text.h"
#include "ThisComputer.h"

#include "picture/HtmlPage.h"

#include "common/Files.h"
#include "common/UtcTime.h"

#include <clus_VirtualServerUtil.h>

#include <memory>

using namespace picture;

namespace {

const char Heading[] = "The cluster";

PageTable Settings() {
    PageTable table = {"The product's settings on this computer", "", {"Setting", "Value"}, {}};
    const Deployment deployment = ReadDeployment();
    table.rows.push_back({"Deployment", deployment.kind});
    table.rows.push_back({"Because", deployment.reason});
    table.rows.push_back({"Registry key", common::ToUtf8(CVirtualServerUtil::GetProductRegistryKey())});
    table.rows.push_back({"Data root", common::ToUtf8(CVirtualServerUtil::GetDataRootPath())});
    return table;
}

// The doctor's findings, the worst first; what is well is only counted.
PageTable FindingsTable(const Findings& findings) {
    PageTable table = {"Findings", "", {"Level", "Code", "Group", "Object", "Seen", "Mend"}, {}};
    for (const FindingLevel level : {FindingLevel::Error, FindingLevel::Warning, FindingLevel::Note}) {
        for (const Finding& finding : findings.All()) {
            if (finding.code->level == level) {
                table.rows.push_back({LevelWord(level), finding.code->name, common::ToUtf8(finding.group),
                                      finding.object, finding.seen, finding.mend});
            }
        }
    }
    const size_t good = findings.Count(FindingLevel::Ok);
    table.rows.push_back({LevelWord(FindingLevel::Ok), "", "", "", std::to_string(good) + " things are well.", ""});
    return table;
}

Report WriteReport(const LogCapture& log, const std::wstring& file, bool allowsWritableTools) {
    RequireNoFile(file);
    Report report;
    const Simulation simulation(ClusterInUse());
    const Status status = ReadStatus(log, report);
    PageContent content;
    content.madeAt = common::ShownUtcNow();
    content.madeBy = "clusctl " CLUSCTL_VERSION;
    content.computer = common::ToUtf8(ComputerName());
    if (simulation.HasAnswered(log.Tools().Count() != 0)) {
        content.simulated = simulation.File().empty() ? "no file" : common::ToUtf8(simulation.File());
    }
    const Findings findings = Diagnose(log, {std::wstring(), allowsWritableTools});
    content.warnings = report.Warnings();
    content.tables = {FindingsTable(findings), Settings()};
    content.cluster = status.cluster;
    content.health = status.health;
    WriteNewFile(file, HtmlPage(content));
    report.AddSentence("report",
                       {{"file", file},
                        {"level", NameOf(status.health.level)},
                        {"nodes", status.cluster.nodes.size()},
                        {"groups", status.cluster.groups.size()},
                        {"resources", status.cluster.resources.size()}},
                       "Wrote " + Printable(file) + ".");
    return report;
}

} // namespace

void AddReportCommand(CommandLine& commandLine) {
    const auto file = std::make_shared<std::wstring>();
    CLI::App& report = commandLine.Add(Heading, "report", "Write how the cluster is as a page for a browser",
                                       [file, &commandLine](const LogCapture& log) {
                                           return WriteReport(log, *file, commandLine.Shared().allowsWritableTools);
                                       });
    CommandLine::AddText(report, "FILE", *file, "FILE", "The page to write; there must be none of that name")
        .required()
        // Commands of VCS do not run where the user is.
        ->transform([](const std::string& text) { return common::ToUtf8(common::FullPath(common::ToUtf16(text))); });
}
