#include "Password.h"

#include "Failure.h"
#include "Interruption.h"
#include "Progress.h"
#include "Stream.h"
#include "Text.h"

#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <iterator>
#include <string>

#include <winsock2.h>
#include <windows.h>

const wchar_t PasswordVariable[] = L"CLUSCTL_PASSWORD";

namespace {

const char NarrowVariable[] = "CLUSCTL_PASSWORD";
const char ByteOrderMark[] = "\xEF\xBB\xBF";
const std::size_t Longest = 1024;
const std::size_t Room = Longest + 2; // a line end that is not its own

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
Password& Taken() {
    static Password password;
    return password;
}

// In a C run-time's own copy of the environment. The variable stays, without its value.
template <typename Char> void EraseValue(Char** environment, const Char* variable, std::size_t length) {
    for (; environment != nullptr && *environment != nullptr; ++environment) {
        Char* const entry = *environment;
        if (std::char_traits<Char>::compare(entry, variable, length) == 0 && entry[length] == Char('=')) {
            Char* const value = entry + length + 1;
            SecureZeroMemory(value, std::char_traits<Char>::length(value) * sizeof(Char));
        }
    }
}

// Of the environments that the C run-times of this process hold: the one in force, and that of the program's start.
// There may be another run-time than this program's own, for libraries of the system.
template <typename Char>
void EraseValues(std::initializer_list<const char*> variables, const char* function, const Char* variable,
                 std::size_t length) {
    const HMODULE older = GetModuleHandleW(L"msvcrt.dll");
    for (const char* name : variables) {
        const auto environment = older == nullptr
                                     ? nullptr
                                     : reinterpret_cast<Char***>(reinterpret_cast<void*>(GetProcAddress(older, name)));
        if (environment != nullptr) {
            EraseValue(*environment, variable, length);
        }
    }
    const HMODULE newer = GetModuleHandleW(L"ucrtbase.dll");
    const auto find = newer == nullptr
                          ? nullptr
                          : reinterpret_cast<Char*** (*)()>(reinterpret_cast<void*>(GetProcAddress(newer, function)));
    if (find != nullptr) {
        EraseValue(*find(), variable, length);
    }
}

Password FromConsole(HANDLE console) {
    const OtherShown prompt;
    const Stream errors(STD_ERROR_HANDLE);
    errors.Write("Password: ");
    Password password(Room);
    {
        const EchoOff echoOff(console);
        wchar_t c = L'\0';
        DWORD count = 0;
        while (password.Size() < Room && ReadConsoleW(console, &c, 1, &count, nullptr) && count == 1 && c != L'\n') {
            password.Append(c);
        }
    }
    errors.Write("\n");
    return password;
}

// The bytes of a line, and nothing of them left at its end.
struct Line {
    ~Line() {
        SecureZeroMemory(bytes, sizeof(bytes));
    }

    char bytes[4 * Longest + 1] = {};
    std::size_t size = 0;
};

Password FromPipe(HANDLE input) {
    Line line;
    char c = '\0';
    DWORD count = 0;
    while (line.size < sizeof(line.bytes) && ReadFile(input, &c, 1, &count, nullptr) && count == 1 && c != '\n') {
        line.bytes[line.size++] = c;
    }
    if (line.size == sizeof(line.bytes)) {
        ThrowTooLong(); // the last character may be cut off
    }
    const std::size_t markSize = sizeof(ByteOrderMark) - 1;
    const std::size_t skipped = std::memcmp(line.bytes, ByteOrderMark, markSize) == 0 ? markSize : 0;
    const int bytes = static_cast<int>(line.size - skipped);
    Password password(line.size);
    if (bytes == 0) {
        return password;
    }
    const int characters = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, line.bytes + skipped, bytes,
                                               password.Buffer(), static_cast<int>(password.Room()));
    if (characters == 0) {
        throw Failure("the password on standard input is no UTF-8 text");
    }
    password.SetSize(static_cast<std::size_t>(characters));
    return password;
}

} // namespace

void Password::SetSize(std::size_t size) {
    m_size = size;
    m_text[size] = L'\0';
}

void Password::Append(wchar_t c) {
    m_text[m_size] = c;
    SetSize(m_size + 1);
}

void Password::Forget() {
    if (!m_text.empty()) {
        SecureZeroMemory(m_text.data(), m_text.size() * sizeof(wchar_t));
    }
    m_size = 0;
}

void TakePasswordFromEnvironment() {
    const DWORD room = GetEnvironmentVariableW(PasswordVariable, nullptr, 0); // with its terminator
    if (room == 0) {
        return;
    }
    Taken() = Password(room);
    Taken().SetSize(GetEnvironmentVariableW(PasswordVariable, Taken().Buffer(), room));
    // A value of the same length takes the other one's place; the one that is removed would stay in the block's memory.
    SetEnvironmentVariableW(PasswordVariable, std::wstring(Taken().Size(), L'*').c_str());
    if (!SetEnvironmentVariableW(PasswordVariable, nullptr) && GetLastError() != ERROR_ENVVAR_NOT_FOUND) {
        throw Failure::OfCode("cannot take CLUSCTL_PASSWORD out of the environment", GetLastError());
    }
    EraseValues<wchar_t>({"_wenviron", "__winitenv"}, "__p__wenviron", PasswordVariable,
                         std::size(PasswordVariable) - 1);
    EraseValues<char>({"_environ", "__initenv"}, "__p__environ", NarrowVariable, std::size(NarrowVariable) - 1);
}

const Password* GivenPassword() {
    return Taken().Size() == 0 ? nullptr : &Taken();
}

Password ReadPassword() {
    Password password = std::move(Taken());
    if (password.Size() == 0) {
        const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
        DWORD mode = 0;
        password = GetConsoleMode(input, &mode) ? FromConsole(input) : FromPipe(input);
        Interruption::Check(); // what was typed until then is no password
    }
    std::size_t size = password.Size();
    while (size > 0 && (password.Text()[size - 1] == L'\r' || password.Text()[size - 1] == L'\n')) {
        --size;
    }
    if (size == 0) {
        throw Failure("no password: it is read from standard input or from the variable CLUSCTL_PASSWORD");
    }
    if (size > Longest) {
        ThrowTooLong();
    }
    password.SetSize(size);
    return password;
}

void KeepPassword() {
    Taken() = ReadPassword();
}

Password AsArgument(const Password& password) {
    const wchar_t* const text = password.Text();
    const bool isQuoted = std::wcspbrk(text, L" \t\"") != nullptr;
    Password argument(2 * password.Size() + 2); // each a backslash more, and the quotes
    if (isQuoted) {
        argument.Append(L'"');
    }
    std::size_t backslashes = 0;
    const auto doubleBackslashes = [&]() {
        for (; backslashes > 0; --backslashes) {
            argument.Append(L'\\');
        }
    };
    for (const wchar_t* c = text; *c != L'\0'; ++c) {
        if (*c == L'"') {
            doubleBackslashes(); // those before a quote count double
            argument.Append(L'\\');
        }
        backslashes = *c == L'\\' ? backslashes + 1 : 0;
        argument.Append(*c);
    }
    if (isQuoted) {
        doubleBackslashes();
        argument.Append(L'"');
    }
    return argument;
}
