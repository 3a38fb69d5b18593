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

// What ends a file's name, and no account's.
const char* const FileEndings[] = {"bak", "bat", "cer", "cfg",  "cmd", "conf", "config", "csv", "dat", "dll",
                                   "dmp", "doc", "edb", "etl",  "evt", "evtx", "exe",    "hta", "htm", "html",
                                   "inf", "ini", "js",  "json", "lnk", "lock", "log",    "mdb", "mof", "msi",
                                   "ocx", "old", "pdb", "pem",  "pl",  "ps1",  "psm1",   "py",  "rec", "reg",
                                   "sh",  "stm", "sys", "tmp",  "txt", "vbs",  "wsf",    "xls", "xml", "zip"};

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

    std::vector<LogName> Names() {
        for (std::size_t at = 0; at < m_text.size();) {
            if (!IsPart(m_text[at])) {
                ++at;
                continue;
            }
            const std::size_t end = EndOfWord(at);
            const std::string word = m_text.substr(at, end - at);
            if (IsBehindTwoBackslashes(at)) {
                m_names.push_back({word, true});
            } else if (IsOneOf(Leads, Lower(word))) {
                TakeBehind(end);
            }
            TakeAccount(at, end);
            at = end;
        }
        return m_names;
    }

private:
    // And these begin something: within a path they are one backslash, written as in source code.
    bool IsBehindTwoBackslashes(std::size_t at) const {
        const char before = at > 2 ? m_text[at - 3] : ' ';
        return at >= 2 && m_text.compare(at - 2, 2, "\\\\") == 0 && before != '\\' && before != ':' && !IsPart(before);
    }

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
                m_names.push_back({m_text.substr(at + 1, end - at - 1), false});
            }
            return;
        }
        const std::string word = m_text.substr(at, EndOfWord(at) - at);
        if (IsInCapitals(word)) {
            m_names.push_back({word, false});
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
        const std::size_t behind = EndOfAccount(end + 1);
        const std::string domain = m_text.substr(at, end - at);
        if (behind > end + 1 && !isOf(behind, "\\/:") && IsInCapitals(domain)) {
            m_names.push_back({domain, true});
            m_names.push_back({m_text.substr(end + 1, behind - end - 1), true});
        }
    }

    // Dots are within it, as in "j.doe"; where it begins when it is a file's name.
    std::size_t EndOfAccount(std::size_t begin) const {
        std::size_t last = begin;
        std::size_t end = EndOfWord(begin);
        while (end > last && end + 1 < m_text.size() && m_text[end] == '.' && IsPart(m_text[end + 1])) {
            last = end + 1;
            end = EndOfWord(last);
        }
        return last > begin && IsOneOf(FileEndings, Lower(m_text.substr(last, end - last))) ? begin : end;
    }

    const std::string& m_text;
    std::vector<LogName> m_names;
};

} // namespace

std::vector<LogName> NamesInLog(const std::string& text) {
    return Search(text).Names();
}
