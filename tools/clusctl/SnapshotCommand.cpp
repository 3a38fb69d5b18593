#include "SnapshotCommand.h"

#include "ClusterModel.h"
#include "CommandLine.h"
#include "Text.h"

#include "common/Files.h"

#include <memory>

namespace {

const char Heading[] = "Rehearsal";

// The file appears complete or not at all.
void WriteModel(const std::wstring& file, const Json& model) {
    // A suffix of this process's own: several may write at once, and the last one's file stays.
    const std::wstring suffix = L"." + std::to_wstring(GetCurrentProcessId()) + L".new";
    try {
        common::WriteWholeFile(file, common::DumpJson(model), suffix);
    } catch (const common::FileError& error) {
        const bool isComplete = std::string(error.Attempt()) == "replaced"; // and stands beside what is in its way
        throw Failure((isComplete ? "cannot write " : "cannot create ") + Quoted(file) + ": " +
                      ErrorText(error.Code()));
    }
}

std::string Counted(size_t count, const char* word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

Report Snapshot(const std::wstring& file) {
    const Json model = ReadClusterModel();
    if (file.empty()) {
        return Report::Verbatim(model);
    }
    WriteModel(file, model);
    const size_t nodes = model["nodes"].size();
    const size_t groups = model["groups"].size();
    const size_t resources = model["resources"].size();
    Report report;
    report.AddSentence("snapshot", {{"file", file}, {"nodes", nodes}, {"groups", groups}, {"resources", resources}},
                       "Wrote " + Printable(file) + ": " + Counted(nodes, "node") + ", " + Counted(groups, "group") +
                           ", " + Counted(resources, "resource") + ".");
    return report;
}

} // namespace

void AddSnapshotCommand(CommandLine& commandLine) {
    const auto file = std::make_shared<std::wstring>();
    CLI::App& command =
        commandLine.Add(Heading, "snapshot", "Write the cluster as a model file of the cluster simulator",
                        [file](const LogCapture&) { return Snapshot(*file); });
    CommandLine::AddText(command, "FILE", *file, "FILE", "The file to write; standard output without it");
}
