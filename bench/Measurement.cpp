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
const double SecondsPerTurn = 0.002; // at least

std::size_t CallsOf(const std::function<void()>& run) {
    ClusSimClearJournal();
    run();
    return ClusSimCallCount(nullptr);
}

std::size_t RepetitionsOf(const std::function<void()>& run) {
    const double started = ThreadSeconds();
    run();
    const double once = std::max(ThreadSeconds() - started, 1e-7);
    return static_cast<std::size_t>(std::ceil(SecondsPerTurn / once));
}

} // namespace

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Comparison Compare(const std::vector<Contestant>& contestants, double seconds) {
    Comparison result;
    MemoryMeter meter;
    std::vector<std::size_t> repetitions;
    for (const Contestant& contestant : contestants) {
        Comparison::Side side;
        side.name = contestant.name;
        side.calls = CallsOf(contestant.run);
        if (meter.Works()) {
            meter.Start();
            contestant.run();
            meter.Stop();
            side.peakBytes = meter.PeakBytes();
            side.allocations = meter.Allocations();
        }
        repetitions.push_back(RepetitionsOf(contestant.run));
        result.m_sides.push_back(side);
    }

    const double started = WallSeconds();
    for (std::size_t round = 0; round < MinimumRounds || (round < MaximumRounds && WallSeconds() - started < seconds);
         ++round) {
        for (std::size_t turn = 0; turn < contestants.size(); ++turn) {
            const std::size_t i = (round + turn) % contestants.size();
            const double wallStarted = WallSeconds();
            const double threadStarted = ThreadSeconds();
            for (std::size_t n = 0; n < repetitions[i]; ++n) {
                contestants[i].run();
            }
            const double count = static_cast<double>(repetitions[i]);
            result.m_sides[i].seconds.push_back((ThreadSeconds() - threadStarted) / count);
            result.m_sides[i].wallSeconds.push_back((WallSeconds() - wallStarted) / count);
        }
    }
    return result;
}

const Comparison::Side& Comparison::Of(const std::string& contestant) const {
    const auto found = std::find_if(m_sides.begin(), m_sides.end(),
                                    [&contestant](const Side& side) { return side.name == contestant; });
    if (found == m_sides.end()) {
        throw std::logic_error("there is no contestant " + contestant);
    }
    return *found;
}

std::size_t Comparison::Rounds() const {
    return m_sides.front().seconds.size();
}

double Comparison::Seconds(const std::string& contestant) const {
    return Median(Of(contestant).seconds);
}

double Comparison::WallSeconds(const std::string& contestant) const {
    return Median(Of(contestant).wallSeconds);
}

double Comparison::Ratio(const std::string& contestant, const std::string& base) const {
    std::vector<double> ratios = Of(contestant).seconds;
    std::transform(ratios.begin(), ratios.end(), Of(base).seconds.begin(), ratios.begin(),
                   [](double time, double baseTime) { return time / baseTime; });
    return Median(ratios);
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
