#include "ChildProgram.h"

#include "Failure.h"
#include "StrayOutput.h"
#include "Text.h"
#include "VcsFolder.h"

#include "common/Files.h"

#include <algorithm>
#include <map>

namespace {

const wchar_t OutputName[] = L"\\output";
const wchar_t ErrorsName[] = L"\\errors";

// As a program's start-up code takes words apart.
std::wstring Argument(const std::wstring& word) {
    if (!word.empty() && word.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        return word;
    }
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        text.append(c == L'"' ? backslashes + 1 : 0, L'\\'); // those before a quote count double
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, L'\\') + L"\"";
}

struct NoCase {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
        return _wcsicmp(a.c_str(), b.c_str()) < 0;
    }
};

// A program's environment: NAME=VALUE, each with its terminator, and one more. It is made in one place, of which
// nothing is left: there may be a password in it.
class EnvironmentBlock {
public:
    // That of this program, with the variables put in.
    EnvironmentBlock(const Variables& variables, const Password* password) {
        std::map<std::wstring, std::wstring, NoCase> values;
        wchar_t* const own = GetEnvironmentStringsW();
        for (const wchar_t* entry = own; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
            const std::wstring text = entry;
            const std::size_t equals = text.find(L'=', 1); // names of the system's own begin with one
            values[text.substr(0, equals)] = equals == std::wstring::npos ? std::wstring() : text.substr(equals + 1);
        }
        FreeEnvironmentStringsW(own);
        for (const auto& variable : variables) {
            values.erase(variable.first);
            if (!variable.second.empty()) {
                values.insert(variable);
            }
        }
        std::size_t room = 1;
        if (password != nullptr) {
            values[PasswordVariable].clear();
            room += password->Size();
        }
        for (const auto& value : values) {
            room += value.first.size() + value.second.size() + 2;
        }
        m_text.reserve(room);
        for (const auto& value : values) {
            const bool isPassword = password != nullptr && value.first == PasswordVariable;
            Append(value.first.c_str(), value.first.size());
            m_text.push_back(L'=');
            Append(isPassword ? password->Text() : value.second.c_str(),
                   isPassword ? password->Size() : value.second.size());
            m_text.push_back(L'\0');
        }
        m_text.push_back(L'\0');
    }
    ~EnvironmentBlock() {
        SecureZeroMemory(m_text.data(), m_text.size() * sizeof(wchar_t));
    }
    EnvironmentBlock(const EnvironmentBlock&) = delete;
    EnvironmentBlock& operator=(const EnvironmentBlock&) = delete;

    void* Get() {
        return m_text.data();
    }

private:
    void Append(const wchar_t* text, std::size_t size) {
        m_text.insert(m_text.end(), text, text + size);
    }

    std::vector<wchar_t> m_text;
};

common::Handle CreateInherited(const std::wstring& path) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    common::Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        throw Failure::OfCode("cannot create " + Quoted(path), GetLastError());
    }
    return file;
}

std::string ReadPrinted(const std::wstring& path) {
    try {
        std::string text = common::ReadWholeFile(path);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read " + Quoted(path), error.Code());
    }
}

} // namespace

ChildProgram::ChildProgram(const std::wstring& program, const Words& words, const Variables& variables,
                           const std::wstring& folder, const Password* password)
    : m_folder(folder) {
    std::wstring commandLine = L"\"" + program + L"\"";
    for (const std::wstring& word : words) {
        commandLine += L" " + Argument(word);
    }
    EnvironmentBlock environment(variables, password);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = StrayOutput::Own(STD_OUTPUT_HANDLE);
    startup.hStdError = StrayOutput::Own(STD_ERROR_HANDLE);
    // Closed at once: the next program is not to inherit them.
    common::Handle output;
    common::Handle errors;
    if (!folder.empty()) {
        output = CreateInherited(folder + OutputName);
        errors = CreateInherited(folder + ErrorsName);
        startup.hStdOutput = output.get();
        startup.hStdError = errors.get();
    }
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(program.c_str(), &commandLine[0], nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                        environment.Get(), VcsFolder::CallersFolder().c_str(), &startup, &process)) {
        throw Failure::OfCode("cannot start " + QuotedPath(program), GetLastError());
    }
    CloseHandle(process.hThread);
    m_process = common::Handle(process.hProcess);
}

ChildProgram::~ChildProgram() {
    WaitForSingleObject(m_process.get(), INFINITE);
}

ProgramResult ChildProgram::Finish() const {
    ProgramResult result;
    WaitForSingleObject(m_process.get(), INFINITE);
    GetExitCodeProcess(m_process.get(), &result.exitCode);
    if (!m_folder.empty()) {
        result.output = ReadPrinted(m_folder + OutputName);
        result.errors = ReadPrinted(m_folder + ErrorsName);
    }
    return result;
}

std::size_t ChildProgram::FirstToEnd(const std::vector<const ChildProgram*>& programs) {
    std::vector<HANDLE> processes;
    processes.reserve(programs.size());
    for (const ChildProgram* program : programs) {
        processes.push_back(program->m_process.get());
    }
    const DWORD ended = WaitForMultipleObjects(static_cast<DWORD>(processes.size()), processes.data(), FALSE, INFINITE);
    return ended - WAIT_OBJECT_0 < programs.size() ? ended - WAIT_OBJECT_0 : 0;
}

std::wstring OwnPath() {
    std::wstring path(32768, L'\0'); // the longest there is
    path.resize(GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size())));
    return path;
}
