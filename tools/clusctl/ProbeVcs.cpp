// What VCS shows of its rules when its tools only ask.
#include "Probe.h"
#include "VcsToolProcess.h"
#include "VcsTools.h"

#include "common/Text.h"

#include <algorithm>
#include <sstream>

namespace {

const char MessageMark[] = "VCS ";
const size_t AttributeWidth = 22; // with the blank behind it
const size_t SystemWidth = 11;

typedef std::vector<std::string> Texts;

Texts LinesOf(const std::string& text) {
    Texts lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

Texts WordsOf(const std::string& line) {
    Texts words;
    std::istringstream stream(line);
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

bool IsMessage(const std::string& text) {
    return text.compare(0, sizeof(MessageMark) - 1, MessageMark) == 0;
}

class VcsProbe {
public:
    explicit VcsProbe(const LogCapture& log) : m_log(log) {
    }

    ProbeAnswers Run() {
        LookAtLists();
        LookAtDisplays();
        LookAtStates();
        LookAtDependencies();
        LookAtMessages();
        LookAtClusterState();
        return m_answers;
    }

private:
    ToolOutput Ask(const std::wstring& tool, const std::wstring& arguments);
    void LookAtLists();
    void LookAtRow(const std::string& line);
    void LookAtDisplays();
    void LookAtStates();
    void LookAtDependencies();
    void LookAtMessages();
    void LookAtMessage(const char* rule, const ToolOutput& answer, const std::string& number);
    void LookAtClusterState();

    const LogCapture& m_log;
    ProbeAnswers m_answers{VcsRules()};
    std::wstring m_group;
    std::wstring m_resource;
};

// Throws Failure when the tool, or the engine, is not there.
ToolOutput VcsProbe::Ask(const std::wstring& tool, const std::wstring& arguments) {
    const ToolWatch watch(m_log);
    ToolOutput answer = RunVcsTool(tool, arguments);
    for (const ToolProblem& problem : watch.Problems()) {
        if (problem.kind != ToolProblem::Kind::Message && problem.kind != ToolProblem::Kind::Ended) {
            throw ToolFailure("cannot ask VCS", {problem});
        }
    }
    return answer;
}

void VcsProbe::LookAtRow(const std::string& line) {
    const Texts words = WordsOf(line);
    if (words.size() != 2) {
        return;
    }
    const size_t system = line.rfind(words[1]);
    const size_t blanks = line.find_last_not_of(" \t", system - 1) + 1;
    const std::string between = line.substr(blanks, system - blanks);
    const bool areTabs = between.size() >= 2 && between.substr(between.size() - 2) == "\t\t";
    m_answers.Saw("vcs-list-separator", areTabs,
                  areTabs                                   ? "two tabs"
                  : between.find('\t') == std::string::npos ? "blanks"
                                                            : "other tabs and blanks");
}

void VcsProbe::LookAtLists() {
    const ToolOutput groups = Ask(L"hagrp", L"-list");
    const ToolOutput resources = Ask(L"hares", L"-list");
    for (const ToolOutput* list : {&groups, &resources}) {
        const Texts lines = LinesOf(list->output);
        if (lines.empty() || IsMessage(lines.front())) {
            continue;
        }
        m_answers.Saw("vcs-list-header", lines.front()[0] != '#', lines.front()[0] == '#' ? "a header" : "none");
        const bool isPaired = std::count(list->raw.begin(), list->raw.end(), '\n') ==
                              std::count(list->raw.begin(), list->raw.end(), '\r');
        const bool hasFeeds = list->raw.find('\n') != std::string::npos;
        const bool hasReturns = list->raw.find('\r') != std::string::npos;
        m_answers.Saw("vcs-line-end", isPaired && hasFeeds,
                      !hasFeeds     ? "CR"
                      : !hasReturns ? "LF"
                      : isPaired    ? "CR LF"
                                    : "mixed");
        if (!hasFeeds) {
            continue; // all in one line
        }
        for (const std::string& line : lines) {
            LookAtRow(line);
        }
        const Texts words = WordsOf(lines.front());
        (list == &groups ? m_group : m_resource) = words.empty() ? std::wstring() : common::ToUtf16(words.front());
    }
    const ToolOutput none = Ask(L"hares", L"-list Type=NoSuchType7f3c");
    m_answers.Saw("vcs-no-match", none.output.empty() && none.errors.empty() && none.exitCode == 0,
                  (none.output.empty() && none.errors.empty() ? "nothing" : "a text") + std::string(", exit code ") +
                      std::to_string(none.exitCode));
}

void VcsProbe::LookAtDisplays() {
    if (m_resource.empty()) {
        return;
    }
    const ToolOutput display = Ask(L"hares", L"-display " + m_resource + L" -attribute State");
    const Texts lines = LinesOf(display.output);
    if (lines.size() > 1 && !IsMessage(lines.front())) {
        const bool isHeader = WordsOf(lines[0]) == Texts{"#Resource", "Attribute", "System", "Value"};
        m_answers.Saw("vcs-display-header", isHeader && lines[1][0] != '#', isHeader ? "that header" : "another one");
        const size_t attribute = lines[0].find("Attribute");
        const size_t system = lines[0].find("System");
        const size_t value = lines[0].find("Value");
        const bool areWidths = isHeader && system == attribute + AttributeWidth && value == system + SystemWidth &&
                               attribute > m_resource.size();
        m_answers.Saw("vcs-display-widths", areWidths, areWidths ? "these widths" : "other widths");
        const Texts words = WordsOf(lines[1]);
        const bool isBare = words.size() > 3 && words[3][0] != '|';
        m_answers.Saw("vcs-resource-states", isBare, isBare ? "without bars" : "otherwise");
    }
    const ToolOutput all = Ask(L"hares", L"-display " + m_resource);
    for (const std::string& line : LinesOf(all.output)) {
        const Texts words = WordsOf(line);
        if (words.size() > 1 && (words[1] == "Group" || words[1] == "Type")) {
            const bool isGlobal = words.size() > 2 && words[2] == "global";
            m_answers.Saw("vcs-global", isGlobal, isGlobal ? "global" : "otherwise");
        }
        if (words.size() == 3 && line[0] != '#') {
            m_answers.Saw("vcs-empty-value", line.back() == ' ', line.back() == ' ' ? "blanks" : "none");
        }
    }
    const Texts value = LinesOf(Ask(L"hares", L"-value " + m_resource + L" Type").output);
    if (!value.empty() && !IsMessage(value.front())) {
        const bool isAlone = value.size() == 1 && WordsOf(value.front()).size() == 1;
        m_answers.Saw("vcs-value", isAlone, isAlone ? "alone" : std::to_string(value.size()) + " lines");
    }
}

void VcsProbe::LookAtStates() {
    if (m_group.empty()) {
        return;
    }
    for (const std::string& line : LinesOf(Ask(L"hagrp", L"-state " + m_group).output)) {
        const Texts words = WordsOf(line);
        if (words.size() > 3 && line[0] != '#') {
            const bool hasBars = words[3].front() == '|' && line.find_last_of('|') == line.find_last_not_of(" \t");
            m_answers.Saw("vcs-group-states", hasBars, hasBars ? "between bars" : "otherwise");
        }
    }
}

void VcsProbe::LookAtDependencies() {
    if (m_resource.empty()) {
        return;
    }
    const ToolOutput answer = Ask(L"hares", L"-dep " + m_resource);
    const Texts lines = LinesOf(answer.output + answer.errors);
    if (lines.empty()) {
        m_answers.Saw("vcs-dependencies", false, "nothing");
        return;
    }
    const bool isNone = lines.front().find("V-16-1-50034") != std::string::npos;
    const bool isHeader = WordsOf(lines.front()) == Texts{"#Group", "Parent", "Child"};
    m_answers.Saw("vcs-dependencies", isNone || isHeader,
                  isNone     ? "that message"
                  : isHeader ? "that header"
                             : "something else");
}

void VcsProbe::LookAtMessage(const char* rule, const ToolOutput& answer, const std::string& number) {
    const Texts words = WordsOf(answer.errors.empty() ? answer.output : answer.errors);
    const std::string seen = words.size() > 2 && IsMessage(words[0] + " ") ? words[2] : "no message";
    m_answers.Saw(rule, seen == number && answer.exitCode == 1,
                  seen + ", exit code " + std::to_string(answer.exitCode));
    if (seen != "no message") {
        m_answers.Saw("vcs-message-stream", !answer.errors.empty() && answer.output.empty(),
                      answer.errors.empty()   ? "standard output"
                      : answer.output.empty() ? "standard error"
                                              : "both");
    }
}

void VcsProbe::LookAtMessages() {
    LookAtMessage("vcs-unknown-group", Ask(L"hagrp", L"-state NoSuchGroup7f3c"), "V-16-1-40131");
    LookAtMessage("vcs-unknown-resource", Ask(L"hares", L"-display NoSuchResource7f3c"), "V-16-1-40130");
}

void VcsProbe::LookAtClusterState() {
    const Texts lines = LinesOf(Ask(L"haclus", L"-state").output);
    if (!lines.empty() && !IsMessage(lines.front())) {
        m_answers.Saw("vcs-cluster-state", lines.front()[0] == '#',
                      lines.front()[0] == '#' ? "a table" : std::to_string(lines.size()) + " lines");
    }
}

} // namespace

ProbeAnswers ProbeVcs(const LogCapture& log) {
    return VcsProbe(log).Run();
}
