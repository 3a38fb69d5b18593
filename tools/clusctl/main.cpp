// clusctl: the library's own caller for administrators; see docs/clusctl.md.
#include "Answer.h"
#include "ClusterCommands.h"
#include "ClusterInUse.h"
#include "CommandLine.h"
#include "CommandTree.h"
#include "DelayedLibraries.h"
#include "Deployment.h"
#include "DiskCommand.h"
#include "DoctorCommand.h"
#include "HelpCommands.h"
#include "HostCommands.h"
#include "Interruption.h"
#include "LogCapture.h"
#include "ModelCommands.h"
#include "ModelInUse.h"
#include "ModelSettings.h"
#include "OtherComputer.h"
#include "Password.h"
#include "PictureCommands.h"
#include "Probe.h"
#include "ProductResourceCommands.h"
#include "Progress.h"
#include "RecordCommand.h"
#include "Replay.h"
#include "RehearseCommand.h"
#include "RehearsedRun.h"
#include "ReportCommand.h"
#include "RunMarker.h"
#include "ServerCommands.h"
#include "SmtpCommands.h"
#include "SnapshotCommand.h"
#include "StatusCommand.h"
#include "Stream.h"
#include "SupportBundleCommand.h"
#include "Text.h"
#include "VcsCommands.h"
#include "VcsFolder.h"
#include "VcsToolFiles.h"
#include "VcsTools.h"

#include "common/AppendFile.h"
#include "common/Environment.h"
#include "common/Files.h"
#include "common/Text.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace {

// The log library ignores a file that it cannot use; who named one wants to know.
void RequireWritable(const std::wstring& logFile) {
    const DWORD code = common::AppendFile(logFile).Open();
    if (code != ERROR_SUCCESS) {
        const common::FileError error(logFile, "opened", code); // knows why a name that is too long is not found
        throw Failure::OfCode("cannot open the log file " + QuotedPath(logFile), error.Code());
    }
}

// For people who asked for it: what a command went by that could not do its work.
Report BelievedIn(const CommandLine& commandLine, Answer& answer) {
    Report report;
    const CLI::App* const command = FindCommand(commandLine.Root(), commandLine.ChosenName());
    if (command != nullptr && DependsOnDeployment(*command)) {
        const Deployment deployment = DeploymentOf(*command);
        answer.SetDeployment(deployment);
        if (IsExplained(*command) && !commandLine.Shared().json) {
            AddDeployment(deployment, true, report);
        }
    }
    return report;
}

// What an answer is for, unless the command has told it itself. A drawing stands alone on standard output.
void TellDeployment(const CommandLine& commandLine, Report& report) {
    const CLI::App& command = *FindCommand(commandLine.Root(), commandLine.ChosenName());
    const bool isAsked = commandLine.Shared().json || IsExplained(command);
    if (!DependsOnDeployment(command) || !isAsked || commandLine.IsRehearsal() || IsCheck(commandLine) ||
        report.IsPrinted() || report.Has("deployment")) {
        return;
    }
    const Deployment deployment = DeploymentOf(command);
    const bool isDrawing = report.Has("graph");
    AddDeployment(deployment, IsExplained(command) && !isDrawing, report);
    if (IsExplained(command) && isDrawing && !commandLine.Shared().json) {
        Stream(STD_ERROR_HANDLE)
            .Write(std::string("clusctl: deployment: ") + deployment.kind + ", because " + deployment.reason + "\n");
    }
}

// "vcs product create EVS1 --rw": what the command is told to change, without its other options.
std::string NamedCommand(const CommandLine& commandLine) {
    std::string text = commandLine.ChosenName();
    const CLI::App* const command = FindCommand(commandLine.Root(), text);
    for (const CLI::Option* argument : ArgumentsOf(*command)) {
        for (const std::string& word : argument->results()) {
            text += word.find(' ') == std::string::npos ? " " + word : " '" + word + "'";
        }
    }
    return commandLine.OpensConfiguration() ? text + " --rw" : text;
}

// The whole path of the simulated cluster that the command works on; empty of the one of this computer.
std::wstring SimulatedCluster(const CommandLine& commandLine) {
    if (IsReplaying()) {
        return common::FullPath(NamedModel());
    }
    const std::wstring file = common::EnvironmentVariable(Simulation(commandLine.Asked()).Variable());
    return file.empty() ? file : common::FullPath(file);
}

// What is said of models themselves asks no cluster, so that it may be asked of one that no simulator reads.
bool AsksNone(const CommandLine& commandLine) {
    return StartsWith(commandLine.ChosenName(), "model ");
}

// For a progress line; none of a command that draws a page itself, or that others print.
std::function<std::string()> CommandProgress(const CommandLine& commandLine, const LogCapture& log) {
    const CLI::App* const command = FindCommand(commandLine.Root(), commandLine.ChosenName());
    const CLI::Option* const watch = command->get_option_no_throw("--watch");
    if (commandLine.IsRehearsal() || AsksNone(commandLine) || (watch != nullptr && watch->count() > 0)) {
        return nullptr;
    }
    if (commandLine.Asked() == Answering::Vcs) {
        return [describe = DescribeProgress(log)]() {
            const std::string tool = describe();
            return tool.empty() ? std::string("asking the cluster") : tool;
        };
    }
    return []() { return std::string("asking the cluster"); };
}

// Does the command's work, and tells what an interruption leaves.
Report WorkThrough(const CommandLine& commandLine, const LogCapture& log) {
    std::unique_ptr<const Interruption> interruption;
    if (commandLine.FinishesStep()) {
        interruption = std::make_unique<const Interruption>();
    }
    std::unique_ptr<const RunMarker> marker;
    if (commandLine.Changes() && !RehearsedRun::IsOne()) {
        marker = std::make_unique<const RunMarker>(NamedCommand(commandLine), SimulatedCluster(commandLine));
    }
    const bool asksVcs = commandLine.Asked() == Answering::Vcs;
    const bool isVcs = asksVcs && !commandLine.IsRehearsal(); // whose tools change a copy only
    std::unique_ptr<const VcsFolder> folder;
    if (asksVcs) {
        folder = std::make_unique<const VcsFolder>();
    }
    Report report;
    try {
        const Progress progress(log, CommandProgress(commandLine, log), Progress::Patience::UntilNothingElseIsShown);
        report = commandLine.Chosen()(log);
        TellDeployment(commandLine, report);
    } catch (const WrongUsage&) {
        throw;
    } catch (const FailureWithReport& halfway) {
        if (!Interruption::IsPending()) {
            throw;
        }
        throw isVcs ? InterruptedFailure(log, halfway.Shown()) : halfway;
    } catch (const Failure& failure) {
        if (!Interruption::IsPending()) {
            throw;
        }
        if (isVcs) { // whatever a tool that was ended by the key has led to
            throw InterruptedFailure(log, Report());
        }
        if (failure.Kind().exitCode == ExitInterrupted) { // it says so itself
            throw;
        }
        throw Failure(Errors::Interrupted, std::string("interrupted: ") + failure.what()).Hint(failure.Hint());
    }
    if (Interruption::IsPending() && !report.IsPrinted()) {
        if (isVcs) {
            throw InterruptedFailure(log, Report());
        }
        throw FailureWithReport(Failure(Errors::Interrupted, commandLine.IsRehearsal()
                                                                 ? "interrupted; the copy that was worked on is deleted"
                                                                 : "interrupted, but the work was done by then"),
                                report);
    }
    if (report.IsLost() && !report.IsPrinted() && !IsCheck(commandLine)) {
        throw FailureWithReport(Failure(Errors::ClusterLost, "the cluster was lost while it was asked"), report);
    }
    return report;
}

Report Work(const CommandLine& commandLine, const LogCapture& log) {
    return IsReplaying() ? WorkReplayed([&]() { return WorkThrough(commandLine, log); })
                         : WorkThrough(commandLine, log);
}

// The tools, after the checks that have to be passed before one of them is run.
std::vector<VcsToolFile> CheckedTools(const CommandLine& commandLine, Answer& answer) {
    const SharedOptions& shared = commandLine.Shared();
    std::vector<VcsToolFile> tools = IsReplaying() ? ReplayedTools() : FindVcsTools();
    if (shared.showsTools) {
        answer.SetTools(tools);
    }
    if (!shared.allowsWritableTools && !commandLine.LooksAtTools() && !IsReplaying()) {
        RequireTrustedTools(tools);
    }
    return tools;
}

// Decides whom the command asks, and loads what that takes.
void Prepare(CommandLine& commandLine) {
    const std::wstring& model = commandLine.Shared().model;
    if (!model.empty()) {
        commandLine.Ask(ChooseCluster(commandLine.Asked(), model));
        UseModel(model, commandLine.Asked());
        if (IsBundleInUse() && commandLine.Changes()) {
            throw WrongUsage(Quoted(model) + " is a support bundle, which is looked at, not changed");
        }
    }
    if (!RehearsedRun::Bundle().empty()) {
        UseComputerOf(RehearsedRun::Bundle());
    }
    LoadLibraries();
    if (BundledComputerInUse() != nullptr && !BundledComputerInUse()->name.empty()) {
        BearComputerName(BundledComputerInUse()->name);
    }
    if (IsReplaying()) {
        BeginReplay();
    }
    if (model.empty()) {
        commandLine.Ask(ChooseCluster(commandLine.Asked(), model));
    }
}

// `record`: what to do about recording it; `work` gets the recording, which its owner finishes.
ExitCode Execute(CommandLine& commandLine, const Stream& output, const Stream& errors, const RecordOptions& record,
                 std::unique_ptr<RecordedWork>& work) {
    const SharedOptions& shared = commandLine.Shared();
    RehearsedRun rehearsedRun(!shared.model.empty());
    Prepare(commandLine);
    rehearsedRun.Begin(commandLine.Asked());
    if (!AsksNone(commandLine)) {
        RequireNamedSimulators(commandLine.Asked());
    }
    if (!shared.logFile.empty()) {
        RequireWritable(shared.logFile);
    }
    const LogCapture log(shared.verbose ? &errors : nullptr, shared.logFile);
    if (shared.verbose && !log.IsAvailable()) {
        errors.Write(
            "clusctl: warning: the DebugLog.dll in use does not hand out its lines; --verbose shows nothing\n");
    }
    Answer answer(output, errors, shared.json, commandLine.IsRehearsal() && !shared.model.empty());
    const Simulation simulation(commandLine.Asked());
    const auto setBesides = [&]() {
        // Lines that have been shown as they came are not told again.
        answer.SetBesides(simulation, simulation.HasAnswered(log.Tools().Count() != 0),
                          log.IsShown() ? std::vector<std::string>() : log.Problems());
    };
    const KilledRuns killed(SimulatedCluster(commandLine));
    const auto withKilled = [&killed](Report report) {
        if (RehearsedRun::IsOne()) {
            return report;
        }
        for (const std::string& sentence : killed.Sentences()) {
            report.AddWarning(sentence);
        }
        return report;
    };
    std::unique_ptr<ModelSettings> settings; // in force until the answer is shown
    Report report;
    try {
        if (!AsksNone(commandLine) || BundledComputerInUse() != nullptr) {
            settings = std::make_unique<ModelSettings>();
        }
        std::vector<VcsToolFile> tools;
        if (commandLine.Asked() == Answering::Vcs) {
            tools = CheckedTools(commandLine, answer);
        }
        if (!record.file.empty()) {
            work = std::make_unique<RecordedWork>(record, commandLine.Asked(), commandLine.ChosenName(), tools);
        }
        report = Work(commandLine, log);
    } catch (const FailureWithReport& halfway) {
        setBesides();
        answer.Show(halfway, withKilled(halfway.Shown()));
        return halfway.Kind().exitCode;
    } catch (const WrongUsage&) {
        throw; // told with how the command is used
    } catch (const Failure& failure) {
        setBesides();
        if (!IsCheck(commandLine) || failure.Kind().exitCode == ExitInterrupted) {
            answer.Show(failure, withKilled(BelievedIn(commandLine, answer)));
            return failure.Kind().exitCode;
        }
        report = CheckReport(failure);
    }
    const ExitCode code = report.Code();
    if (report.IsPrinted() && commandLine.IsRehearsal()) { // by the process that rehearsed it
        return code;
    }
    setBesides();
    if (!answer.TryShow(withKilled(std::move(report)), commandLine.Changes())) {
        return IsCheck(commandLine) ? UnknownToMonitoring : Errors::OutputFailed.exitCode;
    }
    if (commandLine.Changes()) {
        killed.Forget();
    }
    return code;
}

void AddCommands(CommandLine& commandLine) {
    AddServerCommands(commandLine);
    AddHostCommands(commandLine);
    AddClusterCommands(commandLine);
    AddDiskCommand(commandLine);
    AddDoctorCommand(commandLine);
    AddProductResourceCommands(commandLine);
    AddSmtpCommands(commandLine);
    AddReportCommand(commandLine);
    AddSnapshotCommand(commandLine);
    AddStatusCommand(commandLine);
    AddSupportBundleCommand(commandLine);
    AddModelCommands(commandLine);
    AddPictureCommands(commandLine);
    AddProbeCommand(commandLine);
    AddVcsCommands(commandLine);
    AddRehearseCommand(commandLine, &AddCommands);
    AddHelpCommands(commandLine);
}

// What is recorded is a command line of its own, which takes the place of the one that says so. The recording ends
// with the exit code.
ExitCode Record(std::unique_ptr<CommandLine>& commandLine, const RecordOptions& options, const Stream& output,
                const Stream& errors) {
    const SharedOptions shared = commandLine->Shared();
    commandLine = std::make_unique<CommandLine>();
    AddCommands(*commandLine);
    const std::string told = commandLine->Parse(options.command);
    commandLine->Inherit(shared);
    if (!told.empty()) {
        throw WrongUsage("this asks no cluster: there is nothing to record");
    }
    std::unique_ptr<RecordedWork> work;
    const ExitCode code = Execute(*commandLine, output, errors, options, work);
    return work == nullptr ? code : static_cast<ExitCode>(work->Finish(code, errors));
}

ExitCode Run(std::unique_ptr<CommandLine>& commandLine, int argumentCount, wchar_t** arguments, const Stream& output,
             const Stream& errors) {
    TakePasswordFromEnvironment();
    std::vector<std::string> texts;
    for (int i = 1; i < argumentCount; ++i) {
        texts.push_back(common::ToUtf8(arguments[i]));
    }
    RecordOptions record;
    if (texts != std::vector<std::string>{"--version"}) { // which takes less time than all the commands do
        AddCommands(*commandLine);
        AddRecordCommand(*commandLine, record);
    }
    const std::string help = commandLine->Parse(texts);
    if (!help.empty()) {
        Print(output, help);
        return ExitDone;
    }
    if (!record.file.empty()) {
        return Record(commandLine, record, output, errors);
    }
    std::unique_ptr<RecordedWork> none;
    return Execute(*commandLine, output, errors, record, none);
}

} // namespace

// The exit code of a failure is that of its kind (Failure.h): who cannot do what is asked throws.
int wmain(int argumentCount, wchar_t** arguments) {
    const Stream output(STD_OUTPUT_HANDLE);
    const Stream errors(STD_ERROR_HANDLE);
    auto commandLine = std::make_unique<CommandLine>();
    const auto fail = [&](const Failure& failure) {
        if (commandLine->Shared().json) {
            Json besides = ErrorJson(failure);
            besides.update({{"log", Json::array()}, {"simulated", nullptr}}); // nobody has been asked
            output.Write(Report().ToJson(besides));
        }
        return failure.Kind().exitCode;
    };
    try {
        return Run(commandLine, argumentCount, arguments, output, errors);
    } catch (const WrongUsage& wrong) {
        errors.Write(commandLine->UsageText(wrong.what()));
        return fail(wrong);
    } catch (const Failure& failure) {
        errors.Write(ErrorText(failure));
        if (IsCheck(*commandLine)) {
            Report told = CheckReport(failure);
            const ExitCode code = told.Code();
            const Json besides = {{"log", Json::array()}, {"simulated", nullptr}};
            output.Write(commandLine->Shared().json ? std::move(told).ToJson(besides) : told.ToText());
            return code;
        }
        return fail(failure);
    } catch (const std::exception& error) {
        errors.Write(std::string("clusctl: ") + error.what() + "\n");
        return fail(Failure(error.what()));
    }
}
