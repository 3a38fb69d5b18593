// The platform's functions that windows.h of this folder declares, and common/Files.h in memory.
#include "Process.h"
#include "ntsecapi.h"

#include "common/Files.h"
#include "common/Text.h"

#include <algorithm>
#include <cstring>
#include <cwctype>

namespace platform {

Process& ThisProcess() {
    static Process process;
    return process;
}

namespace {

const wchar_t Replacement = 0xfffd;

bool IsContinuation(unsigned char c) {
    return (c & 0xc0) == 0x80;
}

// One character of UTF-8 from `at` on, which moves behind it. False, and one byte further: there is none.
bool TakeCharacter(const char* text, std::size_t size, std::size_t& at, std::uint32_t& character) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at);
    const std::size_t length = first < 0x80                     ? 1
                               : first >= 0xc2 && first <= 0xdf ? 2
                               : first >= 0xe0 && first <= 0xef ? 3
                               : first >= 0xf0 && first <= 0xf4 ? 4
                                                                : 0;
    character = length == 1 ? first : length == 2 ? first & 0x1f : length == 3 ? first & 0x0f : first & 0x07;
    bool isGood = length != 0 && length <= size - at;
    for (std::size_t i = 1; isGood && i < length; ++i) {
        isGood = IsContinuation(byte(at + i));
        character = character << 6 | (byte(at + i) & 0x3f);
    }
    isGood = isGood && !(length == 3 && character < 0x800) && !(length == 4 && character < 0x10000) &&
             character <= 0x10ffff && !(character >= 0xd800 && character <= 0xdfff);
    at += isGood ? length : 1;
    return isGood;
}

std::string Utf8(std::uint32_t character) {
    if (character < 0x80) {
        return std::string(1, static_cast<char>(character));
    }
    std::string bytes;
    for (; character >= 0x40u >> bytes.size(); character >>= 6) {
        bytes.insert(bytes.begin(), static_cast<char>(0x80 | (character & 0x3f)));
    }
    const std::uint32_t mark = 0xff00u >> (bytes.size() + 1);
    return std::string(1, static_cast<char>((mark | character) & 0xff)) + bytes;
}

// Copies as much as fits. The whole length, or 0 when it does not fit; room 0 asks for it.
template <typename Text, typename Char> int Put(const Text& text, Char* result, int room) {
    const int length = static_cast<int>(text.size());
    if (room == 0) {
        return length;
    }
    std::copy_n(text.begin(), std::min(length, room), result);
    return length <= room ? length : 0;
}

// As the functions that take a buffer with room for a terminator: the length without it, or the room that is needed.
DWORD PutTerminated(const std::wstring& text, LPWSTR buffer, DWORD room) {
    const DWORD length = static_cast<DWORD>(text.size());
    if (length >= room) {
        return length + 1;
    }
    std::wmemcpy(buffer, text.c_str(), length + 1);
    return length;
}

std::wstring Expanded(const std::wstring& text) {
    std::wstring result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text[at] == L'%' ? text.find(L'%', at + 1) : std::wstring::npos;
        const auto& environment = ThisProcess().environment;
        const auto found =
            end == std::wstring::npos ? environment.end() : environment.find(text.substr(at + 1, end - at - 1));
        if (found == environment.end()) {
            result += text[at++];
        } else {
            result += found->second;
            at = end + 1;
        }
    }
    return result;
}

} // namespace

} // namespace platform

using namespace platform;

int MultiByteToWideChar(unsigned, DWORD flags, const char* text, int length, LPWSTR result, int room) {
    std::wstring wide;
    const std::size_t size = static_cast<std::size_t>(length);
    for (std::size_t at = 0; at < size;) {
        std::uint32_t character = 0;
        if (!TakeCharacter(text, size, at, character)) {
            if ((flags & MB_ERR_INVALID_CHARS) != 0) {
                return 0;
            }
            wide += Replacement;
        } else if (character >= 0x10000) {
            wide += static_cast<wchar_t>(0xd800 + ((character - 0x10000) >> 10));
            wide += static_cast<wchar_t>(0xdc00 + (character & 0x3ff));
        } else {
            wide += static_cast<wchar_t>(character);
        }
    }
    return Put(wide, result, room);
}

int WideCharToMultiByte(unsigned, DWORD, LPCWSTR text, int length, char* result, int room, const char*, BOOL*) {
    std::string bytes;
    for (int i = 0; i < length; ++i) {
        auto unit = static_cast<std::uint32_t>(text[i]);
        const bool isPair =
            unit >= 0xd800 && unit <= 0xdbff && i + 1 < length && text[i + 1] >= 0xdc00 && text[i + 1] <= 0xdfff;
        if (isPair) {
            unit = 0x10000 + ((unit - 0xd800) << 10) + (static_cast<std::uint32_t>(text[++i]) - 0xdc00);
        }
        bytes += Utf8((unit >= 0xd800 && unit <= 0xdfff) || unit > 0x10ffff ? std::uint32_t{Replacement} : unit);
    }
    return Put(bytes, result, room);
}

int LCMapStringW(DWORD, DWORD, LPCWSTR text, int length, LPWSTR result, int room) {
    std::wstring upper(text, text + length);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c; });
    return Put(upper, result, room);
}

DWORD FormatMessageW(DWORD, const void*, DWORD, DWORD, LPWSTR, DWORD, void*) {
    return 0;
}

int _wcsicmp(const wchar_t* a, const wchar_t* b) {
    return wcscasecmp(a, b);
}

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD room) {
    const auto& environment = ThisProcess().environment;
    const auto found = environment.find(name);
    return found == environment.end() ? 0 : PutTerminated(found->second, buffer, room);
}

DWORD ExpandEnvironmentStringsW(LPCWSTR text, LPWSTR buffer, DWORD room) {
    const std::wstring expanded = Expanded(text);
    const DWORD needed = static_cast<DWORD>(expanded.size()) + 1;
    PutTerminated(expanded, buffer, room);
    return needed; // with the terminator, whether it fits or not
}

LONG RegOpenKeyExW(HKEY, LPCWSTR, DWORD, DWORD, HKEY* result) {
    *result = nullptr;
    return ThisProcess().registry.empty() ? static_cast<LONG>(ERROR_FILE_NOT_FOUND) : static_cast<LONG>(ERROR_SUCCESS);
}

LONG RegQueryValueExW(HKEY, LPCWSTR name, DWORD*, DWORD* type, BYTE* data, DWORD* bytes) {
    const auto& registry = ThisProcess().registry;
    const auto found = registry.find(name);
    if (found == registry.end()) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::string& value = found->second.bytes;
    const DWORD room = *bytes;
    *type = found->second.type;
    *bytes = static_cast<DWORD>(value.size());
    if (data != nullptr) {
        if (room < value.size()) {
            return ERROR_MORE_DATA;
        }
        std::memcpy(data, value.data(), value.size());
    }
    return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY) {
    return ERROR_SUCCESS;
}

void RtlGenRandom(unsigned char* bytes, unsigned count) {
    static std::uint64_t number = 0;
    ++number;
    std::memset(bytes, 0, count);
    std::memcpy(bytes, &number, std::min<std::size_t>(count, sizeof(number)));
}

namespace common {

FileError::FileError(const std::wstring& path, const char* attempt, DWORD code)
    : std::runtime_error(ToUtf8(path) + ": cannot be " + attempt), m_path(path), m_attempt(attempt), m_code(code) {
}

std::wstring FullPath(const std::wstring& path) {
    return path;
}

bool FileExists(const std::wstring& path) {
    return ThisProcess().files.count(path) != 0;
}

std::string ReadWholeFile(const std::wstring& path) {
    const auto found = ThisProcess().files.find(path);
    if (found == ThisProcess().files.end()) {
        throw FileError(path, "read", ERROR_FILE_NOT_FOUND);
    }
    return found->second;
}

void WriteWholeFile(const std::wstring& path, const std::string& bytes, const std::wstring&) {
    ThisProcess().files[path] = bytes;
}

void MoveFileOver(const std::wstring& from, const std::wstring& to) {
    WriteWholeFile(to, ReadWholeFile(from), std::wstring());
    ThisProcess().files.erase(from);
}

} // namespace common
