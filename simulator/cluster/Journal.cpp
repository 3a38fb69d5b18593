#include "Journal.h"

#include "common/Json.h"
#include "common/Text.h"

#include <cstring>

namespace clussim {

using common::ToUtf8;

JournalValue JournalValue::Of(const char* name, long long number) {
    JournalValue value;
    value.name = name;
    value.kind = Number;
    value.number = number;
    return value;
}

JournalValue JournalValue::Of(const char* name, const wchar_t* text) {
    JournalValue value;
    value.name = name;
    value.kind = text ? Text : Null;
    value.text = text;
    return value;
}

JournalValue JournalValue::Of(const char* name, const void* bytes, std::size_t cb) {
    JournalValue value;
    value.name = name;
    value.kind = bytes ? Bytes : Null;
    value.bytes = bytes;
    value.cb = cb;
    return value;
}

std::string Journal::ToJson(const JournalValue& value) {
    switch (value.kind) {
    case JournalValue::Number:
        return std::to_string(value.number);
    case JournalValue::Text:
        return common::DumpJsonLine(ToUtf8(value.text));
    case JournalValue::Bytes:
        return "\"" + common::HexDigits(value.bytes, value.cb) + "\"";
    default:
        return "null";
    }
}

void Journal::SetFile(const std::wstring& path) {
    m_hasFile = !path.empty();
    m_file = common::AppendFile(path);
}

void Journal::Count(const char* call) {
    ++m_counts[call];
}

void Journal::Add(const char* call, const std::string& argumentsJson, const std::string& resultJson) {
    AddLine(call, "\"args\": " + argumentsJson + ", \"result\": " + resultJson);
}

void Journal::AddDelay(const char* call, unsigned long milliseconds) {
    AddLine(call, "\"delayMs\": " + std::to_string(milliseconds));
}

void Journal::AddEvent(const char* call, const std::string& event) {
    AddLine(call, "\"event\": " + common::DumpJsonLine(event));
}

void Journal::AddLine(const char* call, const std::string& members) {
    const std::string line =
        "{\"seq\": " + std::to_string(++m_sequence) + ", \"call\": \"" + call + "\", " + members + "}\n";
    if (recording) {
        m_lines += line;
    }
    if (m_hasFile) {
        m_file.Append(line); // no call fails because its line cannot be written
        m_file.Close();      // so that the next one finds or makes a file of this name, whatever became of this one
    }
}

void Journal::Clear() {
    m_counts.clear();
    m_lines.clear();
    m_sequence = 0;
}

std::size_t Journal::Calls(const char* call) const {
    std::size_t total = 0;
    for (const auto& entry : m_counts) {
        if (!call || std::strcmp(call, entry.first) == 0) {
            total += entry.second;
        }
    }
    return total;
}

} // namespace clussim
