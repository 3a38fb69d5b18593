// Faults on demand: a tool that prints something else, is slow, hangs, or dies in mid-output.
#ifndef VCSSIM_TOOLFAULTS_H
#define VCSSIM_TOOLFAULTS_H

#include <string>
#include <vector>

namespace vcssim {

struct ToolFault {
    std::string tool;      // empty: any
    std::string arguments; // pattern with * and ?, of the arguments joined with blanks; empty: any
    std::size_t nth = 0;   // of the runs that match; 0: each
    std::size_t seen = 0;

    bool replacesOutput = false; // the tool does nothing but print this
    std::string output;
    bool toErrors = false;
    bool setsExit = false;
    int exit = 0;
    bool kills = false;
    std::size_t kill = 0; // bytes printed until the end
    unsigned long delayMs = 0;
    bool hangs = false;
};

bool MatchesPattern(const std::string& pattern, const std::string& text);

class ToolFaults {
public:
    // Throws std::invalid_argument.
    explicit ToolFaults(const std::string& json);

    // How often each fault was matched so far, as it was written by Counts.
    void SetCounts(const std::string& counts);
    std::string Counts() const;

    // Counts the run, and gives the fault that hits it, or null.
    const ToolFault* Hit(const std::string& tool, const std::vector<std::string>& arguments);

private:
    std::vector<ToolFault> m_faults;
};

} // namespace vcssim

#endif
