#include "ToolFaults.h"

#include "ControlEvents.h"

#include <algorithm>
#include <limits>
#include <new>
#include <random>
#include <sstream>

namespace vcssim {

namespace {

// At once, so that what does not fit into memory is not tried for minutes.
void Reserve(std::string& text, std::size_t size, std::size_t times) {
    if (size != 0 && times > text.max_size() / size) {
        throw std::bad_alloc();
    }
    text.reserve(size * times);
}

// The same bytes each time.
std::string RandomBytes(std::size_t count) {
    std::mt19937 generator(static_cast<std::mt19937::result_type>(count));
    std::string bytes;
    Reserve(bytes, count, 1);
    while (bytes.size() < count) {
        bytes += static_cast<char>(generator() >> 24);
    }
    return bytes;
}

const char Time[] = "time";

// What the count of an event of the clock says: nothing yet, that it has happened, or when it is due and 1 more.
const std::size_t NotBegun = 0;
const std::size_t HasHappened = std::numeric_limits<std::size_t>::max();

void CheckTime(const common::Fault& fault) {
    const bool hasOtherEffects = fault.code || fault.output || fault.random || fault.repeat || fault.kill ||
                                 fault.delayMs != 0 || fault.hangs || fault.toErrors;
    if (!SecondsIn(fault.object) || !fault.event || fault.onlyFirst || fault.first != 1 || hasOtherEffects) {
        throw common::FaultError("a time is so many seconds, and takes an event: time@5=event:\"text\"");
    }
}

} // namespace

bool MatchesPattern(const std::string& pattern, const std::string& text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string::npos;
    std::size_t resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string::npos;
}

bool TakesItsPlace(const common::Fault& fault) {
    return fault.output || fault.random || fault.code;
}

std::string PrintedBy(const common::Fault& fault) {
    const std::string once =
        fault.output.value_or("") + RandomBytes(static_cast<std::size_t>(fault.random.value_or(0)));
    const std::size_t times =
        once.empty() ? 1 : std::max<std::size_t>(1, static_cast<std::size_t>(fault.repeat.value_or(1)));
    std::string printed;
    Reserve(printed, once.size(), times);
    for (std::size_t i = 0; i < times; ++i) {
        printed += once;
    }
    return printed;
}

ToolFaults::ToolFaults(const std::string& text) : m_faults(common::ParseFaults(text)) {
    for (const common::Fault& fault : m_faults) {
        if (fault.state) {
            throw common::FaultError("state: a tool has none");
        }
        if (fault.event && !IsControlEvent(*fault.event)) {
            throw common::FaultError("event: vcssim has no command '" + *fault.event + "' that changes the cluster");
        }
        if (fault.call == Time) {
            CheckTime(fault);
        }
    }
}

void ToolFaults::SetCounts(const std::string& counts) {
    std::istringstream stream(counts);
    for (common::Fault& fault : m_faults) {
        if (!(stream >> fault.seen)) {
            fault.seen = 0;
        }
    }
}

std::string ToolFaults::Counts() const {
    std::string counts;
    for (const common::Fault& fault : m_faults) {
        counts += std::to_string(fault.seen) + "\n";
    }
    return counts;
}

const common::Fault* ToolFaults::Hit(const std::string& tool, const std::vector<std::string>& arguments) {
    std::string joined;
    for (const std::string& argument : arguments) {
        joined += (joined.empty() ? "" : " ") + argument;
    }
    const common::Fault* hit = nullptr;
    for (common::Fault& fault : m_faults) {
        if (fault.call == Time || (!fault.call.empty() && fault.call != tool) ||
            (!fault.object.empty() && !MatchesPattern(fault.object, joined))) {
            continue;
        }
        if (fault.Occurs() && !hit) {
            hit = &fault;
        }
    }
    return hit;
}

bool ToolFaults::HaveTimes() const {
    return std::any_of(m_faults.begin(), m_faults.end(), [](const common::Fault& fault) { return fault.call == Time; });
}

std::vector<TimedEvent> ToolFaults::TakeDue(std::int64_t now, std::int64_t until) {
    std::vector<TimedEvent> events;
    for (common::Fault& fault : m_faults) {
        if (fault.call != Time || fault.seen == HasHappened) {
            continue;
        }
        if (fault.seen == NotBegun) {
            fault.seen = static_cast<std::size_t>(now + *SecondsIn(fault.object)) + 1;
        }
        const auto due = static_cast<std::int64_t>(fault.seen - 1);
        if (due <= until) {
            events.push_back({due, *fault.event});
            fault.seen = HasHappened;
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const TimedEvent& first, const TimedEvent& second) { return first.due < second.due; });
    return events;
}

} // namespace vcssim
