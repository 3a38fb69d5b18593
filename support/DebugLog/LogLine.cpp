#include "LogLine.h"

#include "DebugLog.h"
#include "LogConfig.h"

#include <cwchar>

namespace DebugLogDetail {
namespace {

bool BreaksLine(wchar_t c) {
    return c < 0x20 || (c >= 0x7f && c < 0xa0) || c == 0x2028 || c == 0x2029;
}

std::wstring BaseName(const std::wstring& path) {
    const size_t separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

std::wstring SourceName(const char* sourceFile) {
    std::wstring name;
    for (const char* c = sourceFile == nullptr ? "-" : sourceFile; *c != '\0'; ++c) {
        name += static_cast<wchar_t>(static_cast<unsigned char>(*c));
    }
    return BaseName(name);
}

} // namespace

unsigned int MaskOfLevel(unsigned int level) {
    switch (level) {
    case DBG::LEVEL_ERROR:
        return MaskError;
    case DBG::LEVEL_INFORMATION:
        return MaskInformation;
    default:
        return (level & 0x1000) != 0 ? MaskWarning : MaskTrace;
    }
}

const wchar_t* WordOfLevel(unsigned int level) {
    switch (level) {
    case DBG::LEVEL_ERROR:
        return L"ERROR";
    case DBG::LEVEL_INFORMATION:
        return L"INFO";
    case DBG::LEVEL_ENTRY:
        return L"ENTER";
    case DBG::LEVEL_LEAVING:
        return L"LEAVE";
    default:
        return (level & 0x1000) != 0 ? L"WARNING" : L"TRACE";
    }
}

void AppendPrintable(std::wstring& line, const std::wstring& text) {
    size_t length = text.size();
    while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) {
        --length;
    }
    for (size_t i = 0; i < length; ++i) {
        const wchar_t c = text[i];
        if (!BreaksLine(c)) {
            line += c;
        } else if (c == L'\n') {
            line += L"\\n";
        } else if (c == L'\r') {
            line += L"\\r";
        } else if (c == L'\t') {
            line += L"\\t";
        } else {
            wchar_t escape[8];
            line.append(escape, static_cast<size_t>(_snwprintf(escape, 8, c < 0x100 ? L"\\x%02x" : L"\\u%04x", c)));
        }
    }
}

std::wstring LineHead(unsigned int level, const std::wstring& module, const char* sourceFile, int line) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    wchar_t head[96];
    _snwprintf(head, 96, L"%04u-%02u-%02uT%02u:%02u:%02u.%03u %lu %lu %s ", now.wYear, now.wMonth, now.wDay, now.wHour,
               now.wMinute, now.wSecond, now.wMilliseconds, GetCurrentProcessId(), GetCurrentThreadId(),
               WordOfLevel(level));
    head[95] = L'\0';
    std::wstring result = head;
    AppendPrintable(result, BaseName(module) + L" " + SourceName(sourceFile) + L"(" + std::to_wstring(line) + L"): ");
    return result;
}

} // namespace DebugLogDetail
