#include "SnapshotCommand.h"

#include "ClusterModel.h"
#include "CommandLine.h"
#include "NewFile.h"
#include "PropertyJson.h"
#include "Text.h"

#include "common/Files.h"

#include <memory>
#include <utility>

namespace {

struct SnapshotOptions {
    std::wstring file;
    bool showSecrets = false;
};

std::string Counted(size_t count, const char* word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

Report Snapshot(const LogCapture& log, const SnapshotOptions& options) {
    Report report;
    Json model = ReadClusterModel(log, report);
    if (!options.showSecrets) {
        for (const std::string& masked : MaskSecrets(model)) {
            report.AddWarning("masked " + masked + ": --show-secrets writes the true values");
        }
    }
    const std::wstring& file = options.file;
    if (file.empty()) {
        return Report::Verbatim(std::move(model), report);
    }
    WriteModel(file, model);
    const size_t nodes = model["nodes"].size();
    const size_t groups = model["groups"].size();
    const size_t resources = model["resources"].size();
    report.AddSentence("snapshot", {{"file", file}, {"nodes", nodes}, {"groups", groups}, {"resources", resources}},
                       "Wrote " + Printable(file) + ": " + Counted(nodes, "node") + ", " + Counted(groups, "group") +
                           ", " + Counted(resources, "resource") + ".");
    return report;
}

} // namespace

std::vector<std::string> MaskSecrets(Json& model) {
    std::vector<std::string> masked;
    for (Json& resource : model["resources"]) {
        const auto properties = resource.find("private");
        const size_t count = properties == resource.end() ? 0 : MaskSecretProperties(*properties);
        if (count != 0) {
            masked.push_back(Counted(count, "secret") + " of " + Quoted(resource["name"].get<std::string>()));
        }
    }
    return masked;
}

void WriteModel(const std::wstring& file, const Json& model) {
    const std::wstring fresh = FreshNameBeside(file); // several may write at once: the last one's file stays
    try {
        common::WriteWholeFile(fresh, common::DumpJson(model));
        common::MoveFileOver(fresh, file);
    } catch (const common::FileError& error) {
        DeleteFileW(fresh.c_str());
        const bool isComplete = std::string(error.Attempt()) == "replaced"; // and stands beside what is in its way
        throw Failure::OfCode((isComplete ? "cannot write " : "cannot create ") + QuotedPath(file), error.Code());
    }
}

void AddSnapshotCommand(CommandLine& commandLine) {
    const auto options = std::make_shared<SnapshotOptions>();
    CLI::App& command =
        commandLine.Add(headings::Rehearsal, "snapshot", "Write the cluster as a model file of the cluster simulator",
                        [options](const LogCapture& log) { return Snapshot(log, *options); });
    CommandLine::AddText(command, "FILE", options->file, "FILE", "The file to write; standard output without it");
    command.add_flag("--show-secrets", options->showSecrets,
                     "Write private properties that are secrets as they are; see [secrets](#secrets)");
}
