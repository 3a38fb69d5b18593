// How much longer ten times as much takes.
#ifndef GROWTH_H
#define GROWTH_H

#include "Report.h"

#include <cstddef>
#include <string>

namespace bench {

// Adds it as a figure and gives it, 0 for the first size. `last` is the time that the tenth took, and becomes `now`.
inline double AddGrowth(Report& report, std::size_t size, const std::string& measure, double now, double& last,
                        double goal = 0) {
    const double growth = last > 0 ? now / last : 0;
    if (growth != 0) {
        report.Add({size, measure, growth, "times a tenth", goal});
    }
    last = now;
    return growth;
}

} // namespace bench

#endif
