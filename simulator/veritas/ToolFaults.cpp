#include "ToolFaults.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>

namespace vcssim {

namespace {

typedef nlohmann::json Json;

const char* const Members[] = {"tool",   "arguments", "nth",  "output", "repeat",   "random",
                               "stream", "exit",      "kill", "hang",   "delay_ms", "comment"};

std::size_t Number(const Json& fault, const char* member, std::size_t standard) {
    if (!fault.contains(member)) {
        return standard;
    }
    if (!fault[member].is_number_unsigned()) {
        throw std::invalid_argument(std::string(member) + " is no number");
    }
    return fault[member].get<std::size_t>();
}

std::string Text(const Json& fault, const char* member) {
    if (!fault.contains(member)) {
        return std::string();
    }
    if (!fault[member].is_string()) {
        throw std::invalid_argument(std::string(member) + " is no text");
    }
    return fault[member].get<std::string>();
}

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

ToolFault ReadFault(const Json& json) {
    if (!json.is_object()) {
        throw std::invalid_argument("is no object");
    }
    for (const auto& member : json.items()) {
        if (std::find(std::begin(Members), std::end(Members), member.key()) == std::end(Members)) {
            throw std::invalid_argument("there is no member '" + member.key() + "'");
        }
    }
    ToolFault fault;
    fault.tool = Text(json, "tool");
    fault.arguments = Text(json, "arguments");
    fault.nth = Number(json, "nth", 0);
    fault.replacesOutput = json.contains("output") || json.contains("random") || json.contains("exit");
    fault.output = Text(json, "output") + RandomBytes(Number(json, "random", 0));
    const std::string once = fault.output;
    const std::size_t times = Number(json, "repeat", 1);
    Reserve(fault.output, once.size(), times);
    for (std::size_t i = once.empty() ? 1 : times; i > 1; --i) {
        fault.output += once;
    }
    const std::string stream = Text(json, "stream");
    if (!stream.empty() && stream != "out" && stream != "errors") {
        throw std::invalid_argument("stream is neither \"out\" nor \"errors\"");
    }
    fault.toErrors = stream == "errors";
    if (json.contains("exit")) {
        if (!json["exit"].is_number_integer()) {
            throw std::invalid_argument("exit is no number");
        }
        fault.setsExit = true;
        fault.exit = json["exit"].get<int>();
    }
    fault.kills = json.contains("kill");
    fault.kill = Number(json, "kill", 0);
    fault.delayMs = static_cast<unsigned long>(Number(json, "delay_ms", 0));
    fault.hangs = json.value("hang", Json(false)) == true;
    return fault;
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

ToolFaults::ToolFaults(const std::string& json) {
    try {
        const Json root = Json::parse(json);
        if (!root.is_array()) {
            throw std::invalid_argument("is no list");
        }
        for (std::size_t i = 0; i < root.size(); ++i) {
            try {
                m_faults.push_back(ReadFault(root[i]));
            } catch (const std::invalid_argument& error) {
                throw std::invalid_argument("fault " + std::to_string(i) + ": " + error.what());
            }
        }
    } catch (const Json::exception& error) {
        throw std::invalid_argument(error.what());
    }
}

void ToolFaults::SetCounts(const std::string& counts) {
    std::istringstream stream(counts);
    for (ToolFault& fault : m_faults) {
        if (!(stream >> fault.seen)) {
            fault.seen = 0;
        }
    }
}

std::string ToolFaults::Counts() const {
    std::string counts;
    for (const ToolFault& fault : m_faults) {
        counts += std::to_string(fault.seen) + "\n";
    }
    return counts;
}

const ToolFault* ToolFaults::Hit(const std::string& tool, const std::vector<std::string>& arguments) {
    std::string joined;
    for (const std::string& argument : arguments) {
        joined += (joined.empty() ? "" : " ") + argument;
    }
    const ToolFault* hit = nullptr;
    for (ToolFault& fault : m_faults) {
        if ((!fault.tool.empty() && fault.tool != tool) ||
            (!fault.arguments.empty() && !MatchesPattern(fault.arguments, joined))) {
            continue;
        }
        ++fault.seen;
        if (!hit && (fault.nth == 0 || fault.seen == fault.nth)) {
            hit = &fault;
        }
    }
    return hit;
}

} // namespace vcssim
