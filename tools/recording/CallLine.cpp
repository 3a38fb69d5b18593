#include "CallLine.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace recording {

namespace {

const std::size_t UsualSize = 120;         // of an object
const std::size_t MostMembers = 8;         // of one object; no call has more
const std::size_t MostDigits = 18;         // whatever they are, the number has room in 64 bits
const std::uint64_t Longest = 4294967295U; // milliseconds

bool IsPlain(char c) {
    return c >= ' ' && c <= '~' && c != '"' && c != '\\';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Milliseconds with three digits behind the point at most, and one at least.
std::string TimeText(double milliseconds) {
    const auto thousandths = std::llround(milliseconds * 1000);
    std::string digits = std::to_string(thousandths % 1000);
    digits.insert(0, 3 - digits.size(), '0');
    digits.erase(std::max<std::size_t>(1, digits.find_last_not_of('0') + 1));
    return std::to_string(thousandths / 1000) + "." + digits;
}

// Goes through a line. Whatever is not found there, nothing is found behind it either.
class Reader {
public:
    explicit Reader(std::string_view line) : m_line(line) {
    }

    bool IsAtEnd() const {
        return m_isAsExpected && m_at == m_line.size();
    }

    // False when something else stands there.
    bool Skip(std::string_view text) {
        if (m_line.compare(m_at, text.size(), text) != 0) {
            return false;
        }
        m_at += text.size();
        return true;
    }
    void Expect(std::string_view text) {
        m_isAsExpected = Skip(text) && m_isAsExpected;
    }

    // A text, with its quotes.
    std::string_view Text() {
        const std::size_t begin = m_at;
        Expect("\"");
        for (;;) {
            while (m_at < m_line.size() && IsPlain(m_line[m_at])) {
                ++m_at;
            }
            const bool isEscape = m_at + 1 < m_line.size() && m_line[m_at] == '\\' &&
                                  std::string_view("\"\\bfnrt").find(m_line[m_at + 1]) != std::string_view::npos;
            if (!isEscape) {
                break;
            }
            m_at += 2;
        }
        Expect("\"");
        return m_line.substr(begin, m_at - begin);
    }

    // A text that stands for itself, without its quotes.
    std::string_view Word() {
        std::string_view text = Text();
        m_isAsExpected = m_isAsExpected && text.size() > 2 && text.find('\\') == std::string_view::npos;
        return m_isAsExpected ? text.substr(1, text.size() - 2) : std::string_view();
    }

    std::uint64_t Number() {
        const std::size_t begin = m_at;
        std::uint64_t number = 0;
        while (m_at < m_line.size() && IsDigit(m_line[m_at]) && m_at - begin < MostDigits) {
            number = number * 10 + static_cast<std::uint64_t>(m_line[m_at++] - '0');
        }
        const std::size_t digits = m_at - begin;
        m_isAsExpected = m_isAsExpected && digits > 0 && (digits == 1 || m_line[begin] != '0');
        return number;
    }

    double Time() {
        const std::uint64_t whole = Number();
        Expect(".");
        const std::size_t begin = m_at;
        std::uint64_t thousandths = 0;
        for (std::uint64_t worth = 100; m_at < m_line.size() && IsDigit(m_line[m_at]) && worth > 0; worth /= 10) {
            thousandths += worth * static_cast<std::uint64_t>(m_line[m_at++] - '0');
        }
        m_isAsExpected = m_isAsExpected && m_at > begin && whole < Longest;
        return static_cast<double>(whole * 1000 + thousandths) / 1000;
    }

    // An object without others in it.
    std::string_view Object() {
        const std::size_t begin = m_at;
        std::string_view names[MostMembers];
        std::size_t count = 0;
        Expect("{");
        while (m_isAsExpected && !Skip("}")) {
            if (count > 0) {
                Expect(",");
            }
            const std::string_view name = Word();
            m_isAsExpected =
                m_isAsExpected && count < MostMembers && std::find(names, names + count, name) == names + count;
            Expect(":");
            Value();
            if (m_isAsExpected) {
                names[count++] = name;
            }
        }
        return m_line.substr(begin, m_at - begin);
    }

private:
    void Value() {
        if (Skip("[")) {
            do {
                Item();
            } while (m_isAsExpected && Skip(","));
            Expect("]");
        } else {
            Item();
        }
    }
    void Item() {
        if (m_at < m_line.size() && m_line[m_at] == '"') {
            Text();
        } else if (!Skip("null") && !Skip("false") && !Skip("true")) {
            Number();
        }
    }

    std::string_view m_line;
    std::size_t m_at = 0;
    bool m_isAsExpected = true;
};

} // namespace

ObjectText::ObjectText() {
    m_text.reserve(UsualSize);
    m_text += '{';
}

void ObjectText::Add(const char* name, const std::string& value) {
    m_text += m_text.size() > 1 ? ",\"" : "\"";
    m_text += name;
    m_text += "\":";
    m_text += value;
}

std::string ObjectText::Take() {
    m_text += '}';
    return std::move(m_text);
}

std::string QuotedText(const std::string& utf8) {
    return std::all_of(utf8.begin(), utf8.end(), IsPlain) ? '"' + utf8 + '"' : common::DumpJsonLine(utf8);
}

std::string LineOf(const RecordedCall& call) {
    std::string line = "{\"call\":";
    line.reserve(160 + call.in.size() + call.out.size());
    line.append(QuotedText(call.name)).append(",\"in\":").append(call.in);
    line.append(",\"result\":").append(std::to_string(call.result));
    if (call.out != EmptyObject) {
        line.append(",\"out\":").append(call.out);
    }
    if (call.lastError) {
        line.append(",\"lastError\":").append(std::to_string(*call.lastError));
    }
    line.append(call.isRefused ? ",\"refused\":true" : "");
    line.append(",\"thread\":").append(std::to_string(call.thread));
    line.append(",\"time\":").append(TimeText(call.time));
    line.append(",\"took\":").append(TimeText(call.took));
    return line.append("}\n");
}

bool ReadPlainCall(std::string_view line, RecordedCall& call) {
    Reader reader(line);
    reader.Expect("{\"call\":");
    call.name = reader.Word();
    reader.Expect(",\"in\":");
    call.in = reader.Object();
    reader.Expect(",\"result\":");
    const bool isNegative = reader.Skip("-");
    const auto result = static_cast<std::int64_t>(reader.Number());
    call.result = isNegative ? -result : result;
    if (reader.Skip(",\"out\":")) {
        call.out = reader.Object();
    }
    if (reader.Skip(",\"lastError\":")) {
        const std::uint64_t code = reader.Number();
        if (code > UINT32_MAX) {
            return false;
        }
        call.lastError = static_cast<std::uint32_t>(code);
    }
    call.isRefused = reader.Skip(",\"refused\":true");
    reader.Expect(",\"thread\":");
    const std::uint64_t thread = reader.Number();
    call.thread = static_cast<unsigned>(thread);
    reader.Expect(",\"time\":");
    call.time = reader.Time();
    reader.Expect(",\"took\":");
    call.took = reader.Time();
    reader.Expect("}");
    return reader.IsAtEnd() && thread <= UINT32_MAX;
}

} // namespace recording
