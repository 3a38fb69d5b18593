#include "HeardTool.h"

#include "common/Text.h"

#include <ToolText.h>

#include <algorithm>
#include <iterator>

namespace {

const char Blanks[] = " \t";

// That there is nothing to be shown is an answer, too.
const char* const NothingThere[] = {"V-16-1-50031", "V-16-1-50034", "V-16-1-50035"};

// As the tool was given them. What stands in quotes is one word, or a part of one.
std::vector<std::string> WordsOf(const std::string& commandLine) {
    std::vector<std::string> words;
    bool isInWord = false;
    bool isQuoted = false;
    for (const char c : commandLine) {
        const bool isBlank = !isQuoted && std::string(Blanks).find(c) != std::string::npos;
        if (!isBlank && !isInWord) {
            words.emplace_back();
        }
        isInWord = !isBlank;
        isQuoted = isQuoted != (c == '"');
        if (isInWord && c != '"') {
            words.back() += c;
        }
    }
    return words;
}

// Without its folder and its extension.
std::string ToolIn(std::string word) {
    word.erase(0, word.find_last_of("\\/") + 1);
    return word.substr(0, word.find('.'));
}

// What stands behind "VCS WARNING" or "VCS ERROR"; empty when the line is no such message.
std::string NumberOf(const std::string& line) {
    for (const std::string start : {"VCS WARNING ", "VCS ERROR "}) {
        if (line.compare(0, start.size(), start) == 0) {
            return line.substr(start.size(), line.find(' ', start.size()) - start.size());
        }
    }
    return std::string();
}

template <typename Visit> void EachLine(const std::string& text, const Visit& visit) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        visit(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

} // namespace

HeardTool::HeardTool(const recording::RecordedTool& run) {
    TakeWords(WordsOf(recording::BytesOfText(run.commandLine)));
    isQuestion = recording::IsQuestion(common::ToUtf16(tool + " " + verb));
    if (run.isRefused || run.startError != 0) {
        return;
    }
    bool isRefused = false;
    bool isNothing = false;
    std::string output;
    for (const recording::Printed& printed : run.output) {
        std::string text = recording::BytesOfText(printed.text);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        EachLine(text, [&](const std::string& line) {
            const std::string number = NumberOf(line);
            const bool tellsNothing =
                std::find(std::begin(NothingThere), std::end(NothingThere), number) != std::end(NothingThere);
            isNothing = isNothing || tellsNothing;
            isRefused = isRefused || (!number.empty() && !tellsNothing);
        });
        output += printed.isError ? std::string() : text;
    }
    hasWorked = run.exitCode == 0 && !isRefused;
    isWhole = hasWorked || (run.exitCode == 1 && isNothing && !isRefused);
    if (hasWorked || (run.exitCode == 1 && isRefused)) { // else the tool told how it is to be used, or was ended
        m_output = std::move(output);
        m_hasTitles = !m_output.empty() && m_output.front() == '#';
    }
}

void HeardTool::TakeWords(const std::vector<std::string>& words) {
    std::string option;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (i == 0) {
            tool = ToolIn(word);
        } else if (word.empty() || word.front() == '-') {
            option = word;
            options.push_back(word);
            verb = verb.empty() ? word : verb;
            isElsewhere = isElsewhere || word == "-clus";
        } else if (option == "-attribute") {
            attributes.push_back(word);
        } else if (option == "-sys" && system.empty()) {
            system = word;
        } else if (word != "all" || verb != "-display") {
            names.push_back(word);
        }
    }
}

std::vector<ShownValue> HeardTool::Values(TableForm form) const {
    return m_hasTitles ? ReadShownValues(m_output, form) : std::vector<ShownValue>();
}

std::vector<std::vector<std::string>> HeardTool::Rows(std::size_t fewest) const {
    return m_hasTitles ? ReadRows(m_output, fewest) : std::vector<std::vector<std::string>>();
}

std::vector<std::vector<std::string>> HeardTool::Lines() const {
    return ReadRows(m_output, 1);
}

bool HeardTool::Value(std::string& value) const {
    if (!hasWorked || m_hasTitles || m_output.empty()) {
        return false;
    }
    value = m_output.substr(0, m_output.find('\n'));
    return true;
}
