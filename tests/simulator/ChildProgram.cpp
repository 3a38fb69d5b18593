#include "ChildProgram.h"

#include "ExportedApi.h"

#include <cwchar>

#include <gmock/gmock.h>

namespace {

std::wstring EnvironmentBlock(const Variables& variables) {
    std::wstring block;
    wchar_t* const current = GetEnvironmentStringsW();
    for (const wchar_t* entry = current; *entry != L'\0'; entry += wcslen(entry) + 1) {
        if (wcsncmp(entry, L"CLUSSIM_", 8) != 0) {
            block.append(entry).push_back(L'\0');
        }
    }
    FreeEnvironmentStringsW(current);
    for (const auto& variable : variables) {
        block += variable.first + L"=" + variable.second + L'\0';
    }
    return block + L'\0';
}

int Create(HCLUSTER cluster, const std::wstring& prefix, int count) {
    const HGROUP group = OpenClusterGroup(cluster, L"EVS1");
    for (int i = 0; count == 0 || i < count; ++i) {
        const HRESOURCE made =
            CreateClusterResource(group, (prefix + std::to_wstring(i)).c_str(), L"Generic Service", 0);
        if (!made) {
            return static_cast<int>(GetLastError());
        }
        CloseClusterResource(made);
    }
    CloseClusterGroup(group);
    return 0;
}

int RunChild(int argc, wchar_t** argv) {
    const std::wstring command(argv[0]);
    const HCLUSTER cluster = OpenCluster(nullptr);
    if (!cluster) {
        return static_cast<int>(GetLastError());
    }
    int result = 0;
    if (command == L"create" && argc == 3) {
        result = Create(cluster, argv[1], _wtoi(argv[2]));
    } else if (argc == 2) {
        const HRESOURCE resource = OpenClusterResource(cluster, argv[1]);
        result = command == L"online"
                     ? static_cast<int>(OnlineClusterResource(resource))
                     : 1000 + static_cast<int>(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr));
        CloseClusterResource(resource);
    }
    CloseCluster(cluster);
    return result;
}

} // namespace

Child::Child(const std::wstring& arguments, const Variables& variables) : m_process(nullptr), m_errors(nullptr) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE writing = nullptr;
    CreatePipe(&m_errors, &writing, &inheritable, 0);
    SetHandleInformation(m_errors, HANDLE_FLAG_INHERIT, 0);
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring commandLine = L"\"" + std::wstring(program) + L"\" --child " + arguments;
    std::wstring environment = EnvironmentBlock(variables);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = writing;
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(nullptr, &commandLine[0], nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT, &environment[0],
                       nullptr, &startup, &process)) {
        CloseHandle(process.hThread);
        m_process = process.hProcess;
    } else {
        ADD_FAILURE() << "the child process does not start, error " << GetLastError();
    }
    CloseHandle(writing);
}

Child::~Child() {
    Stop();
    CloseHandle(m_process);
    CloseHandle(m_errors);
}

DWORD Child::Wait() {
    EXPECT_EQ(WaitForSingleObject(m_process, 60000), static_cast<DWORD>(WAIT_OBJECT_0));
    DWORD code = 0xFFFFFFFF;
    GetExitCodeProcess(m_process, &code);
    return code;
}

void Child::Stop() {
    if (WaitForSingleObject(m_process, 0) == WAIT_TIMEOUT) {
        TerminateProcess(m_process, 9999);
        WaitForSingleObject(m_process, 10000);
    }
}

std::string Child::Errors() {
    std::string text;
    char block[512];
    DWORD cb = 0;
    while (ReadFile(m_errors, block, sizeof(block), &cb, nullptr) && cb > 0) {
        text.append(block, cb);
    }
    return text;
}

int main(int argc, char** argv) {
    if (argc > 2 && std::string(argv[1]) == "--child") {
        int count = 0;
        wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
        return RunChild(count - 2, arguments + 2);
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
