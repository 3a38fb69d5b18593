// The language in which both simulators are told to fail on demand; docs/faults.md describes it.
#ifndef COMMON_FAULTGRAMMAR_H
#define COMMON_FAULTGRAMMAR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace common {

class FaultError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

// What is hit, and what happens then. Which calls, objects and effects there are is the simulator's affair.
struct Fault {
    std::string call;       // empty: any
    std::string object;     // empty: any
    std::size_t first = 1;  // occurrence of a matching call
    bool onlyFirst = false; // else from then on

    std::optional<std::int64_t> code; // returned, instead of doing anything
    std::optional<std::int64_t> state;
    std::optional<std::string> output; // printed, instead of doing anything
    std::optional<std::uint64_t> random;
    std::optional<std::uint64_t> repeat;
    std::optional<std::uint64_t> kill; // ended after so many bytes
    std::optional<std::string> event;  // happens to the cluster just before the call
    std::uint32_t delayMs = 0;
    bool hangs = false;
    bool toErrors = false;

    std::size_t seen = 0; // matching calls so far

    // Counts a matching call. Whether it is hit.
    bool Occurs();
};

// "call@object#n=effect,effect". Throws FaultError.
Fault ParseFault(const std::string& text);

// A file of faults: one a line, or a JSON list of such texts and of objects, the older spelling. Throws FaultError,
// which names the line or the item.
std::vector<Fault> ParseFaults(const std::string& text);

} // namespace common

#endif
