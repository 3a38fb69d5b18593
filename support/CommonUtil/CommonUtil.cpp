#include "CommonUtil.h"

#include <cwchar>

namespace {

const size_t MaxNameLength = 255;

bool IsSeparator(wchar_t c) {
    return c == L'\\' || c == L'/';
}

bool CanBeInName(wchar_t c) {
    return c >= 0x20 && std::wcschr(L"<>:\"/\\|?*", c) == nullptr;
}

// Passes one name and the backslash behind it.
bool TakeName(const wchar_t*& at, const wchar_t* end) {
    const wchar_t* const start = at;
    while (at != end && CanBeInName(*at)) {
        ++at;
    }
    const size_t length = static_cast<size_t>(at - start);
    if (length == 0 || length > MaxNameLength || at == end || *at != L'\\') {
        return false;
    }
    ++at;
    return true;
}

// The same for a server's or share's name, which is never a relative one: "\\.\" leads to devices.
bool TakeNetworkName(const wchar_t*& at, const wchar_t* end) {
    const wchar_t* const start = at;
    while (at != end && *at == L'.') {
        ++at;
    }
    if (at == end || *at == L'\\') {
        return false;
    }
    at = start;
    return TakeName(at, end);
}

bool IsDriveLetter(wchar_t c) {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

} // namespace

namespace OS {

CException::CException(DWORD code) : m_code(code) {
}

DWORD CException::GetErrorCode() const {
    return m_code;
}

} // namespace OS

namespace NS_StringUtils {

OS::x_wstring concatPath(const OS::x_wstring& head, const OS::x_wstring& tail) {
    if (head.empty()) {
        return tail;
    }
    if (tail.empty()) {
        return head;
    }
    size_t headLength = head.size();
    while (headLength > 0 && IsSeparator(head[headLength - 1])) {
        --headLength;
    }
    size_t tailStart = 0;
    while (tailStart < tail.size() && IsSeparator(tail[tailStart])) {
        ++tailStart;
    }
    return head.substr(0, headLength) + L'\\' + tail.substr(tailStart);
}

} // namespace NS_StringUtils

bool CheckPathFormat(const wchar_t* path, size_t length) {
    if (path == nullptr || length < 3) {
        return false;
    }
    const wchar_t* at = path;
    const wchar_t* const end = path + length;
    if (IsDriveLetter(at[0])) {
        if (at[1] != L':' || at[2] != L'\\') {
            return false;
        }
        at += 3;
    } else {
        if (at[0] != L'\\' || at[1] != L'\\') {
            return false;
        }
        at += 2;
        if (!TakeNetworkName(at, end) || !TakeNetworkName(at, end)) {
            return false;
        }
    }
    while (at != end) {
        if (!TakeName(at, end)) {
            return false;
        }
    }
    return true;
}
