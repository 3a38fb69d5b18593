#include "Password.h"

#include "Interruption.h"
#include "Report.h"
#include "Stream.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Text.h"

namespace {

const wchar_t Variable[] = L"CLUSCTL_PASSWORD";
const char ByteOrderMark[] = "\xEF\xBB\xBF";
const size_t Longest = 1024;

[[noreturn]] void ThrowTooLong() {
    throw Failure("the password is longer than " + std::to_string(Longest) + " characters");
}

// Without the echo while it lives.
class EchoOff {
public:
    explicit EchoOff(HANDLE console) : m_console(console) {
        GetConsoleMode(m_console, &m_mode);
        SetConsoleMode(m_console, (m_mode & ~static_cast<DWORD>(ENABLE_ECHO_INPUT)) | ENABLE_LINE_INPUT);
    }
    ~EchoOff() {
        SetConsoleMode(m_console, m_mode);
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    const HANDLE m_console;
    DWORD m_mode = 0;
};

// What the environment held.
std::wstring& Taken() {
    static std::wstring password;
    return password;
}

std::wstring FromConsole(HANDLE console) {
    const Stream errors(STD_ERROR_HANDLE);
    errors.Write("Password: ");
    std::wstring text;
    {
        const EchoOff echoOff(console);
        wchar_t c = L'\0';
        DWORD count = 0;
        while (text.size() <= Longest && ReadConsoleW(console, &c, 1, &count, nullptr) && count == 1 && c != L'\n') {
            text += c;
        }
    }
    errors.Write("\n");
    return text;
}

std::wstring FromPipe(HANDLE input) {
    std::string bytes;
    char c = '\0';
    DWORD count = 0;
    while (bytes.size() <= 4 * Longest && ReadFile(input, &c, 1, &count, nullptr) && count == 1 && c != '\n') {
        bytes += c;
    }
    if (bytes.size() > 4 * Longest) {
        ThrowTooLong(); // the last character may be cut off
    }
    if (StartsWith(bytes, ByteOrderMark)) {
        bytes.erase(0, sizeof(ByteOrderMark) - 1);
    }
    if (!common::IsUtf8(bytes)) {
        throw Failure("the password on standard input is no UTF-8 text");
    }
    return common::ToUtf16(bytes);
}

} // namespace

void TakePasswordFromEnvironment() {
    Taken() = common::EnvironmentVariable(Variable);
    if (!SetEnvironmentVariableW(Variable, nullptr) && GetLastError() != ERROR_ENVVAR_NOT_FOUND) {
        throw Failure("cannot take CLUSCTL_PASSWORD out of the environment: " + ErrorText(GetLastError()));
    }
}

std::wstring ReadPassword() {
    std::wstring text;
    text.swap(Taken());
    if (text.empty()) {
        const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
        DWORD mode = 0;
        text = GetConsoleMode(input, &mode) ? FromConsole(input) : FromPipe(input);
        Interruption::Check(); // what was typed until then is no password
    }
    while (!text.empty() && (text.back() == L'\r' || text.back() == L'\n')) {
        text.pop_back();
    }
    if (text.empty()) {
        throw Failure("no password: it is read from standard input or from the variable CLUSCTL_PASSWORD");
    }
    if (text.size() > Longest) {
        ThrowTooLong();
    }
    return text;
}

std::wstring AsArgument(const std::wstring& text) {
    if (text.find_first_of(L" \t\"") == std::wstring::npos) {
        return text;
    }
    std::wstring result = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : text) {
        if (c == L'"') {
            result.append(backslashes + 1, L'\\'); // those before a quote count double
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        result += c;
    }
    return result.append(backslashes, L'\\') + L"\"";
}

void Forget(std::wstring& text) {
    SecureZeroMemory(&text[0], text.size() * sizeof(wchar_t));
    text.clear();
}
