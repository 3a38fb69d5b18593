#include "core/ToolSecrets.h"

#include "core/Text.h"

#include <algorithm>
#include <vector>

namespace clus {

namespace {

const wchar_t Blanks[] = L" \t";
const wchar_t QuotesAndBlanks[] = L"\" \t";
const std::size_t AttributeColumn = 1;
const std::size_t ValueColumn = 3;

// Where the words of one line begin and end.
struct Word {
    std::size_t begin;
    std::size_t end;
};

std::vector<Word> WordsOf(const std::wstring& line) {
    std::vector<Word> words;
    std::size_t begin = line.find_first_not_of(Blanks);
    while (begin != std::wstring::npos) {
        const std::size_t end = std::min(line.find_first_of(Blanks, begin), line.size());
        words.push_back({begin, end});
        begin = line.find_first_not_of(Blanks, end);
    }
    return words;
}

std::wstring TextOf(const std::wstring& line, const Word& word) {
    return line.substr(word.begin, word.end - word.begin);
}

// Where the secret begins, npos when there is none.
std::size_t FindSecret(const std::wstring& commandLine) {
    const std::vector<Word> words = WordsOf(commandLine);
    std::size_t firstAttribute = words.size(); // behind -modify and the resource's name
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::wstring word = TextOf(commandLine, words[i]);
        if (word == L"-modify" && firstAttribute == words.size()) {
            firstAttribute = i + 2;
        }
        const std::size_t equals = word.find(L'=');
        if (equals != std::wstring::npos && IsSecretAttribute(word.substr(0, equals))) {
            return words[i].begin + equals + 1;
        }
        if (i >= firstAttribute && i + 1 < words.size() && IsSecretAttribute(word)) {
            return words[i + 1].begin;
        }
    }
    return std::wstring::npos;
}

void MaskValueOfRow(std::wstring& line) {
    const std::vector<Word> words = WordsOf(line);
    if (words.size() > ValueColumn && IsSecretAttribute(TextOf(line, words[AttributeColumn]))) {
        line.replace(words[ValueColumn].begin, std::wstring::npos, SecretMask);
    }
}

void MaskOccurrences(std::wstring& line, const std::wstring& secret) {
    const std::size_t length = std::char_traits<wchar_t>::length(SecretMask);
    for (std::size_t at = 0; (at = line.find(secret, at)) != std::wstring::npos; at += length) {
        line.replace(at, secret.size(), SecretMask);
    }
}

} // namespace

bool IsSecretAttribute(const std::wstring& name) {
    const std::wstring ending = L"password";
    return name.size() >= ending.size() && EqualNoCase(name.c_str() + (name.size() - ending.size()), ending.c_str());
}

std::wstring TakeSecret(std::wstring& commandLine) {
    const std::size_t begin = FindSecret(commandLine);
    if (begin == std::wstring::npos) {
        return std::wstring();
    }
    const std::size_t first = commandLine.find_first_not_of(QuotesAndBlanks, begin);
    if (first == std::wstring::npos) {
        return std::wstring(); // an empty password is none
    }
    std::wstring secret = commandLine.substr(first, commandLine.find_last_not_of(QuotesAndBlanks) + 1 - first);
    commandLine.replace(begin, std::wstring::npos, SecretMask);
    return secret;
}

std::wstring WithoutSecrets(const std::wstring& output, const std::wstring& secret) {
    std::wstring masked;
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t end = std::min(output.find(L'\n', start), output.size());
        std::wstring line = output.substr(start, end - start);
        MaskValueOfRow(line);
        if (!secret.empty()) {
            MaskOccurrences(line, secret);
        }
        masked += line;
        if (end < output.size()) {
            masked += L'\n';
        }
        start = end + 1;
    }
    return masked;
}

} // namespace clus
