#include "ReportCommand.h"

#include "ClusterInUse.h"
#include "CommandLine.h"
#include "Deployment.h"
#include "Doctor.h"
#include "NewFile.h"
#include "ReportPage.h"
#include "Simulation.h"
#include "Status.h"
#include "Text.h"

#include "picture/HtmlPage.h"

#include "common/Files.h"

#include <memory>

using namespace picture;

namespace {

Report WriteReport(const LogCapture& log, const std::wstring& file, bool allowsWritableTools) {
    RequireNoFile(file);
    Report report;
    const Simulation simulation(ClusterInUse());
    const Status status = ReadStatus(log, report);
    const Findings findings = Diagnose(log, {std::wstring(), allowsWritableTools});
    const PageContent content = ReportPage(status, findings, report.Warnings(),
                                           simulation.HasAnswered(log.Tools().Count() != 0) ? &simulation : nullptr);
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
    CLI::App& report =
        commandLine.Add(headings::TheCluster, "report", "Write how the cluster is as a page for a browser",
                        [file, &commandLine](const LogCapture& log) {
                            return WriteReport(log, *file, commandLine.Shared().allowsWritableTools);
                        });
    CommandLine::AddText(report, "FILE", *file, "FILE", "The page to write; there must be none of that name")
        .required()
        // Commands of VCS do not run where the user is.
        ->transform([](const std::string& text) { return common::ToUtf8(common::FullPath(common::ToUtf16(text))); });
    AddExplain(report);
}
