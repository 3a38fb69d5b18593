#include "Secrets.h"

#include "Text.h"

#include <algorithm>

const char MaskedSecret[] = "***";

namespace {

const char Blanks[] = " \t\r\n";
const size_t ShortestSought = 6; // what is shorter occurs everywhere by chance

struct Word {
    size_t begin;
    size_t end;
};

std::vector<Word> WordsOf(const std::string& line) {
    std::vector<Word> words;
    size_t begin = line.find_first_not_of(Blanks);
    while (begin != std::string::npos) {
        const size_t end = std::min(line.find_first_of(Blanks, begin), line.size());
        words.push_back({begin, end});
        begin = line.find_first_not_of(Blanks, end);
    }
    return words;
}

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string Trimmed(const std::string& text, const char* what) {
    const size_t begin = text.find_first_not_of(what);
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(what) + 1 - begin);
}

// Where the secret of a log line begins; npos when it holds none. `Command line: hares -modify RES  Password "x"`,
// `Command line: hares -list  Password=x`, `Result: RES Password global x`.
size_t FindSecret(const std::string& line) {
    const bool isCommand = StartsWith(line, "Command line: ");
    if (!isCommand && !StartsWith(line, "Result: ")) {
        return std::string::npos;
    }
    const std::vector<Word> words = WordsOf(line);
    bool isModify = false;
    size_t firstAttribute = 0; // behind -modify and the resource's name
    for (size_t i = 1; i < words.size(); ++i) {
        const std::string word = line.substr(words[i].begin, words[i].end - words[i].begin);
        if (isCommand && !isModify && word == "-modify") {
            isModify = true;
            firstAttribute = i + 2;
        }
        const size_t equals = word.find('=');
        if (isCommand && equals != std::string::npos && IsSecretAttribute(word.substr(0, equals))) {
            return words[i].begin + equals + 1;
        }
        if (!IsSecretAttribute(word)) {
            continue;
        }
        const size_t value = isCommand ? i + 1 : i + 2; // a row names the system in between
        const bool isModified = isModify && i >= firstAttribute;
        const bool isRow = !isCommand && i == 2;
        if ((isModified || isRow) && value < words.size()) {
            return words[value].begin;
        }
    }
    return std::string::npos;
}

} // namespace

bool IsSecretAttribute(const std::string& name) {
    return EndsWith(Lower(name), "password");
}

std::string SecretMask::Masked(const std::string& line) {
    const size_t begin = FindSecret(line);
    if (begin == std::string::npos) {
        return WithoutKnown(line);
    }
    const std::string value = Trimmed(line.substr(begin), "\" \t\r\n");
    if (value.empty()) {
        return line;
    }
    Learn(value);
    return line.substr(0, begin) + MaskedSecret;
}

void SecretMask::Learn(const std::string& value) {
    if (value.size() >= ShortestSought && std::find(m_known.begin(), m_known.end(), value) == m_known.end()) {
        m_known.push_back(value);
    }
}

std::string SecretMask::WithoutKnown(const std::string& line) const {
    std::string result = line;
    for (const std::string& secret : m_known) {
        for (size_t at = result.find(secret); at != std::string::npos; at = result.find(secret, at)) {
            result.replace(at, secret.size(), MaskedSecret);
            at += sizeof(MaskedSecret) - 1;
        }
    }
    return result;
}

std::vector<std::string> MaskedConfiguration(const std::vector<std::string>& lines) {
    std::vector<std::string> result;
    for (const std::string& line : lines) {
        // "Password = x", "Password @SYSTEM = x"
        const size_t equals = line.find('=');
        const std::string name = Trimmed(line.substr(0, std::min(equals, line.find('@'))), Blanks);
        const bool isSecret = equals != std::string::npos && IsSecretAttribute(name) &&
                              !Trimmed(line.substr(equals + 1), "\" \t\r\n").empty();
        result.push_back(isSecret ? line.substr(0, equals + 1) + " " + MaskedSecret : line);
    }
    return result;
}
