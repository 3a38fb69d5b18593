#include "ClusterCalls.h"

#include "Json.h"
#include "Text.h"

#include "common/FaultGrammar.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <sstream>

namespace {

const unsigned long AccessDenied = 5;
const unsigned long ServerUnavailable = 1722; // RPC_S_SERVER_UNAVAILABLE
const unsigned long NotFound = 2;

const unsigned long long ModifyBit = 0x00400000; // of a control code: CLCTL_MODIFY

const char ControlCall[] = "ClusterResourceControl";
const char OpeningCall[] = "OpenCluster";

bool IsChange(const std::string& call, const Json& arguments) {
    static const char* const verbs[] = {"Add",   "Create", "Delete",  "Fail",   "Move", "Offline", "Online",
                                        "Pause", "Remove", "Restart", "Resume", "Set",  "Change"};
    if (call == ControlCall) {
        const Json code = arguments.value("code", Json());
        return code.is_number() && (code.get<unsigned long long>() & ModifyBit) != 0;
    }
    return std::any_of(std::begin(verbs), std::end(verbs),
                       [&call](const char* verb) { return StartsWith(call, verb); });
}

// What changes something by the name of its control code; others by their number.
std::string ControlText(unsigned long long code) {
    switch (code) {
    case 0x0140005e:
        return "SET_COMMON_PROPERTIES";
    case 0x01400086:
        return "SET_PRIVATE_PROPERTIES";
    default:
        char text[20];
        std::snprintf(text, sizeof(text), "0x%08llx", code);
        return text;
    }
}

// Handles by their numbers, as the names they were opened with.
class Handles {
public:
    // The arguments that tell what a call is about.
    std::string Text(const Json& arguments) const {
        std::string text;
        for (const auto& argument : arguments.items()) {
            const std::string part = Part(argument.key(), argument.value());
            text += (text.empty() || part.empty() ? "" : ", ") + part;
        }
        return text;
    }

    void Learn(const std::string& call, const Json& arguments, const Json& result) {
        const Json name = arguments.value("name", Json());
        if (!result.is_number() || result == 0) {
            return;
        }
        if (name.is_string()) {
            m_names[result.get<long long>()] = name.get<std::string>();
        } else if (call == OpeningCall) {
            m_names[result.get<long long>()] = "";
        } else if (call.find("OpenEnum") != std::string::npos) {
            m_names[result.get<long long>()] = Text(arguments);
        }
    }

private:
    std::string Part(const std::string& key, const Json& value) const {
        static const char* const sizes[] = {"cch", "cb", "cbOut", "cbIn", "in", "flags"};
        if (std::find(std::begin(sizes), std::end(sizes), key) != std::end(sizes)) {
            return std::string();
        }
        if (value.is_string()) {
            return Printable(value.get<std::string>());
        }
        if (!value.is_number()) {
            return std::string();
        }
        const auto number = value.get<long long>();
        const auto known = m_names.find(number);
        if (known != m_names.end()) {
            return Printable(known->second);
        }
        if (key == "code") {
            return ControlText(static_cast<unsigned long long>(number));
        }
        return key == "index" || key == "type" ? key + " " + std::to_string(number) : std::string();
    }

    std::map<long long, std::string> m_names;
};

// What the journal's line says of a failure.
unsigned long CodeOf(const Json& line) {
    const Json error = line.value("error", Json());
    if (error.is_number()) {
        return error.get<unsigned long>();
    }
    const Json result = line.value("result", Json());
    const auto call = line.at("call").get<std::string>();
    // The others give a handle, a state or a truth.
    const bool returnsCode = result.is_number() && call.find("Open") == std::string::npos &&
                             call.find("State") == std::string::npos && call.find("From") == std::string::npos &&
                             !StartsWith(call, "Create") && !StartsWith(call, "ResUtilGet");
    return returnsCode ? result.get<unsigned long>() : 0;
}

} // namespace

std::vector<ClusterCall> ReadClusterCalls(const std::string& journal) {
    std::vector<ClusterCall> calls;
    Handles handles;
    std::map<std::string, std::size_t> counts;
    std::istringstream lines(journal);
    for (std::string text; std::getline(lines, text);) {
        const Json line = Json::parse(text, nullptr, false);
        if (!line.is_object() || !line.contains("args")) { // also of one that only begins to wait
            continue;
        }
        ClusterCall call;
        call.call = line.at("call").get<std::string>();
        call.occurrence = ++counts[call.call];
        const Json& arguments = line.at("args");
        call.text = call.call + "(" + handles.Text(arguments) + ")";
        call.code = CodeOf(line);
        call.changes = IsChange(call.call, arguments);
        handles.Learn(call.call, arguments, line.value("result", Json()));
        calls.push_back(call);
    }
    return calls;
}

std::vector<std::size_t> ReadFaultCounts(const std::string& lines) {
    std::vector<std::size_t> counts;
    std::istringstream stream(lines);
    for (std::size_t count = 0; stream >> count;) {
        counts.push_back(count);
    }
    return counts;
}

std::vector<std::string> FaultsNotMet(const std::vector<std::string>& faults, const std::vector<std::size_t>& matched) {
    std::vector<std::string> sentences;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const std::size_t count = i < matched.size() ? matched[i] : 0;
        if (count < common::ParseFault(faults[i]).first) {
            sentences.push_back("the failure " + Quoted(faults[i]) + " did not come about: the command made " +
                                std::to_string(count) + " such call" + (count == 1 ? "" : "s"));
        }
    }
    return sentences;
}

unsigned long UsualCodeOf(const std::string& call) {
    if (StartsWith(call, "ResUtilFind")) {
        return NotFound;
    }
    const bool asks = call.find("Enum") != std::string::npos || StartsWith(call, "Get") || call == OpeningCall;
    return asks ? ServerUnavailable : AccessDenied;
}
