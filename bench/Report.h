// The figures of a run: printed as they come, and kept for the JSON document that docs/benchmarks.md is made from.
#ifndef REPORT_H
#define REPORT_H

#include "common/Json.h"

#include <cstddef>
#include <string>

namespace bench {

struct Figure {
    std::size_t size; // of what was worked on; 0 where there is no such thing
    std::string measure;
    double value;
    std::string unit;
    double goal = 0; // at most; 0: none
};

class Report {
public:
    // A quiet one prints nothing.
    explicit Report(bool isQuiet);

    // What the following figures are about, and how they are measured. Sizes are numbers of `things`.
    void Begin(const std::string& subject, const std::string& explanation, const std::string& things);
    void Add(const Figure& figure);

    // With the figures the version, the date, the machine and the clocks.
    common::Json Document() const;

private:
    const bool m_isQuiet;
    common::Json m_subjects;
};

} // namespace bench

#endif
