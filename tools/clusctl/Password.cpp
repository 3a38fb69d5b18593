#include "Password.h"

#include "Report.h"
#include "Stream.h"
#include "Text.h"

namespace {

const wchar_t Variable[] = L"CLUSCTL_PASSWORD";
const size_t Longest = 1024;

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

std::wstring FromVariable() {
    std::wstring value(32768, L'\0'); // the longest there is
    value.resize(GetEnvironmentVariableW(Variable, &value[0], static_cast<DWORD>(value.size())));
    SetEnvironmentVariableW(Variable, nullptr);
    return value;
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
    return ToUtf16(bytes);
}

} // namespace

std::wstring ReadPassword() {
    std::wstring text = FromVariable();
    if (text.empty()) {
        const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
        DWORD mode = 0;
        text = GetConsoleMode(input, &mode) ? FromConsole(input) : FromPipe(input);
    }
    while (!text.empty() && (text.back() == L'\r' || text.back() == L'\n')) {
        text.pop_back();
    }
    if (text.empty()) {
        throw Failure("no password: it is read from standard input or from the variable CLUSCTL_PASSWORD");
    }
    if (text.size() > Longest) {
        throw Failure("the password is longer than " + std::to_string(Longest) + " characters");
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
