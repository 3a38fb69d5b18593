// clusctl probe.
#include "CommandLine.h"
#include "ClusterInUse.h"
#include "Deployment.h"
#include "LogCapture.h"
#include "Probe.h"
#include "Report.h"
#include "Text.h"
#include "VcsTools.h"

#include "common/Files.h"

#include <memory>

namespace {

struct ProbeOptions {
    std::wstring file;
    bool showsNames = false;
};

// Throws Failure when the tool, or the engine, is not there.
ToolOutput AskVcs(const LogCapture& log, const std::wstring& tool, const std::wstring& arguments) {
    const ToolWatch watch(log);
    ToolOutput answer = RunVcsTool(tool, arguments);
    for (const ToolProblem& problem : watch.Problems()) {
        if (problem.kind != ToolProblem::Kind::Message && problem.kind != ToolProblem::Kind::Ended) {
            throw ToolFailure("cannot ask VCS", {problem});
        }
    }
    return answer;
}

Report Probe(const LogCapture& log, const ProbeOptions& options) {
    const bool isVcs = ClusterInUse() == Answering::Vcs;
    const ProbeAnswers answers = isVcs ? ProbeVcs([&log](const std::wstring& tool, const std::wstring& arguments) {
        return AskVcs(log, tool, arguments);
    })
                                       : ProbeFailoverCluster();
    const Json records = answers.Records(options.showsNames);
    const size_t differing = answers.CountDiffering();
    const size_t unanswered = records.size() - answers.CountAnswered();
    const Json summary = {{"cluster", isVcs ? "vcs" : "failover"},
                          {"asSimulated", records.size() - differing - unanswered},
                          {"differing", differing},
                          {"notAnswerable", unanswered}};
    if (!options.file.empty()) {
        if (common::FileExists(options.file)) {
            throw Failure(Errors::AlreadyExists, "there is a file " + Quoted(options.file) + " already");
        }
        try {
            common::WriteWholeFile(options.file, common::DumpJson({{"summary", summary}, {"rules", records}}));
        } catch (const common::FileError& error) {
            throw Failure::OfCode("cannot create " + Quoted(options.file), error.Code());
        }
    }
    Report report;
    report.AddTable("rules", records,
                    options.showsNames
                        ? Columns{{"rule", "RULE"}, {"answer", "ANSWER"}, {"seen", "SEEN"}, {"object", "OBJECT"}}
                        : Columns{{"rule", "RULE"}, {"answer", "ANSWER"}, {"seen", "SEEN"}},
                    "");
    report.AddSentence("summary", summary,
                       std::to_string(records.size() - differing - unanswered) + " rules as simulated, " +
                           std::to_string(differing) + " different, " + std::to_string(unanswered) +
                           " not answerable here.");
    return report;
}

} // namespace

void AddProbeCommand(CommandLine& commandLine) {
    const auto options = std::make_shared<ProbeOptions>();
    CLI::App& command =
        commandLine.Add("Diagnosis", "probe", "Tell where this cluster behaves as the simulators do, by reading only",
                        [options](const LogCapture& log) { return Probe(log, *options); });
    CommandLine::AddText(command, "FILE", options->file, "FILE", "Also write the answers to a file, as JSON");
    command.add_flag("--show-names", options->showsNames, "Name the objects at which something was seen");
    AddExplain(command);
}
