#include "DoctorCommand.h"

#include "CommandLine.h"
#include "Doctor.h"
#include "Progress.h"
#include "Text.h"

#include <memory>

namespace {

std::string Line(const Finding& finding) {
    const std::string level = LevelWord(finding.code->level);
    std::string text = "  " + level + std::string(9 - level.size(), ' ') + Printable(finding.object) + ": " +
                       finding.seen + " [" + finding.code->name + "]\n";
    if (finding.code->effect[0] != '\0') {
        text += "           So: " + std::string(finding.code->effect) + "\n";
    }
    text += finding.mend.empty() ? "" : "           Do: " + finding.mend + "\n";
    return finding.ask.empty() ? text : text + "           Ask: " + finding.ask + "\n";
}

std::string Counted(size_t count, const std::string& word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

std::string Text(const Findings& findings) {
    std::string text = "This computer and its cluster:\n";
    std::wstring group;
    for (const Finding& finding : findings.All()) {
        if (finding.group != group) {
            group = finding.group;
            text += "\n" + (group.empty() ? "The cluster as a whole" : "Group " + Quoted(group)) + ":\n";
        }
        text += Line(finding);
    }
    return text + "\n" + Counted(findings.Count(FindingLevel::Error), "error") + ", " +
           Counted(findings.Count(FindingLevel::Warning), "warning") + ", " +
           Counted(findings.Count(FindingLevel::Note), "note") + ".";
}

ExitCode CodeOf(FindingLevel worst) {
    return worst == FindingLevel::Error ? ExitErrors : worst == FindingLevel::Warning ? ExitWarnings : ExitDone;
}

Report Doctor(const LogCapture& log, const DoctorRequest& request) {
    const Progress progress(log, []() { return std::string("asking the cluster"); });
    const Findings findings = Diagnose(log, request);
    Report report;
    report.AddSentence("findings", findings.Records(), Text(findings));
    report.AddMember("worst", LevelWord(findings.Worst()));
    report.EndWith(CodeOf(findings.Worst()));
    return report;
}

} // namespace

void AddDoctorCommand(CommandLine& commandLine) {
    const auto wanted = std::make_shared<std::wstring>();
    CLI::App& doctor = commandLine.Add(headings::ServersHere, "doctor",
                                       "Tell step by step why servers are served on this node or not, and what to do",
                                       [wanted, &commandLine](const LogCapture& log) {
                                           return Doctor(log, {*wanted, commandLine.Shared().allowsWritableTools});
                                       });
    CommandLine::AddText(doctor, "SERVER|GROUP", *wanted, "SERVER|GROUP", "Only this virtual server, or this group");
}
