// "vcs snapshot": the live cluster as a model of the VCS simulator.
#include "CommandLine.h"
#include "ModelInUse.h"
#include "NewFile.h"
#include "Text.h"
#include "VcsCommands.h"
#include "VcsModel.h"

#include "common/Files.h"
#include "common/Text.h"

#include <CLI/Validators.hpp>

#include <memory>

namespace {

struct Options {
    std::wstring folder;
    VcsModelSource source;
};

std::string Counted(std::size_t count, const char* word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

// Where the command runs is not where the user is (VcsFolder).
void AddPath(CLI::App& command, const char* name, std::wstring& path, const char* typeName, const char* description,
             bool isRequired) {
    CLI::Option& option = CommandLine::AddText(command, name, path, typeName, description);
    option.transform(CLI::Validator(
        [](std::string& text) {
            text = text.empty() ? text : common::ToUtf8(common::FullPath(common::ToUtf16(text)));
            return std::string();
        },
        ""));
    option.required(isRequired);
}

Report Snapshot(const LogCapture& log, const Options& options) {
    const VcsModel model = ReadVcsModel(log, options.source);
    WriteNewFolder(options.folder, model.files);
    const std::string copied = IsBundleInUse() ? "the bundle's main.cf" : Printable(model.copied);
    const std::string origin = model.copied.empty() ? "The configuration was made of what the tools show."
                                                    : "The configuration is a copy of " + copied + ".";
    Report report;
    report.AddSentence("snapshot",
                       {{"folder", options.folder},
                        {"configuration", TextOrNull(model.copied)},
                        {"systems", model.systems},
                        {"groups", model.groups},
                        {"resources", model.resources}},
                       "Wrote " + Printable(options.folder) + ": " + Counted(model.systems, "system") + ", " +
                           Counted(model.groups, "group") + ", " + Counted(model.resources, "resource") + ".\n" +
                           origin);
    for (const std::string& warning : model.warnings) {
        report.AddWarning(warning);
    }
    if (model.masked != 0) {
        report.AddWarning("masked " + Counted(model.masked, "secret") +
                          " of the configuration: --show-secrets writes the true values");
    }
    for (const std::string& doubt : model.doubts) {
        report.MarkIncomplete(doubt);
    }
    return report;
}

} // namespace

void AddVcsSnapshot(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        commandLine.AddTo(family, "snapshot", "Write the VCS cluster as a folder that the VCS simulator works on",
                          [options](const LogCapture& log) { return Snapshot(log, *options); });
    AddPath(command, "FOLDER", options->folder, "FOLDER", "The folder to make", true);
    AddPath(command, "--configuration", options->source.configuration, "PATH",
            "The folder of the cluster's own `main.cf`; `%VCS_HOME%\\conf\\config` without it", false);
    command
        .add_flag("--from-tools", options->source.isMadeOfTools,
                  "Make the `main.cf` of what the tools show, whatever file there is")
        ->excludes("--configuration");
    command.add_flag("--show-secrets", options->source.showsSecrets,
                     "Write passwords as the cluster keeps them; see [secrets](#secrets)");
}
