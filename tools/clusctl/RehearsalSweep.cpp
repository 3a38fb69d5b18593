#include "RehearsalSweep.h"

#include "ChildProgram.h"
#include "Interruption.h"
#include "Progress.h"
#include "Text.h"

#include <algorithm>
#include <atomic>
#include <memory>

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

} // namespace

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
