#include "EnvironmentWatch.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <cstdio>
#include <utility>

namespace {

const DWORD LookInterval = 10; // milliseconds

// Of 64-bit processes, which winternl.h does not name.
const SIZE_T ParametersInBlock = 0x20;
const SIZE_T EnvironmentInParameters = 0x80;

class Process {
public:
    explicit Process(DWORD id) : m_handle(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id)) {
    }
    ~Process() {
        if (m_handle != nullptr) {
            CloseHandle(m_handle);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Empty when there is none, or none yet: a process is seen before it has been set up.
    std::wstring Environment() const {
        const auto query = reinterpret_cast<decltype(&NtQueryInformationProcess)>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess")));
        PROCESS_BASIC_INFORMATION information = {};
        if (query(m_handle, ProcessBasicInformation, &information, sizeof(information), nullptr) != 0) {
            return {};
        }
        const char* const parameters =
            PointerAt(reinterpret_cast<const char*>(information.PebBaseAddress), ParametersInBlock);
        const char* const variables = PointerAt(parameters, EnvironmentInParameters);
        MEMORY_BASIC_INFORMATION region = {};
        if (variables == nullptr || VirtualQueryEx(m_handle, variables, &region, sizeof(region)) != sizeof(region)) {
            return {};
        }
        const SIZE_T offset = static_cast<SIZE_T>(variables - static_cast<const char*>(region.BaseAddress));
        std::wstring text((region.RegionSize - offset) / sizeof(wchar_t), L'\0');
        if (!ReadProcessMemory(m_handle, variables, &text[0], text.size() * sizeof(wchar_t), nullptr)) {
            return {};
        }
        const std::size_t end = text.find(std::wstring(2, L'\0'));
        return end == std::wstring::npos ? std::wstring() : text.substr(0, end);
    }

private:
    const char* PointerAt(const char* structure, SIZE_T offset) const {
        const char* pointer = nullptr;
        return structure != nullptr &&
                       ReadProcessMemory(m_handle, structure + offset, &pointer, sizeof(pointer), nullptr)
                   ? pointer
                   : nullptr;
    }

    HANDLE m_handle;
};

void Print(const char* what, const std::set<std::wstring>& programs) {
    std::fprintf(stderr, "[%s]", what);
    const char* separator = " ";
    for (const std::wstring& program : programs) {
        std::fprintf(stderr, "%s%ls", separator, program.c_str());
        separator = ", ";
    }
    std::fputs(programs.empty() ? " none\n" : "\n", stderr);
}

} // namespace

EnvironmentWatch::EnvironmentWatch(const std::wstring& sought)
    : m_sought(sought), m_thread([this] {
          while (!m_isFinished) {
              LookAtNewOnes();
              Sleep(LookInterval);
          }
      }) {
}

EnvironmentWatch::~EnvironmentWatch() {
    if (m_thread.joinable()) {
        m_isFinished = true;
        m_thread.join();
    }
}

void EnvironmentWatch::Finish() {
    m_isFinished = true;
    m_thread.join();
    Print("environments read", m_read);
    Print("environments", m_found);
}

void EnvironmentWatch::LookAtNewOnes() {
    std::set<DWORD> living;
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL isThere = Process32FirstW(list, &entry); isThere; isThere = Process32NextW(list, &entry)) {
        const DWORD process = entry.th32ProcessID;
        const std::wstring file = entry.szExeFile; // not at once
        if (m_known.count(process) != 0 || (!file.empty() && LookAt(process, file.substr(0, file.rfind(L'.'))))) {
            living.insert(process);
        }
    }
    CloseHandle(list);
    m_known = std::move(living); // numbers are used again
}

// False when it cannot be read, or not yet.
bool EnvironmentWatch::LookAt(DWORD process, const std::wstring& program) {
    const std::wstring environment = Process(process).Environment();
    if (environment.empty()) {
        return false;
    }
    m_read.insert(program);
    if (environment.find(m_sought) != std::wstring::npos) {
        m_found.insert(program);
    }
    return true;
}
