#include "ProbeToolText.h"

#include <sstream>

namespace probe {

const char NoMessage[] = "no message";

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

std::string MessageOf(const ToolOutput& answer) {
    const std::string& text = answer.errors.empty() ? answer.output : answer.errors;
    const Texts words = WordsOf(text.substr(0, text.find('\n')));
    return words.size() > 2 && words[0] == "VCS" ? words[2] : NoMessage;
}

Texts AnswerOf(const ToolOutput& answer) {
    return answer.errors.empty() && MessageOf(answer) == NoMessage ? LinesOf(answer.output) : Texts();
}

Names FirstWords(const Texts& lines) {
    Names names;
    for (const std::string& line : lines) {
        const Texts words = WordsOf(line);
        if (!words.empty()) {
            names.insert(words.front());
        }
    }
    return names;
}

} // namespace probe
