#include "Measurement.h"

#include "MemoryMeter.h"
#include "ThreadClock.h"

#include "ClusSimControl.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace bench {

namespace {

const std::size_t MinimumRounds = 9;
const std::size_t MaximumRounds = 201;
const double SecondsPerTurn = 0.001; // of the slowest, at least

std::size_t CallsOf(const std::function<void()>& run) {
    ClusSimClearJournal();
    run();
    return ClusSimCallCount(nullptr);
}

// The numbers of one run. Nothing else is watched meanwhile: the timed rounds run as they are.
void WatchMemory(const Contestant& contestant, std::size_t& peakBytes, std::size_t& allocations) {
    MemoryMeter meter;
    if (meter.Works()) {
        meter.Start();
        contestant.run();
        meter.Stop();
        peakBytes = meter.PeakBytes();
        allocations = meter.Allocations();
    }
}

// The same for all of them.
std::size_t RepetitionsOf(const std::vector<Contestant>& contestants) {
    double slowest = 1e-7;
    for (const Contestant& contestant : contestants) {
        const double started = ThreadSeconds();
        contestant.run();
        slowest = std::max(slowest, ThreadSeconds() - started);
    }
    return static_cast<std::size_t>(std::ceil(SecondsPerTurn / slowest));
}

RunTime StandInTime(const Contestant& contestant) {
    return contestant.standIn ? contestant.standIn() : RunTime{0, 0};
}

RunTime TimeOf(const Contestant& contestant, std::size_t repetitions) {
    const RunTime before = StandInTime(contestant);
    const double wallStarted = WallSeconds();
    const double threadStarted = ThreadSeconds();
    for (std::size_t n = 0; n < repetitions; ++n) {
        contestant.run();
    }
    const double seconds = ThreadSeconds() - threadStarted;
    const double wallSeconds = WallSeconds() - wallStarted;
    const RunTime after = StandInTime(contestant);
    const double count = static_cast<double>(repetitions);
    return {(seconds - (after.seconds - before.seconds)) / count,
            (wallSeconds - (after.wallSeconds - before.wallSeconds)) / count};
}

// Calls take(i) for each contestant; the first turn goes round.
template <typename Take> void TakeTurns(std::size_t contestants, std::size_t round, const Take& take) {
    for (std::size_t turn = 0; turn < contestants; ++turn) {
        take((round + turn) % contestants);
    }
}

// A clock that ticks may tell no time of a short run: such rounds say nothing.
double MedianRatio(const std::vector<double>& times, const std::vector<double>& baseTimes) {
    std::vector<double> ratios;
    for (std::size_t round = 0; round < times.size(); ++round) {
        if (baseTimes[round] > 0) {
            ratios.push_back(times[round] / baseTimes[round]);
        }
    }
    return ratios.empty() ? 0 : Median(ratios);
}

} // namespace

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Comparison Compare(const std::vector<Contestant>& contestants, double seconds) {
    Comparison result;
    for (const Contestant& contestant : contestants) {
        Comparison::Side side;
        side.name = contestant.name;
        side.calls = CallsOf(contestant.run);
        WatchMemory(contestant, side.peakBytes, side.allocations);
        result.m_sides.push_back(side);
    }
    const std::size_t repetitions = RepetitionsOf(contestants);
    const double started = WallSeconds();
    for (std::size_t round = 0; round < MinimumRounds || (round < MaximumRounds && WallSeconds() - started < seconds);
         ++round) {
        TakeTurns(contestants.size(), round,
                  [&](std::size_t i) { result.m_sides[i].Add(TimeOf(contestants[i], repetitions)); });
    }
    return result;
}

Comparison CompareTimed(const std::vector<TimedContestant>& contestants, std::size_t rounds) {
    Comparison result;
    for (const TimedContestant& contestant : contestants) {
        result.m_sides.emplace_back();
        result.m_sides.back().name = contestant.name;
    }
    for (std::size_t round = 0; round < rounds; ++round) {
        TakeTurns(contestants.size(), round, [&](std::size_t i) { result.m_sides[i].Add(contestants[i].run()); });
    }
    return result;
}

const Comparison::Side* Comparison::Find(const std::string& contestant) const {
    const auto found = std::find_if(m_sides.begin(), m_sides.end(),
                                    [&contestant](const Side& side) { return side.name == contestant; });
    return found == m_sides.end() ? nullptr : &*found;
}

const Comparison::Side& Comparison::Of(const std::string& contestant) const {
    const Side* const side = Find(contestant);
    if (!side) {
        throw std::logic_error("there is no contestant " + contestant);
    }
    return *side;
}

bool Comparison::Has(const std::string& contestant) const {
    return Find(contestant) != nullptr;
}

double Comparison::Seconds(const std::string& contestant) const {
    return Median(Of(contestant).seconds);
}

double Comparison::WallSeconds(const std::string& contestant) const {
    return Median(Of(contestant).wallSeconds);
}

double Comparison::Ratio(const std::string& contestant, const std::string& base) const {
    return MedianRatio(Of(contestant).seconds, Of(base).seconds);
}

double Comparison::WallRatio(const std::string& contestant, const std::string& base) const {
    return MedianRatio(Of(contestant).wallSeconds, Of(base).wallSeconds);
}

double Comparison::Difference(const std::string& contestant, const std::string& base) const {
    std::vector<double> differences = Of(contestant).seconds;
    std::transform(differences.begin(), differences.end(), Of(base).seconds.begin(), differences.begin(),
                   [](double time, double baseTime) { return time - baseTime; });
    return Median(differences);
}

std::size_t Comparison::Calls(const std::string& contestant) const {
    return Of(contestant).calls;
}

std::size_t Comparison::PeakBytes(const std::string& contestant) const {
    return Of(contestant).peakBytes;
}

std::size_t Comparison::Allocations(const std::string& contestant) const {
    return Of(contestant).allocations;
}

} // namespace bench
