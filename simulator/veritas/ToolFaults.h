// Faults on demand: a tool that prints something else, is slow, hangs, or dies in mid-output; docs/faults.md.
#ifndef VCSSIM_TOOLFAULTS_H
#define VCSSIM_TOOLFAULTS_H

#include "common/FaultGrammar.h"

#include <string>
#include <vector>

namespace vcssim {

bool MatchesPattern(const std::string& pattern, const std::string& text);

// Whether the tool prints something, or ends, instead of doing anything.
bool TakesItsPlace(const common::Fault& fault);

// What is printed then. Throws std::bad_alloc.
std::string PrintedBy(const common::Fault& fault);

class ToolFaults {
public:
    // The text of a fault file. Throws common::FaultError.
    explicit ToolFaults(const std::string& text);

    // How often each fault was matched so far, as it was written by Counts.
    void SetCounts(const std::string& counts);
    std::string Counts() const;

    // Counts the run, and gives the fault that hits it, or null.
    const common::Fault* Hit(const std::string& tool, const std::vector<std::string>& arguments);

private:
    std::vector<common::Fault> m_faults;
};

} // namespace vcssim

#endif
