#include "VcsRehearsal.h"

#include "Text.h"

#include <algorithm>

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

std::string Indented(const std::string& title, const Json& lines, const char* whenEmpty) {
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

} // namespace

Report RehearsalReport(const std::vector<ToolRun>& runs, const VcsDryRun& dryRun) {
    Json commands = Json::array();
    for (const ToolRun& run : runs) {
        commands.push_back(run.command);
    }
    Json difference = Json::array();
    for (const std::string& line : dryRun.Difference()) {
        difference.push_back(line);
    }
    Report report;
    report.AddSentence("commands", commands, Indented("Commands:", commands, "none are known"));
    report.AddSentence("difference", difference, Indented("Change of the configuration:", difference, "none"));
    return report;
}
