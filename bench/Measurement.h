// One comparison: the library and the bare calls in turns, on the same simulated cluster.
#ifndef MEASUREMENT_H
#define MEASUREMENT_H

#include <cstddef>
#include <functional>

namespace bench {

struct Result {
    std::size_t rounds = 0;
    double library = 0; // seconds, median
    double bare = 0;
    std::size_t libraryCalls = 0; // cluster calls
    std::size_t bareCalls = 0;
    std::size_t peakBytes = 0; // of the library
    std::size_t allocations = 0;
};

// Measures two ways to do the same. Each does it `repetitions` times per round when once is too short to be timed; the
// result is for once.
Result Measure(const std::function<void()>& library, const std::function<void()>& bare, std::size_t repetitions = 1);

// Times, ratio, calls and memory. `parts` divides the surplus of time: what one of `partName` costs more. `smaller` is
// the result for a tenth of the resources, or null. `memoryTarget` 0: none.
void Print(std::size_t resources, const Result& result, const Result* smaller, std::size_t parts, const char* partName,
           std::size_t memoryTarget);

} // namespace bench

#endif
