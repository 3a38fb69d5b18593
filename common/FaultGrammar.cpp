#include "common/FaultGrammar.h"

#include "common/Json.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>

namespace common {

namespace {

const std::uint64_t MostCode = 0xFFFFFFFF;
const std::uint64_t MostCount = std::numeric_limits<std::uint64_t>::max();

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || c == '_';
}

int DigitValue(char c) {
    return IsDigit(c) ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : 16;
}

// Reads the effects behind an "=". What is wrong throws FaultError; Position says how far it came.
class EffectReader {
public:
    EffectReader(const std::string& text, std::size_t position) : m_text(text), m_position(position) {
    }

    std::size_t Position() const {
        return m_position;
    }

    void Read(Fault& fault) {
        do {
            const char before = m_text[m_position - 1];
            SkipBlanks();
            if (m_position == m_text.size()) {
                throw FaultError(std::string("behind '") + before + "' an effect is expected");
            }
            ReadEffect(fault);
            SkipBlanks();
        } while (Take(','));
        if (m_position != m_text.size()) {
            throw FaultError("a comma or the end is expected behind an effect, found '" + Rest() + "'");
        }
    }

private:
    std::string Rest() const {
        return m_text.substr(m_position);
    }
    char Next() const {
        return m_position < m_text.size() ? m_text[m_position] : '\0';
    }
    bool Take(char c) {
        if (Next() != c || m_position == m_text.size()) {
            return false;
        }
        ++m_position;
        return true;
    }
    void SkipBlanks() {
        while (Take(' ')) {
        }
    }

    void ReadEffect(Fault& fault) {
        if (IsDigit(Next()) || Next() == '-') {
            Once("code");
            fault.code = Signed("code");
            return;
        }
        const std::string name = Word();
        if (name == "hang") {
            Once(name);
            fault.hangs = true;
        } else if (name == "state") {
            Begin(name);
            fault.state = Signed(name);
        } else if (name == "output") {
            Begin(name);
            fault.output = Quoted(name);
        } else if (name == "event") {
            Begin(name);
            fault.event = Quoted(name);
        } else if (name == "stream") {
            Begin(name);
            fault.toErrors = ToErrors(Word());
        } else if (name == "random") {
            Begin(name);
            fault.random = Number(name, MostCount);
        } else if (name == "repeat") {
            Begin(name);
            fault.repeat = Number(name, MostCount);
        } else if (name == "kill") {
            Begin(name);
            fault.kill = Number(name, MostCount);
        } else if (name == "delay_ms") {
            Begin(name);
            fault.delayMs = static_cast<std::uint32_t>(Number(name, MostCode));
        } else {
            m_position -= name.size();
            throw FaultError("there is no effect '" + Rest() + "'");
        }
    }

    void Once(const std::string& name) {
        if (!m_names.insert(name).second) {
            throw FaultError(name + ": the effect stands twice");
        }
    }

    void Begin(const std::string& name) {
        Once(name);
        if (!Take(':')) {
            throw FaultError(name + ": a colon and a value are expected");
        }
    }

    std::string Word() {
        const std::size_t begin = m_position;
        while (IsLetter(Next())) {
            ++m_position;
        }
        return m_text.substr(begin, m_position - begin);
    }

    // Decimal, or hexadecimal with 0x.
    std::uint64_t Number(const std::string& name, std::uint64_t most) {
        unsigned base = 10;
        if (Next() == '0' && m_position + 1 < m_text.size() && (m_text[m_position + 1] | 0x20) == 'x') {
            base = 16;
            m_position += 2;
        }
        const std::size_t begin = m_position;
        std::uint64_t number = 0;
        for (; static_cast<unsigned>(DigitValue(Next())) < base; ++m_position) {
            const auto digit = static_cast<unsigned>(DigitValue(Next()));
            if (number > (most - digit) / base) {
                throw FaultError(name + ": the number is too large");
            }
            number = number * base + digit;
        }
        if (m_position == begin) {
            throw FaultError(name + ": a number is expected, found '" + Rest() + "'");
        }
        return number;
    }

    std::int64_t Signed(const std::string& name) {
        const bool isNegative = Take('-');
        const auto number = static_cast<std::int64_t>(Number(name, MostCode));
        return isNegative ? -number : number;
    }

    // As JSON has it, escapes included.
    std::string Quoted(const std::string& name) {
        const std::size_t begin = m_position;
        if (!Take('"')) {
            throw FaultError(name + ": a text in double quotes is expected");
        }
        while (Next() != '"' && m_position < m_text.size()) {
            m_position += Next() == '\\' ? 2 : 1;
        }
        m_position = std::min(m_position, m_text.size());
        if (!Take('"')) {
            throw FaultError(name + ": the closing double quote is missing");
        }
        try {
            return ParseJson(m_text.substr(begin, m_position - begin)).get<std::string>();
        } catch (const JsonError& error) {
            throw FaultError(name + ": " + error.what());
        }
    }

    static bool ToErrors(const std::string& stream) {
        if (stream != "out" && stream != "errors") {
            throw FaultError("stream: out or errors is expected");
        }
        return stream == "errors";
    }

    const std::string& m_text;
    std::size_t m_position;
    std::set<std::string> m_names;
};

// A whole number from 1 on; 0 when the text is none.
std::size_t Ordinal(const std::string& text) {
    std::istringstream stream(text);
    std::size_t number = 0;
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit) && stream >> number ? number : 0;
}

// What stands before the "=". The occurrence stands behind the last "#": objects may hold that character.
void ReadTarget(std::string text, Fault& fault) {
    const std::size_t hash = text.rfind('#');
    if (hash != std::string::npos) {
        const std::string occurrence = text.substr(hash + 1);
        fault.onlyFirst = occurrence.empty() || occurrence.back() != '+';
        fault.first = Ordinal(fault.onlyFirst ? occurrence : occurrence.substr(0, occurrence.size() - 1));
        if (fault.first == 0) {
            throw FaultError("behind '#' a number from 1 on is expected, or one with a +, found '" + occurrence + "'");
        }
        text.erase(hash);
    }
    const std::size_t at = text.find('@');
    if (at != std::string::npos) {
        fault.object = text.substr(at + 1);
        if (fault.object.empty()) {
            throw FaultError("behind '@' an object is expected");
        }
        text.erase(at);
    }
    fault.call = text == "*" ? "" : text;
}

std::optional<std::uint64_t> NumberIn(const Json& object, const char* member) {
    const auto found = object.find(member);
    if (found == object.end()) {
        return std::nullopt;
    }
    if (!found->is_number_unsigned()) {
        throw FaultError(std::string(member) + " is no number");
    }
    return found->get<std::uint64_t>();
}

std::optional<std::string> TextIn(const Json& object, const char* member) {
    const auto found = object.find(member);
    if (found == object.end()) {
        return std::nullopt;
    }
    if (!found->is_string()) {
        throw FaultError(std::string(member) + " is no text");
    }
    return found->get<std::string>();
}

// The older spelling.
Fault ReadObject(const Json& json) {
    static const char* const members[] = {"tool",   "arguments", "nth",  "output", "repeat",   "random",
                                          "stream", "exit",      "kill", "hang",   "delay_ms", "comment"};
    if (!json.is_object()) {
        throw FaultError("is no object");
    }
    for (const auto& member : json.items()) {
        if (std::find(std::begin(members), std::end(members), member.key()) == std::end(members)) {
            throw FaultError("there is no member '" + member.key() + "'");
        }
    }
    Fault fault;
    fault.call = TextIn(json, "tool").value_or("");
    fault.object = TextIn(json, "arguments").value_or("");
    fault.first = static_cast<std::size_t>(NumberIn(json, "nth").value_or(0));
    fault.onlyFirst = fault.first != 0;
    fault.output = TextIn(json, "output");
    fault.random = NumberIn(json, "random");
    fault.repeat = NumberIn(json, "repeat");
    const std::string stream = TextIn(json, "stream").value_or("");
    if (!stream.empty() && stream != "out" && stream != "errors") {
        throw FaultError("stream is neither \"out\" nor \"errors\"");
    }
    fault.toErrors = stream == "errors";
    if (json.contains("exit")) {
        if (!json["exit"].is_number_integer()) {
            throw FaultError("exit is no number");
        }
        fault.code = json["exit"].get<std::int64_t>();
    }
    fault.kill = NumberIn(json, "kill");
    fault.delayMs = static_cast<std::uint32_t>(NumberIn(json, "delay_ms").value_or(0));
    fault.hangs = json.value("hang", Json(false)) == true;
    return fault;
}

std::vector<Fault> ReadList(const std::string& text) {
    Json list;
    try {
        list = ParseJson(text);
    } catch (const JsonError& error) {
        throw FaultError(error.what());
    }
    if (!list.is_array()) {
        throw FaultError("is no list");
    }
    std::vector<Fault> faults;
    for (const Json& item : list) {
        try {
            faults.push_back(item.is_string() ? ParseFault(item.get<std::string>()) : ReadObject(item));
        } catch (const FaultError& error) {
            throw FaultError("fault " + std::to_string(faults.size()) + ": " + error.what());
        }
    }
    return faults;
}

std::vector<Fault> ReadLines(const std::string& text) {
    std::vector<Fault> faults;
    std::istringstream stream(text);
    std::string line;
    for (std::size_t number = 1; std::getline(stream, line); ++number) {
        const std::size_t begin = line.find_first_not_of(" \t\r");
        if (begin == std::string::npos || line.compare(begin, 2, "//") == 0) {
            continue;
        }
        try {
            faults.push_back(ParseFault(line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin)));
        } catch (const FaultError& error) {
            throw FaultError("line " + std::to_string(number) + ": " + error.what());
        }
    }
    return faults;
}

} // namespace

bool Fault::Occurs() {
    ++seen;
    return onlyFirst ? seen == first : seen >= first;
}

Fault ParseFault(const std::string& text) {
    // Objects and quoted texts may hold an "=": it is the last one that effects can be read behind. Of the attempts
    // that fail, the one that came furthest says what is wrong.
    std::string problem = "there is no '=' with an effect behind it";
    std::size_t furthest = 0;
    for (std::size_t equals = text.rfind('='); equals != std::string::npos;
         equals = equals == 0 ? std::string::npos : text.rfind('=', equals - 1)) {
        Fault fault;
        EffectReader reader(text, equals + 1);
        try {
            reader.Read(fault);
        } catch (const FaultError& error) {
            if (reader.Position() > furthest) {
                furthest = reader.Position();
                problem = error.what();
            }
            continue;
        }
        ReadTarget(text.substr(0, equals), fault);
        return fault;
    }
    throw FaultError(problem);
}

std::vector<Fault> ParseFaults(const std::string& text) {
    const std::string mark = "\xEF\xBB\xBF"; // of UTF-8
    const std::string faults = text.compare(0, mark.size(), mark) == 0 ? text.substr(mark.size()) : text;
    const std::size_t begin = faults.find_first_not_of(" \t\r\n");
    const bool isJson = begin != std::string::npos && (faults[begin] == '[' || faults[begin] == '{');
    return isJson ? ReadList(faults) : ReadLines(faults);
}

} // namespace common
