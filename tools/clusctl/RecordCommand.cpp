#include "RecordCommand.h"

#include "CommandLine.h"
#include "ModelSettings.h"
#include "Secrets.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Files.h"
#include "common/Text.h"
#include "common/UtcTime.h"

#include <Recorder.h>

namespace {

std::vector<HMODULE> RecordedModules() {
    return {nullptr, GetModuleHandleW(L"clusutil.dll")};
}

recording::Header HeaderFor(const RecordOptions& options, Answering asked, const std::string& commandName,
                            const std::vector<VcsToolFile>& tools) {
    recording::Header header;
    header.program = "clusctl " CLUSCTL_VERSION;
    header.begun = common::UtcNow();
    header.command = options.isAnonymised ? Json::array({commandName}) : Json(MaskedWords(options.command));
    header.cluster = asked == Answering::Vcs ? "vcs" : "failover";
    header.computer = common::ToUtf8(ComputerName());
    const Json settings = ReadProductSettings();
    header.settings = settings.empty() ? Json() : settings;
    for (const VcsToolFile& tool : tools) {
        header.tools.push_back({{"name", tool.tool}, {"file", tool.path}});
    }
    header.isAnonymised = options.isAnonymised;
    header.allowsChanges = options.allowsChanges;
    header.unseen = recording::Interception::UnknownOf(RecordedModules(), !options.allowsChanges);
    return header;
}

} // namespace

struct RecordedWork::State {
    State(const std::wstring& file, const recording::Header& header)
        : recorder(file, header), interception(recorder, RecordedModules()), unseen(header.unseen) {
    }
    recording::Recorder recorder;
    recording::Interception interception;
    const std::vector<std::string> unseen;
};

void AddRecordCommand(CommandLine& commandLine, RecordOptions& options) {
    CLI::App& command =
        commandLine.Add("Diagnosis", "record", "Run another command, and record what it asks of the cluster",
                        [](const LogCapture&) { return Report(); }); // the other command is done instead
    CommandLine::AddText(command, "FILE", options.file, "FILE", "The file to write, which must not be there")
        .required();
    command
        .add_option_function<std::vector<std::string>>(
            "COMMAND", [&options](const std::vector<std::string>& words) { options.command = words; },
            "The command with its options, behind --")
        ->type_name("COMMAND")
        ->required();
    command.add_flag("--allow-changes", options.allowsChanges,
                     "Let the command change something; without it such calls are refused with code 5");
    command.add_flag("--anonymise", options.isAnonymised,
                     "Replace names and addresses, each by the same one wherever it stands");
}

RecordedWork::RecordedWork(const RecordOptions& options, Answering asked, const std::string& commandName,
                           const std::vector<VcsToolFile>& tools) {
    const DWORD lastError = GetLastError(); // which the library logs where no call has set another
    try {
        m_state = std::make_unique<State>(options.file, HeaderFor(options, asked, commandName, tools));
    } catch (const common::FileError& error) {
        if (error.Code() == ERROR_FILE_EXISTS) {
            throw Failure(Errors::AlreadyExists, "there is a file " + Quoted(options.file) + " already");
        }
        throw Failure::OfCode("cannot create " + QuotedPath(options.file), error.Code());
    }
    SetLastError(lastError);
}

RecordedWork::~RecordedWork() = default;

int RecordedWork::Finish(int exitCode, const Stream& errors) {
    for (const std::string& name : m_state->unseen) {
        errors.Write("clusctl: warning: calls of " + name + " are not in the recording\n");
    }
    const DWORD code = m_state->recorder.Finish(exitCode);
    if (code == ERROR_SUCCESS) {
        return exitCode;
    }
    errors.Write("clusctl: warning: the recording is not complete: " + ErrorText(code) + "\n");
    return exitCode == ExitDone ? ExitIncomplete : exitCode;
}
