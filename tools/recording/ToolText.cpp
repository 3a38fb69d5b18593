#include "ToolText.h"

#include "core/ToolSecrets.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace recording {

namespace {

const char Blanks[] = " \t\r";

const char* const WordsOfVcs[] = {"online",        "offline",
                                  "faulted",       "partial",
                                  "starting",      "stopping",
                                  "restarting",    "unknown",
                                  "running",       "exited",
                                  "admin",         "wait",
                                  "leaving",       "remote",
                                  "build",         "state",
                                  "waiting",       "going",
                                  "not",           "up",
                                  "down",          "true",
                                  "false",         "failover",
                                  "parallel",      "hybrid",
                                  "priority",      "load",
                                  "roundrobin",    "frozen",
                                  "probed",        "enabled",
                                  "critical",      "autostart",
                                  "vcs",           "warning",
                                  "error",         "notice",
                                  "yes",           "no",
                                  "ignoresubkeys", "read_only",
                                  "phantom",       "servicemonitor",
                                  "process",       "application",
                                  "fileshare",     "printshare",
                                  "diskres",       "diskreservation",
                                  "proxy"};

std::string Lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

// A word and the blanks behind it.
struct Word {
    std::string text;
    std::string blanks;
};

std::vector<Word> WordsOf(const std::string& line) {
    std::vector<Word> words;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t end = std::min(line.find_first_of(Blanks, at), line.size());
        const std::size_t next = std::min(line.find_first_not_of(Blanks, end), line.size());
        words.push_back({line.substr(at, end - at), line.substr(end, next - end)});
        at = next;
    }
    return words;
}

bool Has(const std::vector<Word>& words, const char* text) {
    return std::any_of(words.begin(), words.end(), [text](const Word& word) { return word.text == text; });
}

// The tool without its folder and its extension.
std::wstring ToolOf(const std::wstring& commandLine) {
    const std::size_t first = commandLine.find_first_not_of(L" \t\"");
    if (first == std::wstring::npos) {
        return std::wstring();
    }
    std::wstring tool = commandLine.substr(first, commandLine.find_first_of(L" \t\"", first) - first);
    tool.erase(0, tool.find_last_of(L"\\/") + 1);
    return tool.substr(0, tool.find(L'.'));
}

bool ShowsOneValue(const std::wstring& commandLine) {
    return commandLine.find(L" -value ") != std::wstring::npos;
}

// Whether a word of the command line is an attribute that holds a password.
bool AsksForPassword(const std::wstring& commandLine) {
    for (std::size_t at = 0; at < commandLine.size();) {
        const std::size_t begin = commandLine.find_first_not_of(L" \t\"", at);
        if (begin == std::wstring::npos) {
            return false;
        }
        const std::size_t end = std::min(commandLine.find_first_of(L" \t\"", begin), commandLine.size());
        if (clus::IsSecretAttribute(std::wstring_view(commandLine).substr(begin, end - begin))) {
            return true;
        }
        at = end;
    }
    return false;
}

// Where the text begins that vcsencrypt is given: behind its options.
std::size_t FindEncrypted(const std::wstring& commandLine) {
    std::size_t at = commandLine.find_first_of(L" \t");
    for (;;) {
        at = commandLine.find_first_not_of(L" \t", at);
        if (at == std::wstring::npos || commandLine[at] != L'-') {
            return at;
        }
        at = commandLine.find_first_of(L" \t", at);
    }
}

std::size_t FindSecretOf(const std::wstring& commandLine) {
    return ToolOf(commandLine) == L"vcsencrypt" ? FindEncrypted(commandLine) : clus::FindSecret(commandLine);
}

// Of a row of a table: object, attribute, system and value, of systems without the third; or names only.
std::string AnonymousRow(const std::vector<Word>& words, bool isTable, bool isOfSystems, bool keepsValues,
                         common::Anonymiser& anonymiser) {
    const std::size_t firstOfValue = isOfSystems ? 2 : 3;
    std::string row;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool isKept = isTable && (i == 1 || (i >= firstOfValue && keepsValues));
        row += (isKept ? words[i].text : anonymiser.Name(words[i].text)) + words[i].blanks;
    }
    return row;
}

} // namespace

bool IsQuestion(const std::wstring& commandLine) {
    const std::wstring tool = ToolOf(commandLine);
    if (tool == L"vcsencrypt" || tool == L"hastatus") {
        return true;
    }
    const wchar_t* const tools[] = {L"hares", L"hagrp", L"hasys", L"haclus", L"hatype"};
    if (std::find(std::begin(tools), std::end(tools), tool) == std::end(tools)) {
        return false;
    }
    const std::size_t option = commandLine.find(L" -");
    const std::wstring verb =
        option == std::wstring::npos
            ? std::wstring()
            : commandLine.substr(option + 1, commandLine.find_first_of(L" \t", option + 1) - option - 1);
    const wchar_t* const verbs[] = {L"-list", L"-display", L"-state", L"-value", L"-dep", L"-nodeid", L"-resources"};
    return std::find(std::begin(verbs), std::end(verbs), verb) != std::end(verbs);
}

std::wstring MaskedCommand(const std::wstring& commandLine) {
    const std::size_t begin = FindSecretOf(commandLine);
    return begin == std::wstring::npos ? commandLine : commandLine.substr(0, begin) + clus::SecretMask;
}

std::wstring MaskedOutput(const std::wstring& commandLine, const std::wstring& output) {
    const std::size_t begin = FindSecretOf(commandLine);
    const clus::ToolSecret secret(begin == std::wstring::npos ? std::wstring_view()
                                                              : std::wstring_view(commandLine).substr(begin));
    if (ToolOf(commandLine) == L"vcsencrypt" || (ShowsOneValue(commandLine) && AsksForPassword(commandLine))) {
        std::wstring masked = clus::MessagesWithoutSecrets(output, secret);
        return !masked.empty() && masked.back() != L'\n' && output.back() == L'\n' ? masked + L"\n" : masked;
    }
    return clus::WithoutSecrets(output, secret);
}

std::string AnonymousCommand(const std::string& commandLine, common::Anonymiser& anonymiser) {
    const std::vector<Word> words = WordsOf(commandLine);
    const char* const verbs[] = {"-modify", "-value", "-local", "-global"};
    const bool namesAttribute = // behind the object
        std::any_of(std::begin(verbs), std::end(verbs), [&words](const char* verb) { return Has(words, verb); });
    std::size_t object = words.size();
    std::string result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i].text;
        const bool isOption = !word.empty() && word[0] == '-';
        const bool isAttribute = (i > 0 && words[i - 1].text == "-attribute") ||
                                 (namesAttribute && object != words.size() && i == object + 1);
        const std::size_t equals = word.find('=');
        if (!isOption && i > 0 && object == words.size()) {
            object = i;
        }
        if (i == 0 || isOption || isAttribute) {
            result += word;
        } else if (equals != std::string::npos) {
            const std::size_t value = word.find_first_not_of("=~", equals);
            const std::size_t begin = std::min(value, word.size());
            result += word.substr(0, begin) + anonymiser.Name(word.substr(begin));
        } else {
            result += anonymiser.Name(word);
        }
        result += words[i].blanks;
    }
    return result;
}

std::string AnonymousOutput(const std::string& commandLine, const std::string& output, common::Anonymiser& anonymiser) {
    const std::vector<Word> command = WordsOf(commandLine);
    const bool isState = Has(command, "-state");
    const bool isTable = isState || Has(command, "-display");
    const bool isOfSystems = !command.empty() && command[0].text == "hasys";
    std::string result;
    for (std::size_t begin = 0; begin < output.size();) {
        const std::size_t end = std::min(output.find('\n', begin), output.size());
        const std::string line = output.substr(begin, end - begin);
        const std::vector<Word> words = WordsOf(line);
        const bool isMessage = words.size() > 1 && words[0].text == "VCS";
        const bool isHeader = !line.empty() && line[0] == '#';
        if (isMessage) {
            result += anonymiser.Text(line);
        } else if (isHeader || (isState && words.size() < 2)) {
            result += line;
        } else {
            const bool keepsValues = isState || (words.size() > 1 && Lowered(words[1].text) == "state");
            result += AnonymousRow(words, isTable, isOfSystems, keepsValues, anonymiser);
        }
        result += end < output.size() ? "\n" : "";
        begin = end + 1;
    }
    return result;
}

void KeepWordsOfVcs(common::Anonymiser& anonymiser) {
    for (const char* const word : WordsOfVcs) {
        anonymiser.Keep(word);
    }
}

} // namespace recording
