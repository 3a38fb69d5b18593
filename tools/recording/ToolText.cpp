#include "ToolText.h"

#include "core/ToolSecrets.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace recording {

namespace {

const char Blanks[] = " \t\r";

const char WordsOfVcs[] =
    "admin application autostart build critical current discover diskres diskreservation down enabled error "
    "exited exiting failover false faulted fileshare frozen going hybrid ignoresubkeys initing leaving load no "
    "not notice offline online parallel partial peer phantom printshare priority probed process proxy read_only "
    "remote restarting roundrobin running servicemonitor stale starting state stopping true unknown up vcs wait "
    "waiting warning yes";

// In lower case, of the messages that VCS words itself.
const char WordsOfMessages[] =
    "a above added adding again agent already and are as at attribute available be been before being between by "
    "cannot clear cluster command configuration configured connect connection dependencies dependency does "
    "elsewhere enabled engine enter entry error exist exists failed failing faulted for found from group groups "
    "had has in invalid is it keylist local monitors must no node not notice of offline on online operation or "
    "out over parallel password persistently populating process readwrite ready recommended rejected resource "
    "resource's resources set setting simulated specified state such system systemlist systems that the there "
    "timed timeout to type use user value vcs warning was with writable";

// Of command lines; another word with a dash may be a value.
const char Options[] =
    "-add -agent -all -any -attribute -clear -clus -delete -dep -display -dump -evacuate -force -freeze -global "
    "-help -ignoreparent -keys -link -list -local -localclus -makero -makerw -modify -nodeid -offline -online "
    "-persistent -probe -resources -state -sum -summary -switch -sys -time -to -unfreeze -unlink -update -value "
    "-vcs -verify -wait";

const char PunctuationBefore[] = "'\"([";
const char PunctuationBehind[] = "'\".,:;)]";

// vcsencrypt may ask, and then prints what it asks before its result.
const wchar_t* const Prompts[] = {L"Enter Password:", L"Enter Again:"};
const char MaskedWord[] = "***";
const char EncryptedStandIn[] = "xxxxxxxx"; // has the form of an encrypted password

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

// `list`: words with a blank between them.
bool IsListed(std::string_view list, const std::string& lower) {
    if (lower.empty() || lower.find(' ') != std::string::npos) {
        return false;
    }
    for (std::size_t at = list.find(lower); at != std::string_view::npos; at = list.find(lower, at + 1)) {
        const std::size_t end = at + lower.size();
        if ((at == 0 || list[at - 1] == ' ') && (end == list.size() || list[end] == ' ')) {
            return true;
        }
    }
    return false;
}

// What VCS itself says stays, all else is names.
std::string AnonymousMessage(const std::vector<Word>& words, common::Anonymiser& anonymiser) {
    std::string message;
    for (const Word& word : words) {
        const std::size_t begin = std::min(word.text.find_first_not_of(PunctuationBefore), word.text.size());
        const std::size_t last = word.text.find_last_not_of(PunctuationBehind);
        const std::size_t end = last == std::string::npos || last < begin ? begin : last + 1;
        const std::string core = Lowered(word.text.substr(begin, end - begin));
        const bool isKept = core.compare(0, 4, "v-16") == 0 || IsListed(WordsOfMessages, core);
        message += (isKept ? word.text : anonymiser.Name(word.text)) + word.blanks;
    }
    return message;
}

// The result of vcsencrypt: prompts stay, and whether it is a word that can be an encrypted password.
std::wstring MaskedResult(const std::wstring& output) {
    std::wstring masked;
    std::size_t at = 0;
    for (bool isPrompt = true; isPrompt;) {
        at = std::min(output.find_first_not_of(L" \t\r\n", at), output.size());
        isPrompt = false;
        for (const std::wstring prompt : Prompts) {
            if (output.compare(at, prompt.size(), prompt) == 0) {
                masked += prompt + L"\n";
                at += prompt.size();
                isPrompt = true;
            }
        }
    }
    const std::size_t end = output.find_last_not_of(L" \t\r\n");
    if (at == output.size()) {
        return masked;
    }
    const bool isWord = std::all_of(
        output.begin() + static_cast<std::ptrdiff_t>(at), output.begin() + static_cast<std::ptrdiff_t>(end + 1),
        [](wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9'); });
    return masked + (isWord ? clus::SecretMask : clus::SecretMaskOfWords) + (end + 1 < output.size() ? L"\n" : L"");
}

} // namespace

bool IsQuestion(const std::wstring& commandLine) {
    const std::wstring tool = ToolOf(commandLine);
    if (tool == L"vcsencrypt" || tool == L"hastatus") {
        return true;
    }
    const wchar_t* const tools[] = {L"hares", L"hagrp", L"hasys", L"haclus", L"hatype", L"haconf"};
    if (std::find(std::begin(tools), std::end(tools), tool) == std::end(tools)) {
        return false;
    }
    const std::size_t option = commandLine.find(L" -");
    const std::wstring verb =
        option == std::wstring::npos
            ? std::wstring()
            : commandLine.substr(option + 1, commandLine.find_first_of(L" \t", option + 1) - option - 1);
    const wchar_t* const verbs[] = {L"-list", L"-display", L"-state",     L"-value",
                                    L"-dep",  L"-nodeid",  L"-resources", L"-help"};
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
    const bool isEncryption = ToolOf(commandLine) == L"vcsencrypt";
    const bool isMessage = output.compare(0, 4, L"VCS ") == 0;
    if (isEncryption && !isMessage) {
        return MaskedResult(output);
    }
    if (isEncryption || (ShowsOneValue(commandLine) && AsksForPassword(commandLine))) {
        std::wstring masked = clus::MessagesWithoutSecrets(output, secret);
        return !masked.empty() && masked.back() != L'\n' && output.back() == L'\n' ? masked + L"\n" : masked;
    }
    return clus::WithoutSecrets(output, secret);
}

std::string ReplayedOutput(const std::wstring& commandLine, std::string output) {
    const std::size_t end = output.find_last_not_of('\n');
    const std::size_t length = sizeof(MaskedWord) - 1;
    if (ToolOf(commandLine) != L"vcsencrypt" || end == std::string::npos || end + 1 < length) {
        return output;
    }
    const std::size_t begin = end + 1 - length;
    const bool isOnItsOwn = output.compare(begin, length, MaskedWord) == 0 && (begin == 0 || output[begin - 1] == '\n');
    return isOnItsOwn ? output.replace(begin, length, EncryptedStandIn) : output;
}

std::string AnonymousCommand(const std::string& commandLine, common::Anonymiser& anonymiser) {
    const std::vector<Word> words = WordsOf(commandLine);
    const char* const verbs[] = {"-modify", "-value", "-local", "-global"};
    const bool namesAttribute = // behind the object
        std::any_of(std::begin(verbs), std::end(verbs), [&words](const char* verb) { return Has(words, verb); });
    const bool hasConditions = Has(words, "-list");
    std::size_t object = words.size();
    std::string result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i].text;
        const bool isOption = i > 0 && IsListed(Options, word);
        const bool isAttribute = (i > 0 && words[i - 1].text == "-attribute") ||
                                 (namesAttribute && object != words.size() && i == object + 1);
        const std::size_t equals = word.find_first_of("=!");
        if (!isOption && i > 0 && object == words.size()) {
            object = i;
        }
        if (i == 0 || isOption || isAttribute) {
            result += word;
        } else if (hasConditions && equals != std::string::npos) {
            const std::size_t value = word.find_first_not_of("!=~", equals);
            const std::size_t begin = std::min(value, word.size());
            result += word.substr(0, begin) + anonymiser.Name(word.substr(begin));
        } else {
            result += anonymiser.Name(word);
        }
        result += words[i].blanks;
    }
    return result;
}

std::string AnonymousPrint::Of(const Printed& printed) {
    const std::string& output = printed.text;
    std::string result;
    for (std::size_t begin = 0; begin < output.size();) {
        const std::size_t end = std::min(output.find('\n', begin), output.size());
        const std::string line = output.substr(begin, end - begin);
        result += Line(line, printed.isError) + (end < output.size() ? "\n" : "");
        begin = end + 1;
    }
    return result;
}

std::string AnonymousPrint::Line(const std::string& line, bool isError) {
    const std::vector<Word> words = WordsOf(line);
    if (isError || (words.size() > 1 && words[0].text == "VCS")) {
        return AnonymousMessage(words, m_anonymiser);
    }
    if (!line.empty() && line[0] == '#') {
        m_titles.clear();
        for (const Word& word : words) {
            m_titles.push_back(Lowered(word.text.substr(word.text[0] == '#' ? 1 : 0)));
        }
        return line;
    }
    if (line.compare(0, 3, "-- ") == 0) { // a title of hastatus
        return line;
    }
    // An attribute stays, and a state. The last column may be of several words, or of none.
    std::string row;
    bool isState = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string title = m_titles.empty() ? std::string() : m_titles[std::min(i, m_titles.size() - 1)];
        const bool isAttribute = title == "attribute" && i < m_titles.size();
        isState = isState || (isAttribute && Lowered(words[i].text) == "state");
        const bool isKept = isAttribute || (isState && title == "value");
        row += (isKept ? words[i].text : m_anonymiser.Name(words[i].text)) + words[i].blanks;
    }
    return row;
}

void KeepWordsOfVcs(common::Anonymiser& anonymiser) {
    for (const Word& word : WordsOf(WordsOfVcs)) {
        anonymiser.Keep(word.text);
    }
}

} // namespace recording
