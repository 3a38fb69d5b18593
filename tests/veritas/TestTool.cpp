// Does what the variable VCS_TEST_TOOL says: actions, separated by semicolons, in their order. An argument Id=X makes
// it read VCS_TEST_TOOL_X instead. Exit code 0 unless an action ends the process.
//
//   out:TEXT, err:TEXT  writes the text; \xHH is a byte
//   fill:LINES:LENGTH   writes LINES lines of LENGTH characters
//   args                writes the command line
//   directory           writes the current directory
//   variable:NAME       writes a variable of the environment
//   startup             writes the start-up record's flags and show value
//   stdin               reads the standard input and writes how many bytes came
//   close               closes both outputs
//   sleep:MILLISECONDS, set:EVENT, wait:EVENT
//   leave:EVENT         leaves behind a process that has the standard output until the event is set
//   keep:EVENT          makes the event and waits for it
//   exit:CODE           ends; kill:CODE ends at once
#undef WINVER
#undef _WIN32_WINNT
#define WINVER 0x0600
#define _WIN32_WINNT 0x0600 // for lists of inherited handles

#include "common/Environment.h"

#include <winsock2.h>
#include <windows.h>

#include <cstddef>
#include <cstdlib>
#include <string>

namespace {

const DWORD LongestWait = 60000; // milliseconds

void Write(DWORD stream, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        DWORD written = 0;
        if (!WriteFile(GetStdHandle(stream), bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &written,
                       nullptr) ||
            written == 0) {
            ExitProcess(GetLastError());
        }
        done += written;
    }
}

void Write(const std::wstring& text) {
    Write(STD_OUTPUT_HANDLE, std::string(text.begin(), text.end()));
}

std::string Bytes(const std::wstring& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, L"\\x") == 0) {
            bytes += static_cast<char>(std::wcstoul(text.substr(i + 2, 2).c_str(), nullptr, 16));
            i += 3;
        } else {
            bytes += static_cast<char>(text[i]);
        }
    }
    return bytes;
}

unsigned long Number(const std::wstring& text) {
    return std::wcstoul(text.c_str(), nullptr, 10);
}

void Fill(unsigned long lines, std::size_t length) {
    const std::string line = std::string(length, 'x') + "\r\n";
    std::string block;
    for (unsigned long i = 0; i < lines; ++i) {
        block += line;
        if (block.size() > 1 << 20 || i + 1 == lines) {
            Write(STD_OUTPUT_HANDLE, block);
            block.clear();
        }
    }
}

void WriteStartup() {
    STARTUPINFOW startup;
    GetStartupInfoW(&startup);
    Write(L"flags=" + std::to_wstring(startup.dwFlags) + L" show=" + std::to_wstring(startup.wShowWindow) + L"\n");
}

void ReadInput() {
    char bytes[64];
    DWORD read = 0;
    if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), bytes, sizeof(bytes), &read, nullptr)) {
        read = 0;
    }
    Write(L"read=" + std::to_wstring(read) + L"\n");
}

// A process of the same program, which inherits the standard output alone.
void Leave(const std::wstring& event) {
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, (event + L"-ready").c_str());
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    alignas(std::max_align_t) char list[256];
    SIZE_T size = sizeof(list);
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof(startup);
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdOutput = output;
    startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(list);
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    SetEnvironmentVariableW(L"VCS_TEST_TOOL", (L"keep:" + event).c_str());
    PROCESS_INFORMATION process = {};
    const bool isLeft = InitializeProcThreadAttributeList(startup.lpAttributeList, 1, 0, &size) &&
                        UpdateProcThreadAttribute(startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                                  &output, sizeof(output), nullptr, nullptr) &&
                        CreateProcessW(program, nullptr, nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT, nullptr,
                                       L"C:\\", &startup.StartupInfo, &process) &&
                        WaitForSingleObject(ready, LongestWait) == WAIT_OBJECT_0;
    if (!isLeft) {
        ExitProcess(96);
    }
}

void Keep(const std::wstring& event) {
    const HANDLE told = CreateEventW(nullptr, TRUE, FALSE, event.c_str());
    const HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, (event + L"-ready").c_str());
    if (!told || !ready || !SetEvent(ready)) {
        ExitProcess(96);
    }
    CloseHandle(ready);
    WaitForSingleObject(told, LongestWait);
}

void Act(const std::wstring& action) {
    const std::size_t colon = action.find(L':');
    const std::wstring verb = action.substr(0, colon);
    const std::wstring value = colon == std::wstring::npos ? L"" : action.substr(colon + 1);
    if (verb == L"out" || verb == L"err") {
        Write(verb == L"out" ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE, Bytes(value));
    } else if (verb == L"fill") {
        Fill(Number(value), Number(value.substr(value.find(L':') + 1)));
    } else if (verb == L"args") {
        Write(std::wstring(GetCommandLineW()) + L"\n");
    } else if (verb == L"directory") {
        wchar_t path[MAX_PATH];
        GetCurrentDirectoryW(MAX_PATH, path);
        Write(std::wstring(path) + L"\n");
    } else if (verb == L"variable") {
        Write(common::EnvironmentVariable(value.c_str()) + L"\n");
    } else if (verb == L"startup") {
        WriteStartup();
    } else if (verb == L"stdin") {
        ReadInput();
    } else if (verb == L"close") {
        CloseHandle(GetStdHandle(STD_OUTPUT_HANDLE));
        CloseHandle(GetStdHandle(STD_ERROR_HANDLE));
    } else if (verb == L"sleep") {
        Sleep(Number(value));
    } else if (verb == L"set" || verb == L"wait") {
        const HANDLE event = OpenEventW(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, value.c_str());
        if (!event || !(verb == L"set" ? SetEvent(event) : WaitForSingleObject(event, LongestWait) == WAIT_OBJECT_0)) {
            ExitProcess(98);
        }
    } else if (verb == L"leave") {
        Leave(value);
    } else if (verb == L"keep") {
        Keep(value);
    } else if (verb == L"exit") {
        ExitProcess(Number(value));
    } else if (verb == L"kill") {
        TerminateProcess(GetCurrentProcess(), Number(value));
    } else {
        ExitProcess(97); // a typing error of the test
    }
}

} // namespace

int main() {
    std::wstring name = L"VCS_TEST_TOOL";
    const std::wstring commandLine = GetCommandLineW();
    const std::size_t id = commandLine.find(L"Id=");
    if (id != std::wstring::npos) {
        name += L"_" + commandLine.substr(id + 3, commandLine.find(L' ', id) - id - 3);
    }
    const std::wstring actions = common::EnvironmentVariable(name.c_str()) + L";";
    for (std::size_t start = 0; start < actions.size();) {
        const std::size_t end = actions.find(L';', start);
        if (end > start) {
            Act(actions.substr(start, end - start));
        }
        start = end + 1;
    }
    return 0;
}
