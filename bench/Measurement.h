// Ways to do the same, measured against one another in paired rounds.
#ifndef MEASUREMENT_H
#define MEASUREMENT_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Contestant {
    std::string name;
    std::function<void()> run;
};

// The rounds of one comparison. In each round every contestant has its turn, and the first turn goes round: whoever
// begins finds colder caches. Times are processor times of the thread unless a name says otherwise.
class Comparison {
public:
    std::size_t Rounds() const;
    // Medians of one run.
    double Seconds(const std::string& contestant) const;
    double WallSeconds(const std::string& contestant) const;
    // Medians of what the rounds give for two contestants each: what disturbs a round disturbs both of them.
    double Ratio(const std::string& contestant, const std::string& base) const;
    double Difference(const std::string& contestant, const std::string& base) const;
    // Of one run: cluster calls of the simulator, and what is allocated (zero where that cannot be watched).
    std::size_t Calls(const std::string& contestant) const;
    std::size_t PeakBytes(const std::string& contestant) const;
    std::size_t Allocations(const std::string& contestant) const;

private:
    friend Comparison Compare(const std::vector<Contestant>& contestants, double seconds);

    struct Side {
        std::string name;
        std::vector<double> seconds; // by round
        std::vector<double> wallSeconds;
        std::size_t calls = 0;
        std::size_t peakBytes = 0;
        std::size_t allocations = 0;
    };
    const Side& Of(const std::string& contestant) const;

    std::vector<Side> m_sides;
};

// Takes about so many seconds, and longer when the least number of rounds needs it. What takes less than a millisecond
// is repeated within its turn.
Comparison Compare(const std::vector<Contestant>& contestants, double seconds = 1.5);

double Median(std::vector<double> values);

} // namespace bench

#endif
