// What VCS shows of its rules when its tools only ask.
#include "Probe.h"
#include "ProbeDown.h"
#include "ProbeToolText.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>

using namespace probe;

namespace {

const wchar_t NoSuchName[] = L"NoSuchName7f3c";
const size_t AttributeWidth = 22; // with the blank behind it
const size_t SystemWidth = 11;

class VcsProbe {
public:
    explicit VcsProbe(const AskTool& ask) : m_ask(ask) {
    }

    ProbeAnswers Run() {
        LookAtLists();
        if (!m_hasLines) {
            return m_answers;
        }
        LookAtSystems();
        LookAtConditions();
        LookAtDisplays();
        LookAtAllAttributes();
        LookAtHeaders();
        LookAtStates();
        LookAtValues();
        LookAtDependencies();
        LookAtMessages();
        LookAtClusterState();
        LookAtDownSystems(m_ask, m_answers);
        return m_answers;
    }

private:
    ToolOutput Ask(const std::wstring& tool, const std::wstring& arguments) const {
        return m_ask(tool, arguments);
    }
    void LookAtLists();
    void LookAtSystems();
    void LookAtRow(const std::string& line);
    void LookAtConditions();
    void LookAtTypes();
    void LookAtDisplays();
    void LookAtAllAttributes();
    void LookAtHeaders();
    void LookAtHeader(const char* rule, const Texts& lines, const Texts& expected);
    void LookAtStates();
    void LookAtValues();
    void LookAtValue(const char* rule, const Texts& lines);
    void LookAtDependencies();
    void LookAtDependencyHeader(const char* rule, const ToolOutput& answer, const Texts& header, const char* none);
    void LookAtMessages();
    void LookAtMessage(const char* rule, const std::wstring& tool, const std::wstring& command,
                       const std::wstring& known, const std::string& number);
    void LookAtClusterState();

    const AskTool& m_ask;
    ProbeAnswers m_answers{VcsRules()};
    std::wstring m_group;
    std::wstring m_resource;
    std::wstring m_system;
    std::wstring m_parent; // of another resource
    Names m_resources;
    Texts m_systemsOfResource;
    bool m_hasLines = true;
};

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
        const Texts lines = AnswerOf(*list);
        if (lines.empty() || lines.front().empty()) {
            continue;
        }
        const bool isHeader = lines.front()[0] == '#';
        m_answers.Saw("vcs-list-header", !isHeader, isHeader ? "a header" : "none");
        const bool isPaired = std::count(list->raw.begin(), list->raw.end(), '\n') ==
                              std::count(list->raw.begin(), list->raw.end(), '\r');
        const bool hasFeeds = list->raw.find('\n') != std::string::npos;
        const bool hasReturns = list->raw.find('\r') != std::string::npos;
        m_answers.Saw("vcs-line-end", isPaired && hasFeeds,
                      !hasFeeds     ? "CR"
                      : !hasReturns ? "LF"
                      : isPaired    ? "CR LF"
                                    : "mixed");
        m_hasLines = m_hasLines && hasFeeds; // without them all stands in one
        const Texts rows(lines.begin() + (isHeader ? 1 : 0), lines.end());
        if (!hasFeeds || rows.empty()) {
            continue;
        }
        for (const std::string& line : rows) {
            LookAtRow(line);
        }
        const Texts words = WordsOf(rows.front());
        (list == &groups ? m_group : m_resource) = words.empty() ? std::wstring() : common::ToUtf16(words.front());
        if (list == &resources && words.size() > 1) {
            m_resources = FirstWords(rows);
            for (const std::string& row : rows) {
                const Texts pair = WordsOf(row);
                if (pair.size() == 2 && pair[0] == words[0]) {
                    m_systemsOfResource.push_back(pair[1]);
                }
            }
        }
    }
}

void VcsProbe::LookAtSystems() {
    const Texts systems = AnswerOf(Ask(L"hasys", L"-list"));
    if (systems.empty()) {
        return;
    }
    const bool areAlone = std::all_of(systems.begin(), systems.end(), [](const std::string& line) {
        return WordsOf(line).size() == 1 && line[0] != '#';
    });
    m_answers.Saw("vcs-system-list", areAlone, areAlone ? "one name a line" : "otherwise");
    if (areAlone) {
        m_system = common::ToUtf16(WordsOf(systems.front()).front());
    }
}

void VcsProbe::LookAtConditions() {
    if (m_resource.empty()) {
        return; // a list that is refused anyway tells nothing of conditions
    }
    const ToolOutput none = Ask(L"hares", L"-list Type=NoSuchType7f3c");
    const bool isEmpty = none.output.empty() && none.errors.empty();
    const bool isAsSimulated = isEmpty && none.exitCode == 0;
    // A message may be a refusal that has nothing to do with the condition.
    if (isAsSimulated || (MessageOf(Ask(L"hares", L"-list Type=NoSuchType7f3c")) == MessageOf(none) &&
                          !AnswerOf(Ask(L"hares", L"-list")).empty())) {
        m_answers.Saw("vcs-no-match", isAsSimulated,
                      (isEmpty ? "nothing" : "a text") + std::string(", exit code ") + std::to_string(none.exitCode));
    }
    LookAtTypes();
}

void VcsProbe::LookAtTypes() {
    const Texts value = AnswerOf(Ask(L"hares", L"-value " + m_resource + L" Type"));
    const Texts words = value.size() == 1 ? WordsOf(value.front()) : Texts();
    if (words.size() != 1) {
        return;
    }
    const std::wstring type = common::ToUtf16(words.front());
    const ToolOutput equal = Ask(L"hares", L"-list Type=" + type);
    const ToolOutput unequal = Ask(L"hares", L"-list Type!=" + type);
    const ToolOutput prefix = Ask(L"hares", L"-list Type=~" + type.substr(0, type.size() - 1));
    const Names with = FirstWords(AnswerOf(equal));
    if (MessageOf(equal) == NoMessage) {
        const bool isIn = with.count(common::ToUtf8(m_resource)) != 0;
        m_answers.Saw("vcs-condition", isIn, isIn ? "the resource is listed" : "it is not");
    }
    if (with.count(common::ToUtf8(m_resource)) == 0) {
        return;
    }
    Names others;
    std::set_difference(m_resources.begin(), m_resources.end(), with.begin(), with.end(),
                        std::inserter(others, others.end()));
    // Where nothing is left over, what is printed then is another matter.
    if (!others.empty() && MessageOf(unequal) == NoMessage) {
        const bool areOthers = FirstWords(AnswerOf(unequal)) == others;
        m_answers.Saw("vcs-condition-unequal", areOthers, areOthers ? "all others" : "not these");
    }
    if (type.size() > 1 && MessageOf(prefix) == NoMessage) {
        const Names begun = FirstWords(AnswerOf(prefix));
        const bool hasAll = std::includes(begun.begin(), begun.end(), with.begin(), with.end());
        m_answers.Saw("vcs-condition-prefix", hasAll, hasAll ? "they are listed" : "not all of them");
    }
}

void VcsProbe::LookAtHeader(const char* rule, const Texts& lines, const Texts& expected) {
    if (!lines.empty()) {
        const bool isHeader = WordsOf(lines[0]) == expected && (lines.size() < 2 || lines[1].compare(0, 1, "#") != 0);
        m_answers.Saw(rule, isHeader, isHeader ? "that header" : "another one");
    }
}

void VcsProbe::LookAtDisplays() {
    if (m_resource.empty()) {
        return;
    }
    const Texts lines = AnswerOf(Ask(L"hares", L"-display " + m_resource + L" -attribute State"));
    const Texts header = {"#Resource", "Attribute", "System", "Value"};
    LookAtHeader("vcs-display-header", lines, header);
    if (lines.size() < 2) {
        return;
    }
    const size_t attribute = lines[0].find("Attribute");
    const size_t system = lines[0].find("System");
    const size_t value = lines[0].find("Value");
    if (WordsOf(lines[0]) == header) {
        const bool areWidths = system == attribute + AttributeWidth && value == system + SystemWidth &&
                               attribute > common::ToUtf8(m_resource).size();
        m_answers.Saw("vcs-display-widths", areWidths, areWidths ? "these widths" : "other widths");
    }
    Texts systems;
    for (size_t i = 1; i < lines.size(); ++i) {
        const Texts words = WordsOf(lines[i]);
        if (words.size() > 3) {
            const bool isBare = words[3][0] != '|';
            m_answers.Saw("vcs-resource-states", isBare, isBare ? "without bars" : "otherwise");
        }
        systems.push_back(words.size() > 2 ? words[2] : std::string());
    }
    if (!m_systemsOfResource.empty()) {
        const bool areSame = systems == m_systemsOfResource;
        m_answers.Saw("vcs-local", areSame, areSame ? "one row each" : "other rows, or another order");
    }
}

void VcsProbe::LookAtAllAttributes() {
    if (m_resource.empty()) {
        return;
    }
    for (const std::string& line : AnswerOf(Ask(L"hares", L"-display " + m_resource))) {
        const Texts words = WordsOf(line);
        if (words.size() > 1 && (words[1] == "Group" || words[1] == "Type")) {
            const bool isGlobal = words.size() > 2 && words[2] == "global";
            m_answers.Saw("vcs-global", isGlobal, isGlobal ? "global" : "otherwise");
        }
        if (words.size() == 3 && line[0] != '#') {
            m_answers.Saw("vcs-empty-value", line.back() == ' ', line.back() == ' ' ? "blanks" : "none");
        }
    }
}

void VcsProbe::LookAtHeaders() {
    if (!m_group.empty()) {
        const Texts lines = AnswerOf(Ask(L"hagrp", L"-display " + m_group + L" -attribute SystemList"));
        LookAtHeader("vcs-group-display", lines, {"#Group", "Attribute", "System", "Value"});
        // The systems and their numbers, in turn.
        const Texts words = lines.size() == 2 ? WordsOf(lines[1]) : Texts();
        if (words.size() > 4) {
            std::string expected = words[3];
            for (size_t i = 4; i < words.size(); ++i) {
                expected += '\t' + words[i];
            }
            const bool areTabs = lines[1].find(expected) != std::string::npos;
            m_answers.Saw("vcs-parts", areTabs, areTabs ? "tabs" : "otherwise");
        }
    }
    if (!m_system.empty()) {
        LookAtHeader("vcs-system-display", AnswerOf(Ask(L"hasys", L"-display " + m_system + L" -attribute SysState")),
                     {"#System", "Attribute", "Value"});
    }
}

void VcsProbe::LookAtStates() {
    if (m_group.empty()) {
        return;
    }
    std::wstring system;
    for (const std::string& line : AnswerOf(Ask(L"hagrp", L"-state " + m_group))) {
        const Texts words = WordsOf(line);
        if (words.size() > 3 && line[0] != '#') {
            const bool hasBars = words[3].front() == '|' && line.find_last_of('|') == line.find_last_not_of(" \t");
            m_answers.Saw("vcs-group-states", hasBars, hasBars ? "between bars" : "otherwise");
            system = common::ToUtf16(words[2]);
        }
    }
    if (system.empty()) {
        return;
    }
    const Texts state = AnswerOf(Ask(L"hagrp", L"-state " + m_group + L" -sys " + system));
    if (!state.empty()) {
        const bool isAlone = state.size() == 1 && WordsOf(state[0]).size() == 1 && state[0][0] != '|';
        m_answers.Saw("vcs-one-state", isAlone, isAlone ? "alone" : "otherwise");
    }
}

void VcsProbe::LookAtValue(const char* rule, const Texts& lines) {
    if (!lines.empty()) {
        const bool isAlone = lines.size() == 1 && WordsOf(lines.front()).size() == 1;
        m_answers.Saw(rule, isAlone, isAlone ? "alone" : std::to_string(lines.size()) + " lines");
    }
}

void VcsProbe::LookAtValues() {
    if (!m_resource.empty()) {
        LookAtValue("vcs-value", AnswerOf(Ask(L"hares", L"-value " + m_resource + L" Group")));
    }
    if (!m_group.empty()) {
        LookAtValue("vcs-group-value", AnswerOf(Ask(L"hagrp", L"-value " + m_group + L" Parallel")));
    }
    if (!m_system.empty()) {
        LookAtValue("vcs-system-value", AnswerOf(Ask(L"hasys", L"-value " + m_system + L" SysState")));
    }
}

void VcsProbe::LookAtDependencyHeader(const char* rule, const ToolOutput& answer, const Texts& header,
                                      const char* none) {
    const std::string message = MessageOf(answer);
    if (message != NoMessage) {
        if (message == none) {
            m_answers.Saw(rule, true, "that message");
        }
        return; // another one tells why it was not asked
    }
    const Texts lines = LinesOf(answer.output);
    if (lines.empty() && answer.exitCode != 0) {
        return;
    }
    const bool isHeader = !lines.empty() && WordsOf(lines.front()) == header;
    m_answers.Saw(rule, isHeader, isHeader ? "that header" : lines.empty() ? "nothing" : "something else");
}

void VcsProbe::LookAtDependencies() {
    if (m_group.empty() || m_resource.empty()) {
        return;
    }
    const Texts header = {"#Group", "Parent", "Child"};
    const ToolOutput all = Ask(L"hares", L"-dep");
    LookAtDependencyHeader("vcs-dependencies", all, header, "V-16-1-50034");
    LookAtDependencyHeader("vcs-group-dependencies", Ask(L"hagrp", L"-dep"), {"#Parent", "Child", "Relationship"},
                           "V-16-1-50035");
    Names parents;
    Names both;
    const Texts rows = AnswerOf(all);
    for (const std::string& row : rows) {
        const Texts words = WordsOf(row);
        parents.insert(words.size() == 3 ? words[1] : std::string());
    }
    for (const std::string& row : rows) {
        const Texts words = WordsOf(row);
        if (words.size() == 3 && words != header) {
            m_parent = common::ToUtf16(words[1]);
            if (parents.count(words[2]) != 0) {
                both.insert(words[2]);
            }
        }
    }
    if (both.empty()) {
        return; // none is a parent and a child
    }
    const std::string name = *both.begin();
    bool isChild = false;
    bool isOrdered = true;
    for (const std::string& row : AnswerOf(Ask(L"hares", L"-dep " + common::ToUtf16(name)))) {
        const Texts words = WordsOf(row);
        if (words.size() == 3 && words != header) {
            isChild = isChild || words[2] == name;
            isOrdered = isOrdered && (words[1] != name || !isChild);
        }
    }
    if (isChild) {
        m_answers.Saw("vcs-dependency-order", isOrdered, isOrdered ? "as a parent first" : "otherwise");
    }
}

// What is known is asked for, too: where that gets a message, or another one comes the next time, it is not the name
// that is refused.
void VcsProbe::LookAtMessage(const char* rule, const std::wstring& tool, const std::wstring& command,
                             const std::wstring& known, const std::string& number) {
    if (known.empty()) {
        return;
    }
    const auto ask = [&](const std::wstring& name) { return Ask(tool, command + L" " + name); };
    const ToolOutput answer = ask(NoSuchName);
    const std::string seen = MessageOf(answer);
    const bool isAsSimulated = seen == number && answer.exitCode == 1;
    if (AnswerOf(ask(known)).empty() || (!isAsSimulated && MessageOf(ask(NoSuchName)) != seen)) {
        return;
    }
    m_answers.Saw(rule, isAsSimulated, seen + ", exit code " + std::to_string(answer.exitCode));
    if (seen != NoMessage) {
        m_answers.Saw("vcs-message-stream", !answer.errors.empty() && answer.output.empty(),
                      answer.errors.empty()   ? "standard output"
                      : answer.output.empty() ? "standard error"
                                              : "both");
    }
}

void VcsProbe::LookAtMessages() {
    LookAtMessage("vcs-unknown-group", L"hagrp", L"-state", m_group, "V-16-1-40131");
    LookAtMessage("vcs-unknown-group-display", L"hagrp", L"-display", m_group, "V-16-1-10133");
    LookAtMessage("vcs-unknown-resource", L"hares", L"-display", m_resource, "V-16-1-40130");
    LookAtMessage("vcs-unknown-system", L"hasys", L"-display", m_system, "V-16-1-10357");
    LookAtMessage("vcs-unknown-parent", L"hares", L"-dep", m_parent, "V-16-1-10260");
}

void VcsProbe::LookAtClusterState() {
    const Texts lines = AnswerOf(Ask(L"haclus", L"-state"));
    if (!lines.empty() && !lines.front().empty()) {
        m_answers.Saw("vcs-cluster-state", lines.front()[0] == '#',
                      lines.front()[0] == '#' ? "a table" : std::to_string(lines.size()) + " lines");
    }
    const Texts mode = AnswerOf(Ask(L"haclus", L"-value ReadOnly"));
    if (!mode.empty()) {
        const bool isFlag = mode.size() == 1 && (WordsOf(mode[0]) == Texts{"0"} || WordsOf(mode[0]) == Texts{"1"});
        m_answers.Saw("vcs-read-only", isFlag, isFlag ? "0 or 1" : "otherwise");
    }
    const ToolOutput usage = Ask(L"haconf", L"-help");
    if (MessageOf(usage) == NoMessage) {
        const std::string& text = usage.output.empty() ? usage.errors : usage.output;
        const bool isUsage = text.find("haconf") != std::string::npos;
        m_answers.Saw("vcs-usage", isUsage && !usage.output.empty() && usage.exitCode == 0,
                      std::string(!isUsage               ? "no usage"
                                  : usage.output.empty() ? "the usage on standard error"
                                                         : "the usage") +
                          ", exit code " + std::to_string(usage.exitCode));
    }
}

} // namespace

ProbeAnswers ProbeVcs(const AskTool& ask) {
    return VcsProbe(ask).Run();
}
