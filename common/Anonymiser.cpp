#include "common/Anonymiser.h"

#include <algorithm>
#include <vector>

namespace common {

namespace {

// In lower case, separated by blanks.
const char Vocabulary[] =
    "active address administrators agent and asp attendant attribute authority available backup builtin ccr clus "
    "clusrdll clusrdllccr cluster com command computer configuration currentversion data database default disk domain "
    "exchange exchprotocol exchservice file first gate generic genericservice global group hkcu hkey hklm "
    "host http imap4 information instance ip is kova lanman local localhost localsystem log logs machine mail "
    "mailbox majority message microsoft monitor mount mountv msexchangeis msexchangesa mta name network "
    "networkservice nic node none nt of oxahostservice oxasaservice oxa path physical plinthcore point pop3 "
    "print private program protocol public qav quorum registry regrep remoteconfig replication resource "
    "routing sa search server service services set share smtp smtpsvc software spooler stack storage store "
    "system the transfer transport type users virtual vmdg volume web winnt windows witness zyntra";

// The last labels by which a domain name of two is told from a file's name and the like.
const char LastLabels[] =
    "com net org local lan internal intern intra intranet corp edu gov mil eu de at ch uk fr nl es "
    "se dk fi pl cz hu ru jp cn kr au nz br ca mx za tr";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}

bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

bool IsWordCharacter(char c) {
    return IsDigit(c) || IsLower(c) || IsUpper(c) || static_cast<unsigned char>(c) >= 0x80;
}

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::string Lowered(std::string text) {
    for (char& c : text) {
        c = IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

// Where the characters end that a test holds for.
template <typename Test> std::size_t EndOf(const std::string& text, std::size_t at, const Test& test) {
    while (at < text.size() && test(text[at])) {
        ++at;
    }
    return at;
}

// One lead byte for each unit of UTF-16: its length there, and where upper-case letters are.
std::string Shape(const std::string& word) {
    std::string shape;
    bool isUpper = true; // a digit or a letter beyond ASCII goes by what is before it
    for (const char c : word) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 && byte < 0xC0) {
            continue; // continues a character
        }
        isUpper = IsUpper(c) || (isUpper && !IsLower(c));
        shape.append(byte >= 0xF0 ? 2 : 1, isUpper ? 'A' : 'a');
    }
    return shape;
}

// The number as so many letters, consonants and vowels in turn, so that it can be spoken; its end when it needs more.
std::string Spoken(std::size_t number, std::size_t length) {
    const std::string consonants = "bcdfghjklmnprstvwz";
    const std::string vowels = "aeiou";
    std::string word(length, ' ');
    for (std::size_t i = length; i-- > 0;) {
        const std::string& letters = i % 2 == 0 ? consonants : vowels;
        word[i] = letters[number % letters.size()];
        number /= letters.size();
    }
    return word;
}

std::size_t CountOf(std::size_t length) {
    std::size_t count = 1;
    for (std::size_t i = 0; i < length && count < 1000000; ++i) {
        count *= i % 2 == 0 ? 18 : 5;
    }
    return count;
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

std::set<std::string> SetOf(const char* words) {
    const std::vector<std::string> list = Split(words, ' ');
    return std::set<std::string>(list.begin(), list.end());
}

bool IsOfVocabulary(const std::string& lower) {
    static const std::set<std::string> words = SetOf(Vocabulary);
    return words.count(lower) != 0;
}

bool IsLastLabel(const std::string& label) {
    static const std::set<std::string> labels = SetOf(LastLabels);
    return labels.count(Lowered(label)) != 0;
}

// The words of a text; what is between them is skipped.
std::vector<std::string> WordsOf(const std::string& text) {
    std::vector<std::string> words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = EndOf(text, at, IsWordCharacter);
        if (end > at) {
            words.push_back(text.substr(at, end - at));
        }
        at = std::max(end, at + 1);
    }
    return words;
}

bool IsOctet(const std::string& text) {
    return !text.empty() && text.size() <= 3 && std::all_of(text.begin(), text.end(), IsDigit) &&
           std::stoi(text) <= 255;
}

bool IsAddressV4(const std::string& text) {
    const std::vector<std::string> parts = Split(text, '.');
    return parts.size() == 4 && std::all_of(parts.begin(), parts.end(), IsOctet);
}

// Six pairs of digits, or groups of up to four of which eight are there, or fewer and a gap.
bool IsHexAddress(const std::string& text) {
    const char separator = text.find('-') == std::string::npos ? ':' : '-';
    const std::vector<std::string> parts = Split(text, separator);
    const bool areHex = std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
        return part.size() <= 4 && std::all_of(part.begin(), part.end(), IsHexDigit);
    });
    const bool arePairs =
        std::all_of(parts.begin(), parts.end(), [](const std::string& part) { return part.size() == 2; });
    const bool hasGap = text.find("::") != std::string::npos;
    if (!areHex) {
        return false;
    }
    return (parts.size() == 6 && arePairs) ||
           (separator == ':' && parts.size() >= 3 && parts.size() <= 8 && hasGap != (parts.size() == 8 && !hasGap));
}

} // namespace

std::string Anonymiser::Name(const std::string& name) {
    return Words(name, true);
}

std::string Anonymiser::Text(const std::string& text) {
    return Words(text, false);
}

void Anonymiser::Identity(const std::string& name) {
    for (const std::string& word : WordsOf(name)) {
        m_identities.insert(Lowered(word));
    }
    Name(name);
}

bool Anonymiser::Whole(const std::string& name) {
    Identity(name);
    const std::vector<std::string> words = WordsOf(name);
    const bool isCommon = std::all_of(words.begin(), words.end(), [this](const auto& word) { return IsCommon(word); });
    const bool hasLetters =
        std::any_of(words.begin(), words.end(), [this](const auto& word) { return IsKept(Lowered(word)); });
    if (!isCommon || !hasLetters) {
        return true;
    }
    if (words.size() == 1) {
        return false;
    }
    std::string& standIn = m_phrases[Lowered(name)];
    if (standIn.empty()) {
        for (std::size_t at = 0; at < name.size();) {
            const std::size_t end = EndOf(name, at, IsWordCharacter);
            const std::string word = name.substr(at, std::max(end, at + 1) - at);
            standIn += IsKept(Lowered(word)) ? NextStandIn(word.size()) : word;
            at += word.size();
        }
    }
    return true;
}

void Anonymiser::Keep(const std::string& word) {
    m_kept.insert(Lowered(word));
}

void Anonymiser::Spare(const std::string& word) {
    m_spared.insert(Lowered(word));
}

bool Anonymiser::IsKept(const std::string& lower) const {
    return IsOfVocabulary(lower) || m_kept.count(lower) != 0 ||
           (m_spared.count(lower) != 0 && m_identities.count(lower) == 0);
}

// Whether it is left as it is in names.
bool Anonymiser::IsCommon(const std::string& word) const {
    return Shape(word).size() < 2 || std::all_of(word.begin(), word.end(), IsDigit) || IsKept(Lowered(word));
}

std::string Anonymiser::Words(const std::string& text, bool areNames) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (!IsWordCharacter(text[at]) && text[at] != ':') {
            result += text[at++];
            continue;
        }
        const bool isWithin = at > 0 && (IsWordCharacter(text[at - 1]) || text[at - 1] == '.');
        const std::size_t begin = at;
        if (!isWithin && TakePhrase(text, at, result)) {
            std::size_t end = begin;
            std::string whole;
            if (at < text.size() && text[at] == '.' && TakeDomain(text, end, whole) && end > at) { // of that computer
                result += whole.substr(whole.find('.'));
                at = end;
            }
            continue;
        }
        if (!isWithin && (TakeAddress(text, at, result) || TakeDomain(text, at, result))) {
            continue;
        }
        const std::size_t end = EndOf(text, at, IsWordCharacter);
        if (end == at) {
            result += text[at++];
            continue;
        }
        const std::string word = text.substr(at, end - at);
        at = end;
        result += areNames || m_words.count(Lowered(word)) != 0 ? StandIn(word) : word;
    }
    return result;
}

std::string Anonymiser::StandIn(const std::string& word) {
    const std::string lower = Lowered(word);
    const std::string shape = Shape(word);
    if (IsCommon(word)) {
        return word;
    }
    std::string& standIn = m_words[lower];
    if (standIn.empty()) {
        standIn = NextStandIn(shape.size());
    }
    std::string result = standIn;
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (shape[std::min(i, shape.size() - 1)] == 'A') {
            result[i] = static_cast<char>(result[i] - 'a' + 'A');
        }
    }
    return result;
}

// One that stands for nothing yet. A short one is longer than it is to be when all of its length are taken.
std::string Anonymiser::NextStandIn(std::size_t length) {
    for (;; ++length) {
        while (m_counts[length] < CountOf(length)) {
            const std::string next = Spoken(m_counts[length]++, length);
            if (!IsKept(next) && m_used.insert(next).second) {
                return next;
            }
        }
    }
}

// Identities that are replaced as a whole.
bool Anonymiser::TakePhrase(const std::string& text, std::size_t& at, std::string& result) const {
    for (const auto& phrase : m_phrases) {
        const std::size_t end = at + phrase.first.size();
        if (Lowered(text.substr(at, phrase.first.size())) != phrase.first ||
            (end < text.size() && IsWordCharacter(text[end]))) {
            continue;
        }
        for (std::size_t i = 0; i < phrase.second.size(); ++i) {
            const char c = phrase.second[i];
            const char like = text[std::min(at + i, end - 1)];
            result += IsUpper(like) && IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
        }
        at = end;
        return true;
    }
    return false;
}

bool Anonymiser::TakeAddress(const std::string& text, std::size_t& at, std::string& result) {
    std::size_t end = EndOf(text, at, [](char c) { return IsDigit(c) || c == '.'; });
    while (end > at && text[end - 1] == '.') {
        --end; // of a sentence
    }
    const std::string dotted = text.substr(at, end - at);
    if (IsAddressV4(dotted) && (end == text.size() || !IsWordCharacter(text[end]))) {
        result += AddressV4(dotted);
        at = end;
        return true;
    }
    end = EndOf(text, at, [](char c) { return IsHexDigit(c) || c == ':' || c == '-'; });
    const std::string hexadecimal = text.substr(at, end - at);
    if (IsHexAddress(hexadecimal) && (end == text.size() || !IsWordCharacter(text[end]))) {
        result += HexAddress(hexadecimal);
        at = end;
        return true;
    }
    const std::string lead = "S-1-5-21-";
    if (text.compare(at, lead.size(), lead) == 0) {
        end = EndOf(text, at + lead.size(), [](char c) { return IsDigit(c) || c == '-'; });
        result += Sid(text.substr(at, end - at));
        at = end;
        return true;
    }
    return false;
}

// "someone@example.com", "mail.example.com", "example.com"; the last label has no digits, which versions of programs
// have.
bool Anonymiser::TakeDomain(const std::string& text, std::size_t& at, std::string& result) {
    std::size_t end =
        EndOf(text, at, [](char c) { return IsWordCharacter(c) || c == '.' || c == '-' || c == '@' || c == '_'; });
    while (end > at && !IsWordCharacter(text[end - 1])) {
        --end;
    }
    const std::string whole = text.substr(at, end - at);
    const std::size_t sign = whole.find('@');
    const std::string domain = sign == std::string::npos ? whole : whole.substr(sign + 1);
    const std::vector<std::string> labels = Split(domain, '.');
    const bool areLabels =
        std::none_of(labels.begin(), labels.end(), [](const std::string& label) { return label.empty(); });
    const bool endsInLetters = std::none_of(labels.back().begin(), labels.back().end(), IsDigit);
    const bool isShort = labels.size() == 2 && sign == std::string::npos;
    if (!areLabels || !endsInLetters || labels.size() < 2 || (isShort && !IsLastLabel(labels.back()))) {
        return false;
    }
    const std::size_t last = whole.size() - labels.back().size();
    for (std::size_t i = 0; i < whole.size();) {
        const std::size_t wordEnd = EndOf(whole, i, IsWordCharacter);
        result += wordEnd == i           ? whole.substr(i++, 1)
                  : isShort && i == last ? whole.substr(i, wordEnd - i) // not a name where it stands alone: "net start"
                                         : StandIn(whole.substr(i, wordEnd - i));
        i = std::max(i, wordEnd);
    }
    at = end;
    return true;
}

std::string Anonymiser::AddressV4(const std::string& address) {
    const std::vector<std::string> octets = Split(address, '.');
    if (octets[0] == "255" || octets[0] == "127" || address == "0.0.0.0") {
        return address;
    }
    std::string prefix;
    std::string result;
    for (const std::string& octet : octets) {
        const std::string key = prefix + octet;
        const auto known = m_octets.find(key);
        if (known == m_octets.end()) {
            // One of as many digits, which is left as long as not all of them are used.
            const int least = octet.size() == 1 ? 0 : octet.size() == 2 ? 10 : 100;
            const int most = octet.size() == 1 ? 9 : octet.size() == 2 ? 99 : 254;
            std::set<int>& used = m_siblings[prefix];
            int next = prefix.empty() && least == 0 ? 1 : least;
            while (next <= most && (used.count(next) != 0 || (prefix.empty() && next == 127))) {
                ++next;
            }
            used.insert(next);
            m_octets[key] = next > most ? octet : std::to_string(next);
        }
        result += (result.empty() ? "" : ".") + m_octets[key];
        prefix = key + ".";
    }
    return result;
}

// All digits become zeros, but for a number at the end.
std::string Anonymiser::HexAddress(const std::string& address) {
    std::string& standIn = m_numbers[Lowered(address)];
    if (standIn.empty()) {
        standIn = address;
        std::size_t number = m_numbers.size();
        for (std::size_t i = standIn.size(); i-- > 0;) {
            if (IsHexDigit(standIn[i])) {
                standIn[i] = "0123456789abcdef"[number % 16];
                number /= 16;
            }
        }
    }
    return standIn;
}

// Of S-1-5-21-A-B-C-NUMBER the three that stand for the domain.
std::string Anonymiser::Sid(const std::string& sid) {
    const std::size_t firstOfDomain = 4;
    const std::size_t behindDomain = 7;
    std::vector<std::string> parts = Split(sid, '-');
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i >= firstOfDomain && i < behindDomain && !parts[i].empty()) {
            std::string& standIn = m_numbers["S-" + parts[i]];
            if (standIn.empty()) {
                const std::string number = std::to_string(m_numbers.size());
                const std::size_t length = std::max(parts[i].size(), number.size());
                standIn = "1" + std::string(length, '0');
                standIn.resize(length - number.size());
                standIn += number;
            }
            parts[i] = standIn;
        }
        result += (i == 0 ? "" : "-") + parts[i];
    }
    return result;
}

} // namespace common
