#include "ClusterCalls.h"

#include "Json.h"
#include "Text.h"

#include "common/FaultGrammar.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <sstream>
#include <utility>

namespace {

const unsigned long AccessDenied = 5;
const unsigned long ServerUnavailable = 1722; // RPC_S_SERVER_UNAVAILABLE
const unsigned long NotFound = 2;

const unsigned long long ModifyBit = 0x00400000; // of a control code: CLCTL_MODIFY

const char ControlCall[] = "ClusterResourceControl";
const char OpeningCall[] = "OpenCluster";

// A value that tells something: a text or a whole number.
struct Value {
    enum Kind {
        Other,
        Text,
        Number
    };

    std::string name;
    Kind kind = Other;
    std::string text;
    long long number = 0;
};

// A line of the journal. There are thousands of them: no document is made of each.
struct Line {
    std::string call;
    bool hasArguments = false;
    std::vector<Value> arguments;
    Value result;
    Value error;

    const Value* Argument(const char* name) const {
        const auto found = std::find_if(arguments.begin(), arguments.end(),
                                        [name](const Value& argument) { return argument.name == name; });
        return found == arguments.end() ? nullptr : &*found;
    }
};

// Takes a line apart while the parser reads it.
class LineReader : public nlohmann::json_sax<Json> {
public:
    explicit LineReader(Line& line) noexcept(false) : m_line(line) {
    }
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    bool null() override {
        return Take(Value());
    }
    bool boolean(bool) override {
        return Take(Value());
    }
    bool number_integer(number_integer_t number) override {
        return TakeNumber(number);
    }
    bool number_unsigned(number_unsigned_t number) override {
        return TakeNumber(static_cast<long long>(number));
    }
    bool number_float(number_float_t, const string_t&) override {
        return Take(Value());
    }
    bool string(string_t& text) override {
        Value value;
        value.kind = Value::Text;
        value.text = std::move(text);
        return Take(std::move(value));
    }
    bool binary(binary_t&) override {
        return false; // not in texts
    }
    bool start_object(std::size_t) override {
        ++m_depth;
        m_line.hasArguments = m_line.hasArguments || IsInArguments();
        return true;
    }
    bool key(string_t& name) override {
        (m_depth == 1 ? m_member : m_argument) = std::move(name);
        return true;
    }
    bool end_object() override {
        --m_depth;
        return true;
    }
    bool start_array(std::size_t) override {
        ++m_depth;
        return m_depth > 1; // a list is no line
    }
    bool end_array() override {
        --m_depth;
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

private:
    bool IsInArguments() const {
        return m_depth == 2 && m_member == "args";
    }
    bool TakeNumber(long long number) {
        Value value;
        value.kind = Value::Number;
        value.number = number;
        return Take(std::move(value));
    }
    bool Take(Value&& value) {
        if (IsInArguments()) {
            value.name = m_argument;
            m_line.arguments.push_back(std::move(value));
        } else if (m_depth == 1 && m_member == "call") {
            m_line.call = std::move(value.text);
        } else if (m_depth == 1 && m_member == "result") {
            m_line.result = std::move(value);
        } else if (m_depth == 1 && m_member == "error") {
            m_line.error = std::move(value);
        }
        return true;
    }

    Line& m_line;
    int m_depth = 0;
    std::string m_member;   // of the line
    std::string m_argument; // of its arguments
};

bool IsChange(const Line& line) {
    static const char* const verbs[] = {"Add",   "Create", "Delete",  "Fail",   "Move", "Offline", "Online",
                                        "Pause", "Remove", "Restart", "Resume", "Set",  "Change"};
    if (line.call == ControlCall) {
        const Value* const code = line.Argument("code");
        return code != nullptr && (static_cast<unsigned long long>(code->number) & ModifyBit) != 0;
    }
    return std::any_of(std::begin(verbs), std::end(verbs),
                       [&line](const char* verb) { return StartsWith(line.call, verb); });
}

// What changes something by the name of its control code; others by their number.
std::string ControlText(unsigned long long code) {
    switch (code) {
    case 0x0140005e:
        return "SET_COMMON_PROPERTIES";
    case 0x01400086:
        return "SET_PRIVATE_PROPERTIES";
    default:
        char text[20];
        std::snprintf(text, sizeof(text), "0x%08llx", code);
        return text;
    }
}

// Handles by their numbers, as the names they were opened with.
class Handles {
public:
    // The arguments that tell what a call is about.
    std::string Text(const Line& line) const {
        std::string text;
        for (const Value& argument : line.arguments) {
            const std::string part = Part(argument);
            text += (text.empty() || part.empty() ? "" : ", ") + part;
        }
        return text;
    }

    void Learn(const Line& line) {
        const long long handle = line.result.number;
        if (handle == 0) {
            return;
        }
        const Value* const name = line.Argument("name");
        if (name != nullptr && name->kind == Value::Text) {
            m_names[handle] = name->text;
        } else if (line.call == OpeningCall) {
            m_names[handle] = "";
        } else if (line.call.find("OpenEnum") != std::string::npos) {
            m_names[handle] = Text(line);
        }
    }

private:
    std::string Part(const Value& value) const {
        const std::string& key = value.name;
        static const char* const sizes[] = {"cch", "cb", "cbOut", "cbIn", "in", "flags"};
        if (std::find(std::begin(sizes), std::end(sizes), key) != std::end(sizes)) {
            return std::string();
        }
        if (value.kind == Value::Text) {
            return Printable(value.text);
        }
        if (value.kind != Value::Number) {
            return std::string();
        }
        const long long number = value.number;
        const auto known = m_names.find(number);
        if (known != m_names.end()) {
            return Printable(known->second);
        }
        if (key == "code") {
            return ControlText(static_cast<unsigned long long>(number));
        }
        return key == "index" || key == "type" ? key + " " + std::to_string(number) : std::string();
    }

    std::map<long long, std::string> m_names;
};

// What the journal's line says of a failure.
unsigned long CodeOf(const Line& line) {
    if (line.error.kind == Value::Number) {
        return static_cast<unsigned long>(line.error.number);
    }
    const std::string& call = line.call;
    // The others give a handle, a state or a truth.
    const bool returnsCode = line.result.kind == Value::Number && call.find("Open") == std::string::npos &&
                             call.find("State") == std::string::npos && call.find("From") == std::string::npos &&
                             !StartsWith(call, "Create") && !StartsWith(call, "ResUtilGet");
    return returnsCode ? static_cast<unsigned long>(line.result.number) : 0;
}

} // namespace

std::vector<ClusterCall> ReadClusterCalls(const std::string& journal) {
    std::vector<ClusterCall> calls;
    Handles handles;
    std::map<std::string, std::size_t> counts;
    for (auto begin = journal.begin(); begin != journal.end();) {
        const auto end = std::find(begin, journal.end(), '\n');
        Line line;
        LineReader reader(line);
        const bool isLine = Json::sax_parse(begin, end, &reader);
        begin = end == journal.end() ? end : std::next(end);
        if (!isLine || !line.hasArguments) { // also of one that only begins to wait
            continue;
        }
        ClusterCall call;
        call.occurrence = ++counts[line.call];
        call.text = line.call + "(" + handles.Text(line) + ")";
        call.code = CodeOf(line);
        call.changes = IsChange(line);
        handles.Learn(line);
        call.call = std::move(line.call);
        calls.push_back(std::move(call));
    }
    return calls;
}

std::vector<std::size_t> ReadFaultCounts(const std::string& lines) {
    std::vector<std::size_t> counts;
    std::istringstream stream(lines);
    for (std::size_t count = 0; stream >> count;) {
        counts.push_back(count);
    }
    return counts;
}

std::vector<std::string> FaultsNotMet(const std::vector<std::string>& faults, const std::vector<std::size_t>& matched) {
    std::vector<std::string> sentences;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const std::size_t count = i < matched.size() ? matched[i] : 0;
        if (count < common::ParseFault(faults[i]).first) {
            sentences.push_back("the failure " + Quoted(faults[i]) + " did not come about: the command made " +
                                std::to_string(count) + " such call" + (count == 1 ? "" : "s"));
        }
    }
    return sentences;
}

unsigned long UsualCodeOf(const std::string& call) {
    if (StartsWith(call, "ResUtilFind")) {
        return NotFound;
    }
    const bool asks = call.find("Enum") != std::string::npos || StartsWith(call, "Get") || call == OpeningCall;
    return asks ? ServerUnavailable : AccessDenied;
}
