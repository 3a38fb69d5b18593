#include "RehearseCommand.h"

#include "ClusterModel.h"
#include "ClusterRehearsal.h"
#include "CommandLine.h"
#include "ModelInUse.h"
#include "Password.h"
#include "RehearsalText.h"
#include "RehearsedModel.h"
#include "RehearsedRun.h"
#include "Stream.h"
#include "Text.h"
#include "VcsModel.h"
#include "VcsRehearsal.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

const int MostWords = 10000; // of events; the parser takes one list without a limit only, which the command is

struct RehearseOptions {
    std::vector<std::wstring> events;
    std::vector<std::string> faults;
    bool eachCallFails = false;
    std::wstring save;
    Words command;
    bool readsPassword = false; // the command does, from standard input
};

typedef std::function<void(CommandLine&)> AddAll;

std::wstring NameOfSource() {
    return RehearsedRun::Rehearsed().empty() ? NamedModel() : RehearsedRun::Rehearsed();
}

Json ReadModelFile(const std::wstring& file) {
    try {
        return common::ParseJson(common::ReadWholeFile(ModelFile(file)));
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the model " + Quoted(file), error.Code());
    } catch (const common::JsonError& error) {
        throw Failure("the model " + Quoted(file) + " cannot be read: " + error.what());
    }
}

// Whether the command, as it was given, asks for a password.
bool ReadsPassword(const CommandLine& command) {
    const std::string name = command.ChosenName();
    const std::vector<std::string>& words = command.Arguments();
    return name == "vcs encrypt" || name == "vcs product add-remote-config" ||
           (name == "vcs product create" && std::any_of(words.begin(), words.end(), [](const std::string& word) {
                return StartsWith(word, "--account-user");
            }));
}

// The command to be rehearsed has to be one that asks a cluster, or changes it.
Answering KindOfCommand(const Words& words, const AddAll& addAll, bool* readsPassword = nullptr) {
    CommandLine commandLine;
    addAll(commandLine);
    std::vector<std::string> texts;
    std::transform(words.begin(), words.end(), std::back_inserter(texts), &common::ToUtf8);
    std::string told;
    try {
        told = commandLine.Parse(texts);
    } catch (const WrongUsage& wrong) {
        throw WrongUsage(std::string("the command to be rehearsed: ") + wrong.what());
    }
    if (!told.empty() || commandLine.IsRehearsal()) {
        throw WrongUsage("the command to be rehearsed has to be one that asks or changes a cluster");
    }
    if (!commandLine.Shared().model.empty()) {
        throw WrongUsage("the command is rehearsed on a copy: --model belongs before the events");
    }
    if (readsPassword != nullptr) {
        *readsPassword = ReadsPassword(commandLine);
    }
    return commandLine.Asked();
}

// Throws WrongUsage.
FaultTexts CompletedFaults(const Rehearsal& rehearsal, const std::vector<std::string>& faults) {
    FaultTexts completed;
    std::transform(faults.begin(), faults.end(), std::back_inserter(completed),
                   [&rehearsal](const std::string& fault) { return rehearsal.CompletedFault(fault); });
    return completed;
}

Report SweepCalls(const LogCapture& log, Rehearsal& rehearsal, const RehearseOptions& options) {
    const Words& command = options.command;
    if (options.readsPassword) {
        KeepPassword(); // standard input has it for one run only
    }
    const RehearsedCommand plain = rehearsal.Run(command, {}, true);
    if (!rehearsal.Settle()) {
        throw Failure("something goes on in the cluster an hour after the command: there is no end to compare with");
    }
    const std::vector<SweepStep> steps =
        SweepSteps(plain.calls, options.faults,
                   [&rehearsal](const std::string& fault) { return rehearsal.CompletedFault(fault); });
    Report report;
    for (const std::string& fault : FiltersWithoutStep(plain.calls, options.faults)) {
        report.AddWarning("no failure " + Quoted(fault) + " came about: the command makes no such call");
    }
    AddSweep(report, Sweep(log, steps, [&](const SweepStep& step) { return rehearsal.RunAgain(command, step.fault); }));
    report.AddMember("plain", {{"exitCode", plain.program.exitCode}, {"calls", plain.calls.size()}});
    return report;
}

void AddCommand(Report& report, const Words& command, const ProgramResult& result, bool isJson) {
    const Json answer = isJson ? Json::parse(result.output, nullptr, false) : Json();
    Json shown = LinesOf(result.output);
    for (const Json& error : LinesOf(result.errors)) {
        shown.push_back(error);
    }
    const unsigned long code = result.exitCode;
    report.AddSentence("command",
                       {{"line", LineOf(command)},
                        {"exitCode", code},
                        {"answer", answer.is_object() ? answer : Json()},
                        {"output", answer.is_object() ? Json() : Json(result.output)},
                        {"errors", result.errors}},
                       TitledBlock("The command ends with exit code " + std::to_string(code) + ":", shown, "nothing"));
    report.EndWith(static_cast<ExitCode>(code));
}

// There may be thousands, which people are shown in some lines.
void AddCalls(Report& report, const Rehearsal& rehearsal, const std::vector<ClusterCall>& calls, bool isJson) {
    report.AddSentence("calls", isJson ? CallRecords(calls) : Json(),
                       TitledBlock(rehearsal.TitleOfCalls(), CallLines(calls), "none"));
}

void WarnOfFaultsNotMet(Report& report, const FaultTexts& faults, const RehearsedCommand& command) {
    for (const std::string& sentence : FaultsNotMet(faults, command.matched)) {
        report.AddWarning(sentence);
    }
}

void Save(Report& report, const std::wstring& path, const Rehearsal& rehearsal) {
    if (path.empty()) {
        report.AddMember("saved", nullptr);
        return;
    }
    rehearsal.Save(path);
    report.AddSentence("saved", path, "Wrote " + Printable(path) + ": the cluster as it is then.");
}

void AddTimeline(Report& report, const Json& timeline) {
    report.AddSentence("timeline", timeline,
                       TitledBlock("What happens, in seconds:", TimelineLines(timeline), "nothing"));
}

// What came before an event that is refused is shown.
void Happen(Rehearsal& rehearsal, const RehearsalEvent& event) {
    try {
        rehearsal.Happen(event);
    } catch (const Failure& failure) {
        Report shown;
        AddTimeline(shown, rehearsal.Timeline());
        throw FailureWithReport(failure, shown);
    }
}

std::unique_ptr<Rehearsal> Begin(Answering asked) {
    if (asked == Answering::Vcs) {
        return std::make_unique<VcsRehearsal>(common::EnvironmentVariable(VcsVariable), NameOfSource());
    }
    return std::make_unique<ClusterRehearsal>(ReadModelFile(NamedModel()), NameOfSource());
}

Report RehearseModel(const LogCapture& log, const RehearseOptions& options, const CommandLine& commandLine) {
    const bool isJson = commandLine.Shared().json;
    const std::unique_ptr<Rehearsal> rehearsal = Begin(commandLine.Asked());
    const FaultTexts faults = CompletedFaults(*rehearsal, options.faults);
    if (!options.eachCallFails) {
        rehearsal->NoteServers();
    }
    for (const RehearsalEvent& event : ParseEvents(options.events, commandLine.Asked())) {
        Happen(*rehearsal, event);
    }
    if (options.eachCallFails) {
        return SweepCalls(log, *rehearsal, options);
    }
    Report report;
    RehearsedCommand command;
    if (!options.command.empty()) {
        command = rehearsal->Run(options.command, faults, isJson);
        WarnOfFaultsNotMet(report, faults, command);
    }
    if (!rehearsal->Settle()) {
        report.AddWarning("something still goes on in the cluster after an hour: 'wait' lets more time pass");
    }
    AddTimeline(report, rehearsal->Timeline());
    rehearsal->TellCluster(report);
    rehearsal->TellDifference(report);
    if (!options.command.empty()) {
        AddCalls(report, *rehearsal, command.calls, isJson);
        AddCommand(report, options.command, command.program, isJson);
    } else {
        report.AddMember("calls", Json::array());
        report.AddMember("command", nullptr);
    }
    Save(report, options.save, *rehearsal);
    return report;
}

Report DryRun(const Words& words, const CommandLine& commandLine) {
    const bool isJson = commandLine.Shared().json;
    const std::unique_ptr<Rehearsal> rehearsal = Begin(commandLine.Asked());
    const RehearsedCommand command = rehearsal->Run(words, {}, isJson);
    Report report;
    if (!rehearsal->Settle()) {
        report.AddWarning("something still goes on in the cluster after an hour");
    }
    AddCalls(report, *rehearsal, command.calls, isJson);
    rehearsal->TellDifference(report);
    AddCommand(report, words, command.program, isJson);
    return report;
}

void WarnOfCopy(const std::vector<std::string>& sentences) {
    for (const std::string& sentence : sentences) {
        Stream(STD_ERROR_HANDLE).Write("clusctl: warning: of the copy: " + sentence + "\n");
    }
}

// Writes what the cluster of this computer is like into the folder. The model's path.
std::wstring CopyLive(const LogCapture& log, Answering asked, const common::TemporaryFolder& folder) {
    if (asked == Answering::Vcs) {
        const VcsModel model = ReadVcsModel(log, VcsModelSource());
        WarnOfCopy(model.doubts);
        for (const NewFolderFile& file : model.files) {
            common::WriteWholeFile(folder.File(file.name), file.bytes);
        }
        return folder.Path();
    }
    Report unread;
    Json model = ReadClusterModel(log, unread);
    WarnOfCopy(unread.Warnings());
    std::wstring path = folder.File(L"model.json");
    common::WriteWholeFile(path, common::DumpJson(Essence(std::move(model))));
    return path;
}

// The cluster of this computer is read, and written into a file, on which the same command line is run again.
Report RehearseLive(const LogCapture& log, const CommandLine& commandLine) {
    const bool isVcs = commandLine.Asked() == Answering::Vcs;
    const std::wstring simulated = common::EnvironmentVariable(isVcs ? VcsVariable : ClusterVariable);
    std::unique_ptr<common::TemporaryFolder> folder;
    std::wstring model;
    try {
        folder = std::make_unique<common::TemporaryFolder>(L"clusctl");
        model = CopyLive(log, commandLine.Asked(), *folder);
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot write the private copy " + Quoted(error.Path()), error.Code());
    }
    Words words = {L"--model", model};
    for (const std::string& argument : commandLine.Arguments()) {
        words.push_back(common::ToUtf16(argument));
    }
    const ChildProgram again(OwnPath(), words,
                             {{RehearsedVariable, simulated.empty() ? L"this computer's cluster" : simulated},
                              {L"CLUSSIM_JOURNAL", L""},
                              {L"CLUSSIM_FAULTS", L""},
                              {L"VCSSIM_JOURNAL", L""}},
                             L"", GivenPassword());
    return Report::Printed(static_cast<ExitCode>(again.Finish().exitCode));
}

Report Rehearse(const LogCapture& log, RehearseOptions& options, const CommandLine& commandLine, const AddAll& addAll) {
    if (options.events.empty() && options.command.empty()) {
        throw WrongUsage("there is nothing to rehearse: no event, and no command behind --");
    }
    if (options.command.empty() && (options.eachCallFails || !options.faults.empty())) {
        throw WrongUsage("what is to fail are calls of a command: it stands behind --");
    }
    if (options.eachCallFails && !options.save.empty()) {
        throw WrongUsage("--each-call-fails has many ends: --save takes one");
    }
    ParseEvents(options.events, commandLine.Asked()); // nothing is begun with wrong ones
    const Answering asked =
        options.command.empty() ? Answering::Either : KindOfCommand(options.command, addAll, &options.readsPassword);
    if (asked != Answering::Either && asked != commandLine.Asked()) {
        throw WrongUsage("the command to be rehearsed asks the other kind of cluster");
    }
    return NamedModel().empty() ? RehearseLive(log, commandLine) : RehearseModel(log, options, commandLine);
}

} // namespace

void AddRehearseCommand(CommandLine& commandLine, const AddAll& addAll) {
    const auto options = std::make_shared<RehearseOptions>();
    CLI::App& command =
        commandLine.Add(headings::Rehearsal, "rehearse",
                        "Let events and a command happen on a copy of the cluster, and show what becomes of it",
                        [options, &commandLine, addAll](const LogCapture& log) {
                            return Rehearse(log, *options, commandLine, addAll);
                        });
    const auto take = [options](const std::vector<std::string>& words) {
        std::transform(words.begin(), words.end(), std::back_inserter(options->events), &common::ToUtf16);
    };
    command
        .add_option_function<std::vector<std::string>>("EVENT", take,
                                                       "What befalls the cluster, in this order: " + KnownEvents())
        ->type_name("EVENT")
        ->expected(0, MostWords);
    command
        .add_option("--fail", options->faults,
                    "The N-th of these calls fails, or each; a code that fits without one. May be given more than once")
        ->type_name("CALL[#N][=CODE]")
        ->allow_extra_args(false);
    command.add_flag("--each-call-fails", options->eachCallFails,
                     "Rehearse the command once for each call it makes, with that one failing; --fail names some");
    CommandLine::AddText(command, "--save", options->save, "FILE",
                         "Write the cluster as it is in the end as a model, for the next rehearsal")
        // Rehearsals of VCS do not run where the user is.
        .transform([](const std::string& text) { return common::ToUtf8(common::FullPath(common::ToUtf16(text))); });
    commandLine.AddTail(command, options->command, "The command, with its options");
    commandLine.AsksBy(command, [options, &commandLine, addAll]() {
        const bool isTold = options->command.empty() || !commandLine.Shared().model.empty();
        return isTold ? Answering::Either : KindOfCommand(options->command, addAll);
    });
    commandLine.AddDryRuns([&commandLine](const LogCapture& log, const Words& words) {
        return NamedModel().empty() ? RehearseLive(log, commandLine) : DryRun(words, commandLine);
    });
}
