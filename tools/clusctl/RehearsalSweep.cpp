#include "RehearsalSweep.h"

#include "CommandLine.h"
#include "Interruption.h"
#include "Progress.h"
#include "Text.h"

#include <algorithm>
#include <atomic>
#include <iterator>

namespace {

const std::size_t AtOnce = 2;

const Columns SweepColumns = {{"step", "STEP"},   {"fault", "INJECTED FAILURE"}, {"call", "CALL"}, {"exitCode", "EXIT"},
                              {"ended", "ENDED"}, {"message", "MESSAGE"}};

const char* Word(Ending ending) {
    switch (ending) {
    case Ending::AsBefore:
        return "as before";
    case Ending::AsWanted:
        return "as wanted";
    default:
        return "in between";
    }
}

struct Active {
    std::size_t step;
    std::unique_ptr<SweptRehearsal> rehearsal;
};

Json Row(const SweepStep& step, const SweepRun& run) {
    return {{"step", step.number},       {"call", step.call},
            {"fault", step.fault},       {"exitCode", run.exitCode},
            {"ended", Word(run.ending)}, {"message", run.message.empty() ? Json() : Json(run.message)}};
}

std::size_t CountOf(const Json& rows, Ending ending) {
    return static_cast<std::size_t>(
        std::count_if(rows.begin(), rows.end(), [ending](const Json& row) { return row.at("ended") == Word(ending); }));
}

struct CallFilter {
    std::string call;
    std::string occurrence; // empty: all
    std::string effect;     // "=5"; empty: the usual one
};

CallFilter FilterOf(const std::string& fault) {
    const std::size_t equals = std::min(fault.find('='), fault.size());
    const std::string place = fault.substr(0, equals);
    const std::size_t number = place.find('#');
    if (place.find('@') != std::string::npos) {
        throw WrongUsage("--each-call-fails: a call is named without an object: " + Quoted(fault));
    }
    return {place.substr(0, number), number == std::string::npos ? "" : place.substr(number + 1), fault.substr(equals)};
}

bool Passes(const CallFilter& filter, const ClusterCall& call) {
    return filter.call == call.call &&
           (filter.occurrence.empty() || filter.occurrence == std::to_string(call.occurrence));
}

// On one line.
std::string MessageOf(const ProgramResult& result) {
    const Json document = Json::parse(result.output, nullptr, false);
    const bool hasFailed = document.is_object() && document.contains("error");
    std::string text = hasFailed ? document.at("error").at("message").get<std::string>() : std::string();
    for (std::size_t end = text.find("\n  "); end != std::string::npos; end = text.find("\n  ", end)) {
        text.replace(end, 3, "; ");
    }
    return text;
}

} // namespace

SweepRun SweepRunOf(const ProgramResult& result, bool isAsBefore, bool isAsWanted) {
    SweepRun run;
    run.exitCode = result.exitCode;
    run.message = MessageOf(result);
    if (isAsWanted && (!isAsBefore || run.exitCode == 0)) { // a restart wants what was before
        run.ending = Ending::AsWanted;
    } else if (isAsBefore) {
        run.ending = Ending::AsBefore;
    }
    return run;
}

std::vector<SweepStep> SweepSteps(const std::vector<ClusterCall>& calls, const std::vector<std::string>& faults,
                                  const std::function<std::string(const std::string& fault)>& complete) {
    std::vector<CallFilter> filters;
    std::transform(faults.begin(), faults.end(), std::back_inserter(filters), &FilterOf);
    std::vector<SweepStep> steps;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const ClusterCall& call = calls[i];
        const std::string occurrence = std::to_string(call.occurrence);
        const auto filter = std::find_if(filters.begin(), filters.end(),
                                         [&call](const CallFilter& candidate) { return Passes(candidate, call); });
        if (filters.empty() || filter != filters.end()) {
            std::string fault = call.call;
            fault.append("#").append(occurrence).append(filters.empty() ? "" : filter->effect);
            steps.push_back({i + 1, call.text, complete(fault)});
        }
    }
    return steps;
}

std::vector<std::string> FiltersWithoutStep(const std::vector<ClusterCall>& calls,
                                            const std::vector<std::string>& faults) {
    std::vector<std::string> without;
    std::copy_if(faults.begin(), faults.end(), std::back_inserter(without), [&calls](const std::string& fault) {
        const CallFilter filter = FilterOf(fault);
        return std::none_of(calls.begin(), calls.end(),
                            [&filter](const ClusterCall& call) { return Passes(filter, call); });
    });
    return without;
}

Json Sweep(const LogCapture& log, const std::vector<SweepStep>& steps, const StartRehearsal& start) {
    std::atomic<std::size_t> done(0);
    const Progress progress(log, [&done, &steps]() {
        return "rehearsing with each call failing: " + std::to_string(done) + " of " + std::to_string(steps.size());
    });
    std::vector<std::pair<Ending, Json>> rows(steps.size());
    std::vector<Active> active;
    for (std::size_t next = 0; next < steps.size() || !active.empty();) {
        Interruption::Check();
        if (next < steps.size() && active.size() < AtOnce) {
            active.push_back({next, start(steps[next])});
            ++next;
            continue;
        }
        std::vector<const ChildProgram*> programs;
        programs.reserve(active.size());
        for (const Active& one : active) {
            programs.push_back(&one.rehearsal->Program());
        }
        const auto ended = active.begin() + static_cast<std::ptrdiff_t>(ChildProgram::FirstToEnd(programs));
        const SweepRun run = ended->rehearsal->Finish();
        rows[ended->step] = {run.ending, Row(steps[ended->step], run)};
        active.erase(ended);
        ++done;
    }
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    Json records = Json::array();
    for (auto& row : rows) {
        records.push_back(std::move(row.second));
    }
    return records;
}

void AddSweep(Report& report, Json rows) {
    const std::size_t between = CountOf(rows, Ending::InBetween);
    const std::size_t before = CountOf(rows, Ending::AsBefore);
    const std::size_t wanted = CountOf(rows, Ending::AsWanted);
    const std::string sentence = "Of " + std::to_string(rows.size()) + " rehearsals with one failure each, " +
                                 std::to_string(between) + " ended in between, " + std::to_string(before) +
                                 " as before, " + std::to_string(wanted) + " as wanted.";
    report.AddTable("runs", std::move(rows), SweepColumns, "The command makes no call that could fail.");
    report.AddSentence("ended", {{"inBetween", between}, {"asBefore", before}, {"asWanted", wanted}}, sentence);
}
