#include "RehearseCommand.h"

#include "ClusterModel.h"
#include "ClusterRehearsal.h"
#include "CommandLine.h"
#include "ModelInUse.h"
#include "RehearsalSweep.h"
#include "RehearsalText.h"
#include "RehearsedModel.h"
#include "RehearsedRun.h"
#include "SnapshotCommand.h"
#include "Stream.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

const char Heading[] = "Rehearsal";
const int MostWords = 10000; // of events; the parser takes one list without a limit only, which the command is

struct RehearseOptions {
    std::vector<std::wstring> events;
    std::vector<std::string> faults;
    bool eachCallFails = false;
    std::wstring save;
    Words command;
};

const Columns NodeColumns = {{"name", "NODE"}, {"stateBefore", "BEFORE"}, {"stateAfter", "AFTER"}};
const Columns ServerColumns = {{"name", "SERVER"},         {"address", "ADDRESS"},      {"nodeBefore", "NODE BEFORE"},
                               {"onlineBefore", "ONLINE"}, {"nodeAfter", "NODE AFTER"}, {"onlineAfter", "ONLINE"}};
const Columns DownColumns = {{"name", "STAYS DOWN"}, {"group", "GROUP"}, {"state", "STATE"}, {"reason", "WHY"}};

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

// The command to be rehearsed has to be one that asks a cluster, or changes it.
Answering KindOfCommand(const Words& words, const AddAll& addAll) {
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
    return commandLine.Asked();
}

// Which servers are where, before and after.
Json ServerRows(const Json& nodes) {
    Json rows = Json::array();
    const auto rowOf = [&rows](const Json& server) -> Json& {
        for (Json& row : rows) {
            if (row.at("name") == server.at("name")) {
                return row;
            }
        }
        rows.push_back({{"name", server.at("name")},
                        {"address", server.at("address")},
                        {"nodeBefore", nullptr},
                        {"onlineBefore", nullptr},
                        {"nodeAfter", nullptr},
                        {"onlineAfter", nullptr}});
        return rows.back();
    };
    for (const Json& node : nodes) {
        for (const Json& server : node.at("serversBefore")) {
            Json& row = rowOf(server);
            row["nodeBefore"] = node.at("name");
            row["onlineBefore"] = server.at("online");
        }
    }
    for (const Json& node : nodes) {
        for (const Json& server : node.at("serversAfter")) {
            Json& row = rowOf(server);
            row["nodeAfter"] = node.at("name");
            row["onlineAfter"] = server.at("online");
        }
    }
    return rows;
}

Json DifferenceLines(const Json& before, const Json& after) {
    Json lines = Json::array();
    for (const std::string& line : ModelDifference(before, after)) {
        lines.push_back(line);
    }
    if (!lines.empty()) {
        lines.insert(lines.begin(), {"--- before", "+++ after"});
    }
    return lines;
}

// With the default code where a fault has none. Throws WrongUsage.
FaultTexts CheckedFaults(const std::vector<std::string>& faults) {
    FaultTexts checked;
    for (const std::string& fault : faults) {
        const std::string call = fault.substr(0, fault.find_first_of("@#="));
        const std::string coded = fault + "=" + std::to_string(UsualCodeOf(call));
        if (!ClusterSimulator::IsFault(fault) && !ClusterSimulator::IsFault(coded)) {
            throw WrongUsage("--fail: " + Quoted(fault) +
                             " is no fault like CALL, CALL#N or CALL#N=CODE of a call of " +
                             "the cluster that the simulator knows");
        }
        checked.push_back(ClusterSimulator::IsFault(fault) ? fault : coded);
    }
    return checked;
}

struct CallFilter {
    std::string call;
    std::string occurrence; // empty: all
    std::string code;       // empty: the usual one
};

CallFilter FilterOf(const std::string& fault) {
    const std::size_t equals = fault.find('=');
    const std::string place = fault.substr(0, equals);
    const std::size_t number = place.find('#');
    if (place.find('@') != std::string::npos) {
        throw WrongUsage("--each-call-fails: a call is named without an object: " + Quoted(fault));
    }
    return {place.substr(0, number), number == std::string::npos ? "" : place.substr(number + 1),
            equals == std::string::npos ? "" : fault.substr(equals + 1)};
}

// One for each call of the run without a failure; --fail names some of them, and their codes.
std::vector<SweepStep> StepsOf(const std::vector<ClusterCall>& calls, const std::vector<std::string>& faults) {
    std::vector<CallFilter> filters;
    std::transform(faults.begin(), faults.end(), std::back_inserter(filters), &FilterOf);
    std::vector<SweepStep> steps;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const ClusterCall& call = calls[i];
        const std::string occurrence = std::to_string(call.occurrence);
        const auto filter = std::find_if(filters.begin(), filters.end(), [&](const CallFilter& candidate) {
            return candidate.call == call.call && (candidate.occurrence.empty() || candidate.occurrence == occurrence);
        });
        if (filters.empty() || filter != filters.end()) {
            const std::string code =
                filters.empty() || filter->code.empty() ? std::to_string(UsualCodeOf(call.call)) : filter->code;
            std::string fault = call.call;
            fault.append("#").append(occurrence).append("=").append(code);
            steps.push_back({i + 1, call.text, std::move(fault)});
        }
    }
    return steps;
}

std::string MessageOf(const ProgramResult& result) {
    const Json document = Json::parse(result.output, nullptr, false);
    const bool hasFailed = document.is_object() && document.contains("error");
    return hasFailed ? document.at("error").at("message").get<std::string>() : std::string();
}

class SweptCopy : public SweptRehearsal {
public:
    SweptCopy(const Json& before, const Json& wanted, const Words& command, const std::string& fault,
              const std::wstring& rehearsed)
        : m_before(before), m_wanted(wanted), m_run(before, command, {fault}, rehearsed, true) {
    }
    const ChildProgram& Program() const override {
        return m_run.Program();
    }
    SweepRun Finish() override {
        const CopyResult result = m_run.Finish();
        const Json end = ComparableEnd(m_before, Settled(result.model));
        SweepRun run;
        run.exitCode = result.program.exitCode;
        run.message = MessageOf(result.program);
        const bool isAsBefore = end == ComparableEnd(m_before, m_before);
        const bool isAsWanted = end == ComparableEnd(m_before, m_wanted);
        if (isAsWanted && (!isAsBefore || run.exitCode == 0)) { // a restart wants what was before
            run.ending = Ending::AsWanted;
        } else if (isAsBefore) {
            run.ending = Ending::AsBefore;
        }
        return run;
    }

private:
    const Json& m_before;
    const Json& m_wanted;
    CopyRun m_run;
};

Report SweepCalls(const LogCapture& log, ClusterRehearsal& rehearsal, const RehearseOptions& options) {
    const Words& command = options.command;
    const Json before = rehearsal.Model();
    const CopyResult& plain = rehearsal.Run(command, {}, true);
    if (!rehearsal.Settle()) {
        throw Failure("something goes on in the cluster an hour after the command: there is no end to compare with");
    }
    const std::vector<SweepStep> steps = StepsOf(plain.calls, options.faults);
    const Json wanted = rehearsal.Model();
    Report report;
    AddSweep(report, Sweep(log, steps, [&](const SweepStep& step) {
                 return std::make_unique<SweptCopy>(before, wanted, command, step.fault, rehearsal.Rehearsed());
             }));
    report.AddMember("plain", {{"exitCode", plain.program.exitCode}, {"calls", plain.calls.size()}});
    return report;
}

void AddCommand(Report& report, const Words& command, const CopyResult& result, bool isJson) {
    std::string line;
    for (const std::wstring& word : command) {
        line += (line.empty() ? "" : " ") + (word.find(L' ') == std::wstring::npos ? Printable(word) : Quoted(word));
    }
    const Json answer = isJson ? Json::parse(result.program.output, nullptr, false) : Json();
    Json shown = LinesOf(result.program.output);
    for (const Json& error : LinesOf(result.program.errors)) {
        shown.push_back(error);
    }
    const unsigned long code = result.program.exitCode;
    report.AddSentence("command",
                       {{"line", line},
                        {"exitCode", code},
                        {"answer", answer.is_object() ? answer : Json()},
                        {"output", answer.is_object() ? Json() : Json(result.program.output)},
                        {"errors", result.program.errors}},
                       TitledBlock("The command ends with exit code " + std::to_string(code) + ":", shown, "nothing"));
    report.EndWith(static_cast<ExitCode>(code));
}

void AddCalls(Report& report, const std::vector<ClusterCall>& calls) {
    report.AddSentence("calls", CallRecords(calls), TitledBlock("Calls of the cluster:", CallLines(calls), "none"));
}

void AddDifference(Report& report, const ClusterRehearsal& rehearsal) {
    const Json lines = DifferenceLines(rehearsal.Before(), rehearsal.Model());
    report.AddSentence("difference", lines, TitledBlock("Change of the configuration:", lines, "none"));
}

void WarnOfFaultsNotMet(Report& report, const FaultTexts& faults, const std::vector<ClusterCall>& calls) {
    for (const std::string& fault : faults) {
        const std::string call = fault.substr(0, fault.find_first_of("@#="));
        const std::size_t number = fault.find('#');
        const std::size_t nth = number == std::string::npos ? 1 : std::strtoul(fault.c_str() + number + 1, nullptr, 10);
        const auto made = std::count_if(calls.begin(), calls.end(),
                                        [&call](const ClusterCall& candidate) { return candidate.call == call; });
        if (static_cast<std::size_t>(made) < nth) {
            report.AddWarning("the failure " + Quoted(fault) + " did not come about: the command made " +
                              std::to_string(made) + " such calls");
        }
    }
}

void Save(Report& report, const std::wstring& file, const Json& model) {
    if (file.empty()) {
        report.AddMember("saved", nullptr);
        return;
    }
    WriteModel(file, model);
    report.AddSentence("saved", file, "Wrote " + Printable(file) + ": the cluster as it is then.");
}

void AddTimeline(Report& report, const Json& timeline) {
    report.AddSentence("timeline", timeline,
                       TitledBlock("What happens, in seconds:", TimelineLines(timeline), "nothing"));
}

// What came before an event that is refused is shown.
void Happen(ClusterRehearsal& rehearsal, const RehearsalEvent& event) {
    try {
        rehearsal.Happen(event);
    } catch (const Failure& failure) {
        Report shown;
        AddTimeline(shown, rehearsal.Timeline());
        throw FailureWithReport(failure, shown);
    }
}

Report RehearseModel(const LogCapture& log, const RehearseOptions& options, bool isJson) {
    const std::vector<RehearsalEvent> events = ParseEvents(options.events);
    const FaultTexts faults = CheckedFaults(options.faults);
    ClusterRehearsal rehearsal(ReadModelFile(NamedModel()), NameOfSource());
    for (const RehearsalEvent& event : events) {
        Happen(rehearsal, event);
    }
    if (options.eachCallFails) {
        return SweepCalls(log, rehearsal, options);
    }
    Report report;
    const CopyResult* result = nullptr;
    if (!options.command.empty()) {
        result = &rehearsal.Run(options.command, faults, isJson);
        WarnOfFaultsNotMet(report, faults, result->calls);
    }
    if (!rehearsal.Settle()) {
        report.AddWarning("something still goes on in the cluster after an hour: 'wait' lets more time pass");
    }
    const Json nodes = rehearsal.Nodes(report);
    const Json timeline = rehearsal.Timeline();
    AddTimeline(report, timeline);
    report.AddTable("nodes", nodes, NodeColumns, "The cluster has no nodes.");
    report.AddTable("servers", ServerRows(nodes), ServerColumns, "No node serves a server, before or after.");
    report.AddTable("down", StaysDown(rehearsal.Before(), rehearsal.Model(), timeline), DownColumns,
                    "Nothing stays down that was online or is to be.");
    AddDifference(report, rehearsal);
    if (result != nullptr) {
        AddCalls(report, result->calls);
        AddCommand(report, options.command, *result, isJson);
    } else {
        report.AddMember("calls", Json::array());
        report.AddMember("command", nullptr);
    }
    Save(report, options.save, rehearsal.Model());
    return report;
}

Report DryRun(const Words& command, bool isJson) {
    ClusterRehearsal rehearsal(ReadModelFile(NamedModel()), NameOfSource());
    const CopyResult& result = rehearsal.Run(command, {}, isJson);
    Report report;
    if (!rehearsal.Settle()) {
        report.AddWarning("something still goes on in the cluster after an hour");
    }
    AddCalls(report, result.calls);
    AddDifference(report, rehearsal);
    AddCommand(report, command, result, isJson);
    return report;
}

// The cluster of this computer is read, and written into a file, on which the same command line is run again.
Report RehearseLive(const LogCapture& log, const CommandLine& commandLine) {
    Report unread;
    const Json model = ReadClusterModel(log, unread);
    for (const std::string& warning : unread.Warnings()) {
        Stream(STD_ERROR_HANDLE).Write("clusctl: warning: of the copy: " + warning + "\n");
    }
    const std::wstring simulated = common::EnvironmentVariable(L"CLUSSIM_FILE");
    std::unique_ptr<common::TemporaryFolder> folder;
    std::wstring file;
    try {
        folder = std::make_unique<common::TemporaryFolder>(L"clusctl");
        file = folder->File(L"model.json");
        common::WriteWholeFile(file, common::DumpJson(Essence(model)));
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot write the private copy " + Quoted(error.Path()), error.Code());
    }
    Words words = {L"--model", file};
    for (const std::string& argument : commandLine.Arguments()) {
        words.push_back(common::ToUtf16(argument));
    }
    const ChildProgram again(OwnPath(), words,
                             {{RehearsedVariable, simulated.empty() ? L"this computer's cluster" : simulated},
                              {L"CLUSSIM_JOURNAL", L""},
                              {L"CLUSSIM_FAULTS", L""}},
                             L"");
    return Report::Printed(static_cast<ExitCode>(again.Finish().exitCode));
}

Report Rehearse(const LogCapture& log, const RehearseOptions& options, const CommandLine& commandLine,
                const AddAll& addAll) {
    if (options.events.empty() && options.command.empty()) {
        throw WrongUsage("there is nothing to rehearse: no event, and no command behind --");
    }
    if (options.command.empty() && (options.eachCallFails || !options.faults.empty())) {
        throw WrongUsage("what is to fail are calls of a command: it stands behind --");
    }
    if (options.eachCallFails && !options.save.empty()) {
        throw WrongUsage("--each-call-fails has many ends: --save takes one");
    }
    ParseEvents(options.events); // nothing is begun with wrong ones
    const Answering asked = options.command.empty() ? Answering::Either : KindOfCommand(options.command, addAll);
    if (asked != Answering::Either && asked != commandLine.Asked()) {
        throw WrongUsage("the command to be rehearsed asks the other kind of cluster");
    }
    if (commandLine.Asked() == Answering::Vcs) {
        throw Failure(Errors::NotPossible, "only failover clusters can be rehearsed");
    }
    return NamedModel().empty() ? RehearseLive(log, commandLine)
                                : RehearseModel(log, options, commandLine.Shared().json);
}

} // namespace

void AddRehearseCommand(CommandLine& commandLine, const AddAll& addAll) {
    const auto options = std::make_shared<RehearseOptions>();
    CLI::App& command = commandLine.Add(
        Heading, "rehearse", "Let events and a command happen on a copy of the cluster, and show what becomes of it",
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
                         "Write the cluster as it is in the end as a model, for the next rehearsal");
    commandLine.AddTail(command, options->command, "The command, with its options");
    commandLine.AsksBy(command, [options, &commandLine, addAll]() {
        const bool isTold = options->command.empty() || !commandLine.Shared().model.empty();
        return isTold ? Answering::Either : KindOfCommand(options->command, addAll);
    });
    commandLine.AddDryRuns([&commandLine](const LogCapture& log, const Words& words) {
        return NamedModel().empty() ? RehearseLive(log, commandLine) : DryRun(words, commandLine.Shared().json);
    });
}
