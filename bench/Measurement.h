// Ways to do the same, measured against one another in paired rounds.
#ifndef MEASUREMENT_H
#define MEASUREMENT_H

#include "ProcessClock.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Contestant {
    std::string name;
    std::function<void()> run;
    // What its runs have taken until now that is not theirs, but that of what stands in for another program.
    std::function<RunTime()> standIn = {};
};

// What tells its times itself: processes, whose time is not that of this thread.
struct TimedContestant {
    std::string name;
    std::function<RunTime()> run;
};

// The rounds of one comparison. In each round every contestant has its turn, and the first turn goes round: whoever
// begins finds colder caches. Times are processor times unless a name says otherwise.
class Comparison {
public:
    bool Has(const std::string& contestant) const;
    // Medians of one run.
    double Seconds(const std::string& contestant) const;
    double WallSeconds(const std::string& contestant) const;
    // Medians of what the rounds give for two contestants each: what disturbs a round disturbs both of them.
    double Ratio(const std::string& contestant, const std::string& base) const;
    double WallRatio(const std::string& contestant, const std::string& base) const;
    double Difference(const std::string& contestant, const std::string& base) const;
    // Of one run: cluster calls of the simulator, and what is allocated (zero where that cannot be watched).
    std::size_t Calls(const std::string& contestant) const;
    std::size_t PeakBytes(const std::string& contestant) const;
    std::size_t Allocations(const std::string& contestant) const;

private:
    friend Comparison Compare(const std::vector<Contestant>& contestants, double seconds);
    friend Comparison CompareTimed(const std::vector<TimedContestant>& contestants, std::size_t rounds);

    struct Side {
        std::string name;
        std::vector<double> seconds; // by round
        std::vector<double> wallSeconds;
        std::size_t calls = 0;
        std::size_t peakBytes = 0;
        std::size_t allocations = 0;

        void Add(const RunTime& time) {
            seconds.push_back(time.seconds);
            wallSeconds.push_back(time.wallSeconds);
        }
    };
    const Side* Find(const std::string& contestant) const;
    const Side& Of(const std::string& contestant) const;

    std::vector<Side> m_sides;
};

// Takes about so many seconds, and longer when the least number of rounds needs it. Where the slowest takes less than a
// millisecond, all are repeated within their turns, as often as one another: a second run finds its memory at hand.
Comparison Compare(const std::vector<Contestant>& contestants, double seconds = 1.5);

Comparison CompareTimed(const std::vector<TimedContestant>& contestants, std::size_t rounds);

double Median(std::vector<double> values);

} // namespace bench

#endif
