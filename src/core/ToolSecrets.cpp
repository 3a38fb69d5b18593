#include "core/ToolSecrets.h"

#include "core/Character.h"
#include "core/TextEraser.h"
#include "core/ToolOutput.h"

#include <algorithm>
#include <iterator>

namespace clus {

namespace {

const wchar_t Blanks[] = L" \t";
const wchar_t QuotesAndBlanks[] = L"\" \t";
const std::size_t AttributeColumn = 1;
const std::size_t ValueColumn = 3;
const std::size_t NumberColumn = 2; // of a message: VCS ERROR V-16-1-10600

// Where the words of one line begin and end.
struct Word {
    std::size_t begin;
    std::size_t end;
};

// The first words, or all of them.
std::vector<Word> WordsOf(std::wstring_view line, std::size_t most = std::wstring_view::npos) {
    std::vector<Word> words;
    std::size_t begin = line.find_first_not_of(Blanks);
    while (begin != std::wstring_view::npos && words.size() < most) {
        const std::size_t end = std::min(line.find_first_of(Blanks, begin), line.size());
        words.push_back({begin, end});
        begin = line.find_first_not_of(Blanks, end);
    }
    return words;
}

std::wstring_view TextOf(std::wstring_view line, const Word& word) {
    return line.substr(word.begin, word.end - word.begin);
}

// Where the value of an assignment to a secret attribute begins, npos when there is none.
std::size_t FindAssignedSecret(std::wstring_view commandLine) {
    const std::vector<Word> words = WordsOf(commandLine);
    std::size_t firstAttribute = words.size(); // behind -modify or -global and the resource's name
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::wstring_view word = TextOf(commandLine, words[i]);
        if ((word == L"-modify" || word == L"-global") && firstAttribute == words.size()) {
            firstAttribute = i + 2;
        }
        const std::size_t equals = word.find(L'=');
        if (equals != std::wstring_view::npos && IsSecretAttribute(word.substr(0, equals))) {
            return words[i].begin + equals + 1;
        }
        if (i >= firstAttribute && i + 1 < words.size() && IsSecretAttribute(word)) {
            return words[i + 1].begin;
        }
    }
    return std::wstring_view::npos;
}

bool HasSeveralWords(std::wstring_view text) {
    constexpr wchar_t spaces[] = L" \t\r\n";
    return text.find_first_not_of(spaces, text.find_first_of(spaces, text.find_first_not_of(spaces))) !=
           std::wstring_view::npos;
}

// What of a message of VCS names it, and holds no secret whatever the tool was given.
std::size_t LengthOfMessageName(std::wstring_view line) {
    const std::vector<Word> words = WordsOf(line, NumberColumn + 1);
    const std::wstring_view number = words.size() > NumberColumn ? TextOf(line, words[NumberColumn]) : L"";
    const bool isNumber =
        number.substr(0, 2) == L"V-" && number.find_first_not_of(L"-0123456789", 1) == std::wstring_view::npos;
    return words[isNumber ? NumberColumn : NumberColumn - 1].end;
}

void AppendWithout(const ToolSecret& secret, std::wstring_view text, std::wstring& masked) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = secret.LengthAt(text, at);
        if (length != 0) {
            masked += SecretMask;
            at += length;
        } else {
            masked += text[at++];
        }
    }
}

// Calls show(line, masked) for each line, and keeps the line ends.
template <typename Show> std::wstring LineByLine(const std::wstring& output, const Show& show) {
    std::wstring masked;
    masked.reserve(output.size());
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t end = std::min(output.find(L'\n', start), output.size());
        show(std::wstring_view(output).substr(start, end - start), masked);
        if (end < output.size()) {
            masked += L'\n';
        }
        start = end + 1;
    }
    return masked;
}

} // namespace

bool IsSecretAttribute(std::wstring_view name) {
    constexpr std::wstring_view endings[] = {L"password", L"secret", L"token", L"key"};
    return std::any_of(std::begin(endings), std::end(endings), [name](std::wstring_view ending) {
        return name.size() >= ending.size() &&
               std::equal(ending.begin(), ending.end(), name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                          [](wchar_t a, wchar_t b) { return NarrowUpper(a) == NarrowUpper(b); });
    });
}

std::size_t FindSecret(std::wstring_view commandLine) {
    const std::size_t begin = FindAssignedSecret(commandLine);
    if (begin == std::wstring_view::npos || WithoutQuotesAround(commandLine.substr(begin)).empty()) {
        return std::wstring_view::npos; // an empty password is none
    }
    return begin;
}

std::size_t FindShownSecret(std::wstring_view line) {
    const std::vector<Word> words = WordsOf(line, ValueColumn + 1);
    const bool isShown = words.size() > ValueColumn && IsSecretAttribute(TextOf(line, words[AttributeColumn]));
    return isShown ? words[ValueColumn].begin : std::wstring_view::npos;
}

std::wstring_view WithoutQuotesAround(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(QuotesAndBlanks);
    if (first == std::wstring_view::npos) {
        return std::wstring_view();
    }
    return text.substr(first, text.find_last_not_of(QuotesAndBlanks) + 1 - first);
}

ToolSecret::ToolSecret(std::wstring_view argument) {
    m_plain.reserve(argument.size()); // once: it leaves no copy behind
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') {
            // As programs parse their command lines: those before a quote count half, and an odd one keeps it.
            m_plain.resize(m_plain.size() - (backslashes + 1) / 2);
        }
        if (c != L'"' || backslashes % 2 != 0) {
            m_plain += c;
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
    }
    for (const std::wstring_view whole : {argument, WithoutQuotesAround(argument), std::wstring_view(m_plain)}) {
        m_forms.push_back(whole);
        for (const Word& word : WordsOf(whole)) {
            m_forms.push_back(TextOf(whole, word));
        }
    }
}

ToolSecret::~ToolSecret() {
    m_plain.resize(m_plain.capacity());
    TextEraser::Erase(&m_plain[0], m_plain.size());
}

std::size_t ToolSecret::LongestFormAt(std::wstring_view text, std::size_t at) const {
    std::size_t longest = 0;
    for (const std::wstring_view form : m_forms) {
        if (form.size() > longest && text.compare(at, form.size(), form) == 0) {
            longest = form.size();
        }
    }
    return longest;
}

std::size_t ToolSecret::LengthAt(std::wstring_view text, std::size_t at) const {
    std::size_t end = at + LongestFormAt(text, at);
    for (std::size_t next = at + 1; next < end; ++next) {
        end = std::max(end, next + LongestFormAt(text, next));
    }
    return end - at;
}

bool ToolSecret::CanBeFound() const {
    const wchar_t lastAscii = 0x7f;
    return std::all_of(m_plain.begin(), m_plain.end(), [](wchar_t c) { return c <= lastAscii; });
}

std::wstring WithoutSecrets(const std::wstring& output, const ToolSecret& secret) {
    return LineByLine(output, [&secret](std::wstring_view line, std::wstring& masked) {
        const std::size_t shown = std::min(FindShownSecret(line), line.size());
        AppendWithout(secret, line.substr(0, shown), masked);
        if (shown < line.size()) {
            masked += SecretMask;
        }
    });
}

std::wstring MessagesWithoutSecrets(const std::wstring& output, const ToolSecret& secret) {
    if (!IsErrorText(output.c_str())) {
        if (output.empty()) {
            return std::wstring();
        }
        return HasSeveralWords(output) ? SecretMaskOfWords : SecretMask;
    }
    return LineByLine(output, [&secret](std::wstring_view line, std::wstring& masked) {
        const std::size_t named = IsErrorText(line.data()) ? LengthOfMessageName(line) : 0;
        masked += line.substr(0, named);
        if (named != 0 && secret.CanBeFound()) {
            AppendWithout(secret, line.substr(named), masked);
        } else if (named < line.size()) {
            masked += named != 0 ? L" " : L"";
            masked += SecretMask;
        }
    });
}

} // namespace clus
