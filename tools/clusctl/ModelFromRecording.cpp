#include "ModelFromRecording.h"

#include "ModelMaker.h"
#include "NewFile.h"
#include "Text.h"
#include "VcsModelMaker.h"

#include "common/Files.h"
#include "common/Text.h"

#include <CfDocument.h>
#include <State.h>

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

std::string Written(const std::wstring& path, std::size_t missing) {
    return "Wrote " + Printable(path) + ", in which " + std::to_string(missing) +
           (missing == 1 ? " thing is" : " things are") + " not as recorded.";
}

// Of clusrecord.dll's, which do not say what they are of, by what they hold.
bool IsOfVcs(const recording::Recording& recording) {
    return recording.header.cluster.empty()
               ? !recording.tools.empty() && HearRecording(recording).Of(RecordedKind::Node).empty()
               : recording.header.cluster == "vcs";
}

// Throws Failure when the simulator would not take it.
RecordedVcsModel VcsModelFromRecording(const recording::Recording& recording) {
    if (recording.tools.empty()) {
        throw Failure(Errors::NotPossible, "the recording holds no run of a VCS tool");
    }
    try {
        RecordedVcsModel model = MakeVcsModel(recording);
        vcssim::ReadState(common::DumpJson(model.states));
        return model;
    } catch (const vcssim::CfError& error) {
        throw Failure(std::string("what the recording tells makes no configuration: ") + Printable(error.what()));
    } catch (const vcssim::StateError& error) {
        throw Failure(std::string("what the recording tells makes no states: ") + Printable(error.what()));
    }
}

Report FromVcsRecording(const recording::Recording& recording, const std::wstring& folder) {
    if (folder.empty()) {
        throw WrongUsage("a model of VCS is a folder: name the one to make as MODEL");
    }
    const RecordedVcsModel recorded = VcsModelFromRecording(recording);
    WriteNewFolder(folder, {{L"main.cf", recorded.mainCf}, {L"main.cf.state.json", common::DumpJson(recorded.states)}});
    Report report;
    for (const std::string& missing : recorded.missing) {
        report.MarkIncomplete(missing);
    }
    report.AddSentence("model",
                       {{"folder", folder},
                        {"systems", recorded.systems},
                        {"groups", recorded.groups},
                        {"resources", recorded.resources},
                        {"missing", recorded.missing}},
                       Written(folder, recorded.missing.size()));
    return report;
}

Report FromRecording(const FromRecordingOptions& options) {
    const recording::Recording recording = ReadFile(options.file);
    if (IsOfVcs(recording)) {
        return FromVcsRecording(recording, options.model);
    }
    RecordedModel recorded = ModelFromRecording(recording);
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
    report.AddSentence("model",
                       {{"file", options.model},
                        {"nodes", recorded.model["nodes"].size()},
                        {"groups", recorded.model["groups"].size()},
                        {"resources", recorded.model["resources"].size()},
                        {"missing", recorded.missing}},
                       Written(options.model, recorded.missing.size()));
    return report;
}

} // namespace

RecordedModel ModelFromRecording(const recording::Recording& recording) {
    if (recording.calls.empty()) {
        throw Failure(Errors::NotPossible, "the recording holds no call of a failover cluster");
    }
    return ModelMaker(recording).Make();
}

void AddModelFromRecordingCommand(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<FromRecordingOptions>();
    CLI::App& command =
        commandLine.AddTo(family, "from-recording", "Make a model of what a recording tells of its cluster",
                          [options](const LogCapture&) { return FromRecording(*options); });
    CommandLine::AddText(command, "FILE", options->file, "FILE", "The recording").required();
    CommandLine::AddText(command, "MODEL", options->model, "MODEL",
                         "The model to write, which must not be there: a file, standard output without it; of VCS a "
                         "folder, which must be named");
}
