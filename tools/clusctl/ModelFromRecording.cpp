#include "ModelFromRecording.h"

#include "ModelMaker.h"
#include "NewFile.h"
#include "Text.h"

#include "common/Files.h"
#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <memory>
#include <utility>

namespace {

recording::Recording ReadFile(const std::wstring& file) {
    try {
        return recording::ReadRecording(common::ReadWholeFile(file));
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the recording " + Quoted(file), error.Code());
    } catch (const common::JsonError& error) {
        throw Failure("cannot read the recording " + Quoted(file) + ": " + Printable(error.what()));
    }
}

// Complete or not at all, and in the place of no other.
void WriteMade(const std::wstring& file, const Json& model) {
    const std::wstring fresh = FreshNameBeside(file);
    try {
        common::WriteWholeFile(fresh, common::DumpJson(model));
        if (!MoveFileW(fresh.c_str(), file.c_str())) {
            throw common::FileError(file, "created", GetLastError());
        }
    } catch (const common::FileError& error) {
        DeleteFileW(fresh.c_str());
        throw Failure::OfCode("cannot create " + QuotedPath(file), error.Code());
    }
}

struct FromRecordingOptions {
    std::wstring file;
    std::wstring model;
};

Report FromRecording(const FromRecordingOptions& options) {
    RecordedModel recorded = ModelFromRecording(ReadFile(options.file));
    Report report;
    for (const std::string& missing : recorded.missing) {
        report.MarkIncomplete(missing);
    }
    if (options.model.empty()) {
        return Report::Verbatim(std::move(recorded.model), report);
    }
    if (common::FileExists(options.model)) {
        throw Failure(Errors::AlreadyExists, "there is a file " + Quoted(options.model) + " already");
    }
    WriteMade(options.model, recorded.model);
    const size_t missing = recorded.missing.size();
    report.AddSentence("model",
                       {{"file", options.model},
                        {"nodes", recorded.model["nodes"].size()},
                        {"groups", recorded.model["groups"].size()},
                        {"resources", recorded.model["resources"].size()},
                        {"missing", recorded.missing}},
                       "Wrote " + Printable(options.model) + ", in which " + std::to_string(missing) +
                           (missing == 1 ? " thing is" : " things are") + " not as recorded.");
    return report;
}

} // namespace

RecordedModel ModelFromRecording(const recording::Recording& recording) {
    if (recording.calls.empty()) {
        throw Failure(Errors::NotPossible, "the recording holds no call of a failover cluster")
            .Hint("Of VCS, record \"vcs snapshot\", and make the snapshot of the recording.");
    }
    return ModelMaker(recording).Make();
}

void AddModelFromRecordingCommand(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<FromRecordingOptions>();
    CLI::App& command =
        commandLine.AddTo(family, "from-recording", "Make a model of what a recording tells of a failover cluster",
                          [options](const LogCapture&) { return FromRecording(*options); });
    CommandLine::AddText(command, "FILE", options->file, "FILE", "The recording").required();
    CommandLine::AddText(command, "MODEL-FILE", options->model, "MODEL-FILE",
                         "The model to write, which must not be there; standard output without it");
}
