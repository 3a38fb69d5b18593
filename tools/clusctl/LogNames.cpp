#include "LogNames.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>

namespace {

const std::size_t LongestName = 256;
const std::size_t ShortestName = 3; // in capitals only: "IP" or "OK" would be one

const char* const Leads[] = {"node",    "system",  "host",  "computer", "server",  "user",
                             "account", "cluster", "group", "resource", "machine", "domain"};

// What stands behind these words, or in capitals before a backslash, and is no name.
const char* const NoNames[] = {"ONLINE",  "OFFLINE", "FAULTED", "RUNNING", "EXITED",   "UNKNOWN",  "PARTIAL",
                               "LEAVING", "EXITING", "INITING", "FAILED",  "PENDING",  "DOWN",     "SOFTWARE",
                               "SYSTEM",  "HKLM",    "HKCU",    "WINDOWS", "HARDWARE", "SECURITY", "SAM",
                               "ERROR",   "WARNING", "NOTICE",  "INFO",    "VCS",      "GUID",     "TRUE",
                               "FALSE",   "NULL",    "NONE",    "DLL",     "API"};

bool IsPart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

template <std::size_t Size> bool IsOneOf(const char* const (&words)[Size], const std::string& word) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

std::string Lower(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    return text;
}

bool IsInCapitals(const std::string& word) {
    const bool hasLetter = std::any_of(word.begin(), word.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
    const bool hasSmall = std::any_of(word.begin(), word.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    return hasLetter && !hasSmall && word.size() >= ShortestName && !IsOneOf(NoNames, word);
}

class Search {
public:
    explicit Search(const std::string& text) : m_text(text) {
    }

    std::vector<std::string> Names() {
        for (std::size_t at = 0; at < m_text.size();) {
            if (!IsPart(m_text[at])) {
                ++at;
                continue;
            }
            const std::size_t end = EndOfWord(at);
            const std::string word = m_text.substr(at, end - at);
            if (at >= 2 && m_text.compare(at - 2, 2, "\\\\") == 0 && (at == 2 || m_text[at - 3] != '\\')) {
                m_names.push_back(word);
            } else if (IsOneOf(Leads, Lower(word))) {
                TakeBehind(end);
            }
            TakeAccount(at, end);
            at = end;
        }
        return m_names;
    }

private:
    std::size_t EndOfWord(std::size_t at) const {
        while (at < m_text.size() && IsPart(m_text[at])) {
            ++at;
        }
        return at;
    }

    // What a word such as "node" leads to: NODE3, "a name" or (NODE3), on the same line.
    void TakeBehind(std::size_t at) {
        const std::size_t most = std::min(at + 4, m_text.size());
        while (at < most && (m_text[at] == ' ' || m_text[at] == ':' || m_text[at] == '=' || m_text[at] == '(' ||
                             m_text[at] == '[')) {
            ++at;
        }
        if (at >= m_text.size()) {
            return;
        }
        if (m_text[at] == '"' || m_text[at] == '\'') {
            const std::size_t end = m_text.find(m_text[at], at + 1);
            const std::size_t line = std::min(m_text.find('\n', at), m_text.size());
            if (end < line && end - at <= LongestName) {
                m_names.push_back(m_text.substr(at + 1, end - at - 1));
            }
            return;
        }
        const std::string word = m_text.substr(at, EndOfWord(at) - at);
        if (IsInCapitals(word)) {
            m_names.push_back(word);
        }
    }

    // The first of two words with one backslash between them and no further part of a path around them.
    void TakeAccount(std::size_t at, std::size_t end) {
        const auto isOf = [this](std::size_t place, const char* characters) {
            return place < m_text.size() && std::string(characters).find(m_text[place]) != std::string::npos;
        };
        if (!isOf(end, "\\") || (at > 0 && isOf(at - 1, "\\/:."))) {
            return;
        }
        const std::size_t behind = EndOfWord(end + 1);
        const std::string domain = m_text.substr(at, end - at);
        if (behind > end + 1 && !isOf(behind, "\\/.:") && IsInCapitals(domain)) {
            m_names.push_back(domain);
            m_names.push_back(m_text.substr(end + 1, behind - end - 1));
        }
    }

    const std::string& m_text;
    std::vector<std::string> m_names;
};

} // namespace

std::vector<std::string> NamesInLog(const std::string& text) {
    return Search(text).Names();
}
