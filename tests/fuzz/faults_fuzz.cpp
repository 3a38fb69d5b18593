// Reads texts as fault files of both simulators, and compares patterns with their definition, tried letter by letter.
#include "FuzzInput.h"

#include "Faults.h"
#include "ToolFaults.h"

#include <algorithm>
#include <vector>

namespace {

const std::size_t MostPrinted = 1024;

// Letter by letter of the pattern, which beginnings of the text it matches so far.
bool MatchesByDefinition(const std::string& pattern, const std::string& text) {
    std::vector<bool> matched(text.size() + 1);
    matched[0] = true;
    for (const char letter : pattern) {
        std::vector<bool> next(text.size() + 1);
        next[0] = letter == '*' && matched[0];
        for (std::size_t length = 1; length <= text.size(); ++length) {
            next[length] = letter == '*' ? matched[length] || next[length - 1]
                                         : matched[length - 1] && (letter == '?' || letter == text[length - 1]);
        }
        matched = next;
    }
    return matched.back();
}

void CheckPattern(const std::string& pattern, const std::string& text) {
    const std::string wholePattern = pattern.c_str();
    const std::string wholeText = text.c_str();
    FUZZ_CHECK(vcssim::MatchesPattern(wholePattern, wholeText) == MatchesByDefinition(wholePattern, wholeText));
}

void CheckFault(const common::Fault& written) {
    FUZZ_CHECK(written.first >= 1);
    const std::uint64_t once = written.random.value_or(0);
    const std::uint64_t output = written.output.value_or("").size();
    const std::uint64_t times = written.repeat.value_or(1);
    if (once < MostPrinted && output < MostPrinted && times < MostPrinted && (once + output) * times < MostPrinted) {
        const std::string printed = vcssim::PrintedBy(written);
        FUZZ_CHECK(printed.size() == (once + output) * std::max<std::uint64_t>(times, 1));
    }
    common::Fault fault = written;
    for (std::size_t occurrence = 1; occurrence <= 4; ++occurrence) {
        const bool hits = fault.onlyFirst ? occurrence == fault.first : occurrence >= fault.first;
        FUZZ_CHECK(fault.Occurs() == hits);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = AsText(data, size);
    const std::vector<std::string> lines = PartsOf(text, '\n');
    CheckPattern(lines.front(), lines.back());
    for (const std::string& line : lines) {
        try {
            const clussim::Fault fault = clussim::ParseFault(line);
            FUZZ_CHECK(fault.forcesState || fault.written.code || fault.written.delayMs != 0);
        } catch (const common::FaultError& error) {
            FUZZ_CHECK(error.what()[0] != '\0');
        }
    }
    try {
        for (const common::Fault& fault : common::ParseFaults(text)) {
            CheckFault(fault);
        }
        vcssim::ToolFaults faults(text);
        faults.SetCounts(text);
        const std::string counts = faults.Counts();
        faults.Hit("hares", {"-list", "Type=IP"});
        faults.SetCounts(counts);
        FUZZ_CHECK(faults.Counts() == counts);
    } catch (const common::FaultError& error) {
        FUZZ_CHECK(error.what()[0] != '\0');
    }
    return 0;
}
