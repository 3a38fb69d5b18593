#include "Journal.h"

#include "Text.h"

#include <winsock2.h>
#include <windows.h>

#include <nlohmann/json.hpp>

#include <cstring>

namespace clussim {

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
        return nlohmann::json(Utf8(value.text)).dump();
    case JournalValue::Bytes: {
        std::string hex = "\"";
        for (std::size_t i = 0; i < value.cb; ++i) {
            const unsigned char byte = static_cast<const unsigned char*>(value.bytes)[i];
            hex += "0123456789abcdef"[byte >> 4];
            hex += "0123456789abcdef"[byte & 15];
        }
        return hex + "\"";
    }
    default:
        return "null";
    }
}

void Journal::SetFile(const std::wstring& path) {
    m_file = path;
    m_mutex.SetPath(path);
}

void Journal::Count(const char* call) {
    ++m_counts[call];
}

void Journal::Add(const char* call, const std::string& argumentsJson, const std::string& resultJson) {
    const std::string line = "{\"seq\": " + std::to_string(++m_sequence) + ", \"call\": \"" + call +
                             "\", \"args\": " + argumentsJson + ", \"result\": " + resultJson + "}\n";
    if (recording) {
        m_lines += line;
    }
    if (!m_file.empty()) {
        const FileMutex::Turn turn(m_mutex);
        const HANDLE file = CreateFileW(m_file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            DWORD written = 0;
            WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
            CloseHandle(file);
        }
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
