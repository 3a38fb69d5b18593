// Faults on demand: a tool that prints something else, is slow, hangs, or dies in mid-output; docs/faults.md.
#ifndef VCSSIM_TOOLFAULTS_H
#define VCSSIM_TOOLFAULTS_H

#include "common/FaultGrammar.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vcssim {

bool MatchesPattern(const std::string& pattern, const std::string& text);

// Whether the tool prints something, or ends, instead of doing anything.
bool TakesItsPlace(const common::Fault& fault);

// What is printed then. Throws std::bad_alloc.
std::string PrintedBy(const common::Fault& fault);

// "time@30=event:..."
struct TimedEvent {
    std::int64_t due = 0; // by the cluster's clock, in seconds
    std::string event;
};

class ToolFaults {
public:
    // The text of a fault file. Throws common::FaultError.
    explicit ToolFaults(const std::string& text);

    // How often each fault was matched so far, and when each event of the clock is due, as it was written by Counts.
    void SetCounts(const std::string& counts);
    std::string Counts() const;

    // Counts the run, and gives the fault that hits it, or null.
    const common::Fault* Hit(const std::string& tool, const std::vector<std::string>& arguments);

    // Whether any event goes by the clock: only then somebody has to know the time.
    bool HaveTimes() const;
    // Events of the clock are due so many seconds after the first time that this is asked. Those due by `until`, in the
    // order of their times; each is given once.
    std::vector<TimedEvent> TakeDue(std::int64_t now, std::int64_t until);

private:
    std::vector<common::Fault> m_faults;
};

} // namespace vcssim

#endif
