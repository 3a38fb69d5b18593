#include "LogRecorder.h"

#include "HeapTap.h"
#include "ImportPatch.h"
#include "Text.h"

#include "DebugLog.h"

#include <cstdarg>
#include <cwchar>

namespace harness {

namespace {

LogRecorder* current = nullptr;

// The platform's wide printf, with room for texts of any length.
std::wstring Formatted(const wchar_t* format, va_list arguments) {
    for (std::size_t size = 512;; size *= 2) {
        std::vector<wchar_t> buffer(size);
        va_list copy;
        va_copy(copy, arguments);
        const int length = _vsnwprintf(buffer.data(), size, format, copy);
        va_end(copy);
        if (length >= 0 && static_cast<std::size_t>(length) < size) {
            return std::wstring(buffer.data(), static_cast<std::size_t>(length));
        }
    }
}

void Record(HMODULE module, unsigned int level, const char* sourceFile, int line, const wchar_t* format, ...) {
    const HarnessScope scope;
    const DWORD lastError = GetLastError();
    va_list arguments;
    va_start(arguments, format);
    const std::wstring text = Formatted(format, arguments);
    va_end(arguments);
    current->Add({level, sourceFile ? sourceFile : "", line, Utf8(text)}, module);
    SetLastError(lastError);
}

bool IsKnownTag(const std::string& tag) {
    return tag == ".\\clus_Cluster.cpp" || tag == ".\\clus_GetClusterDiskPaths.cpp" ||
           tag == ".\\clus_VeritasCluster.cpp" || tag == ".\\clus_VirtualServerUtil.cpp";
}

} // namespace

struct LogRecorder::Patch {
    // By address, because the decorated name depends on the compiler.
    ImportEntryPatch entry{FindImportsByAddress(LibraryModule(), reinterpret_cast<const void*>(&DBG::DebugLogEx)),
                           reinterpret_cast<void*>(&Record)};
};

std::string LogLine::Compact() const {
    switch (level) {
    case 0x110:
        return "> " + text;
    case 0x111:
        return "< " + text;
    case 0x102:
        return "I " + text;
    case 0x1001:
        return "E " + text;
    case 0x1003:
        return "W " + text;
    default:
        return std::to_string(level) + " " + text;
    }
}

LogRecorder::LogRecorder() {
    current = this;
    m_patch = std::make_unique<Patch>();
}

LogRecorder::~LogRecorder() {
    m_patch.reset();
    current = nullptr;
}

std::string LogRecorder::TakeLog() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> lines;
    for (const LogLine& line : m_lines) {
        lines.push_back(line.Compact());
    }
    m_lines.clear();
    return Lines(lines);
}

std::vector<std::string> LogRecorder::TakeMessages() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> messages;
    for (const LogLine& line : m_lines) {
        const std::string text = line.Compact();
        if (text[0] != '>' && text[0] != '<') {
            messages.push_back(text);
        }
    }
    m_lines.clear();
    return messages;
}

void LogRecorder::Add(LogLine line, const void* module) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (module != LibraryModule() || line.line <= 0 || !IsKnownTag(line.sourceTag)) {
        m_misuse += line.sourceTag + ":" + std::to_string(line.line) + ": " + line.Compact() + "\n";
    }
    m_lines.push_back(std::move(line));
}

} // namespace harness
