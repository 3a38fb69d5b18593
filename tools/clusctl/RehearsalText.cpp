#include "RehearsalText.h"

#include "Text.h"
#include "TextDifference.h"

#include <algorithm>
#include <cmath>

namespace {

// Tabs stay: they make up a main.cf.
std::string PrintableLine(const std::string& line) {
    std::string text;
    for (size_t begin = 0; begin <= line.size();) {
        const size_t end = std::min(line.find('\t', begin), line.size());
        text += (begin == 0 ? "" : "\t") + Printable(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return text;
}

std::string RightAligned(const std::string& text, size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

// "12", "12.500".
std::string SecondsText(double seconds) {
    const auto milliseconds = static_cast<long long>(std::llround(seconds * 1000));
    std::string text = std::to_string(milliseconds / 1000);
    if (milliseconds % 1000 != 0) {
        const std::string digits = std::to_string(milliseconds % 1000);
        text += "." + std::string(3 - digits.size(), '0') + digits;
    }
    return text;
}

std::string FailureText(const ClusterCall& call) {
    return call.isTool ? "exit code " + std::to_string(call.code) + (call.said.empty() ? "" : " (" + call.said + ")")
                       : ErrorText(call.code);
}

std::string EntryText(const Json& entry) {
    const auto kind = entry.at("kind").get<std::string>();
    const auto name = entry.at("name").get<std::string>();
    const auto what = entry.at("what").get<std::string>();
    const std::string why = entry.at("why").is_string() ? ": " + entry.at("why").get<std::string>() : "";
    if (kind == "event") {
        return "* " + name;
    }
    return (kind == "command" ? "* " : kind + " ") + name + " " + what + why;
}

} // namespace

std::string TitledBlock(const std::string& title, const Json& lines, const char* whenEmpty) {
    std::string text = title + "\n";
    for (const Json& line : lines) {
        text += "  " + PrintableLine(line.get<std::string>()) + "\n";
    }
    if (lines.empty()) {
        text += std::string("  ") + whenEmpty + "\n";
    }
    text.pop_back();
    return text;
}

Json LinesOf(const std::string& text) {
    Json lines = Json::array();
    for (const std::string& line : SplitLines(text)) {
        lines.push_back(line);
    }
    return lines;
}

Json TimelineLines(const Json& timeline) {
    Json lines = Json::array();
    for (const Json& entry : timeline) {
        lines.push_back(RightAligned(SecondsText(entry.at("at").get<double>()), 8) + "  " + EntryText(entry));
    }
    return lines;
}

Json TimelineEntry(double at, const char* kind, const std::string& name, const std::string& what) {
    return {{"at", at}, {"kind", kind}, {"name", name}, {"what", what}, {"why", nullptr}};
}

std::string LineOf(const std::vector<std::wstring>& command) {
    std::string line;
    for (const std::wstring& word : command) {
        const bool isPlain = !word.empty() && word.find(L' ') == std::wstring::npos;
        line.append(line.empty() ? "" : " ").append(isPlain ? Printable(word) : Quoted(word));
    }
    return line;
}

Json CallRecords(const std::vector<ClusterCall>& calls) {
    Json records = Json::array();
    for (const ClusterCall& call : calls) {
        records.push_back({{"call", call.call}, {"text", call.text}, {"code", call.code}, {"changes", call.changes}});
    }
    return records;
}

Json CallLines(const std::vector<ClusterCall>& calls) {
    Json lines = Json::array();
    for (const ClusterCall& call : calls) {
        if (call.changes) {
            lines.push_back(call.text + (call.code == 0 ? "" : ": " + FailureText(call)));
        }
    }
    const size_t asking = calls.size() - lines.size();
    if (asking != 0) {
        if (lines.empty()) {
            lines.push_back("none that changes anything");
        }
        lines.push_back("and " + std::to_string(asking) + (asking == 1 ? " that only asks" : " that only ask"));
    }
    return lines;
}
