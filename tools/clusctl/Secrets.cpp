#include "Secrets.h"

#include "Text.h"

#include "common/Text.h"
#include "core/ToolSecrets.h"

#include <SecretNames.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

const size_t ShortestSought = 6; // what is shorter occurs everywhere by chance

// Where the secret of a line begins that the library logs about a tool; npos when there is none.
size_t FindLoggedSecret(const std::wstring& line) {
    const std::pair<std::wstring, size_t (*)(std::wstring_view)> kinds[] = {{L"Command line: ", clus::FindSecret},
                                                                            {L"Result: ", clus::FindShownSecret}};
    for (const auto& [mark, find] : kinds) {
        if (line.compare(0, mark.size(), mark) == 0) {
            const size_t begin = find(std::wstring_view(line).substr(mark.size()));
            return begin == std::wstring::npos ? begin : mark.size() + begin;
        }
    }
    return std::wstring::npos;
}

std::string Trimmed(const std::string& text, const char* what) {
    const size_t begin = text.find_first_not_of(what);
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(what) + 1 - begin);
}

} // namespace

bool IsSecretProperty(const std::string& name) {
    return recording::IsSecretPropertyName(name);
}

std::wstring LogSecrets::Masked(const std::wstring& line) {
    std::wstring masked = line;
    const size_t begin = FindLoggedSecret(line);
    if (begin != std::wstring::npos) {
        const std::wstring secret(clus::WithoutQuotesAround(std::wstring_view(line).substr(begin)));
        if (!secret.empty()) {
            Learn(secret);
            masked.replace(begin, std::wstring::npos, clus::SecretMask);
        }
    }
    const size_t maskSize = std::char_traits<wchar_t>::length(clus::SecretMask);
    for (const std::wstring& secret : m_known) {
        for (size_t at = 0; (at = masked.find(secret, at)) != std::wstring::npos; at += maskSize) {
            masked.replace(at, secret.size(), clus::SecretMask);
        }
    }
    return masked;
}

void LogSecrets::Learn(const std::wstring& secret) {
    if (secret.size() >= ShortestSought && std::find(m_known.begin(), m_known.end(), secret) == m_known.end()) {
        m_known.push_back(secret);
    }
}

std::vector<std::string> MaskedConfiguration(const std::vector<std::string>& lines) {
    std::vector<std::string> result;
    for (const std::string& line : lines) {
        // "Password = x", "Password @SYSTEM = x"
        const size_t equals = line.find('=');
        const std::string name = Trimmed(line.substr(0, std::min(equals, line.find('@'))), " \t\r\n");
        const bool isSecret = equals != std::string::npos && clus::IsSecretAttribute(common::ToUtf16(name)) &&
                              !Trimmed(line.substr(equals + 1), "\" \t\r\n").empty();
        result.push_back(isSecret ? line.substr(0, equals + 1) + " " + common::ToUtf8(clus::SecretMask) : line);
    }
    return result;
}

std::vector<std::string> MaskedWords(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    for (const std::string& word : words) {
        const bool isOption = word.compare(0, 2, "--") == 0;
        const size_t first = word.find('=');
        const size_t second = isOption && first != std::string::npos ? word.find('=', first + 1) : std::string::npos;
        const size_t equals = second == std::string::npos ? first : second;
        const size_t begin = second == std::string::npos ? 0 : first + 1;
        const bool isSecret =
            equals != std::string::npos &&
            clus::IsSecretAttribute(common::ToUtf16(Trimmed(word.substr(begin, equals - begin), "\" \t")));
        result.push_back(isSecret ? word.substr(0, equals + 1) + common::ToUtf8(clus::SecretMask) : word);
    }
    return result;
}
