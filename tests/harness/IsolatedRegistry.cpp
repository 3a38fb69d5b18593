#include "IsolatedRegistry.h"

#include <stdexcept>
#include <vector>

namespace harness {

namespace {

const wchar_t TestsKey[] = L"Software\\clusutil-tests";

void Check(LSTATUS code, const char* what) {
    if (code != ERROR_SUCCESS) {
        throw std::runtime_error(std::string(what) + " failed, code " + std::to_string(code));
    }
}

HKEY Create(HKEY parent, const std::wstring& path) {
    HKEY key = nullptr;
    Check(RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
          "RegCreateKeyExW");
    return key;
}

void DeleteTree(HKEY parent, const std::wstring& name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) {
        return;
    }
    wchar_t child[256];
    while (RegEnumKeyW(key, 0, child, 256) == ERROR_SUCCESS) {
        DeleteTree(key, child);
    }
    RegCloseKey(key);
    RegDeleteKeyW(parent, name.c_str());
}

bool IsRunning(DWORD processId) {
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
    if (!process) {
        return false;
    }
    const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return running;
}

// Key names begin with the process ID of their owner.
void RemoveStaleKeys() {
    HKEY tests = Create(HKEY_CURRENT_USER, TestsKey);
    std::vector<std::wstring> stale;
    wchar_t name[256];
    for (DWORD index = 0; RegEnumKeyW(tests, index, name, 256) == ERROR_SUCCESS; ++index) {
        if (!IsRunning(static_cast<DWORD>(std::wcstoul(name, nullptr, 10)))) {
            stale.push_back(name);
        }
    }
    for (const std::wstring& key : stale) {
        DeleteTree(tests, key);
    }
    RegCloseKey(tests);
}

} // namespace

IsolatedRegistry::IsolatedRegistry() {
    static int number = 0;
    RemoveStaleKeys();
    m_path = std::wstring(TestsKey) + L"\\" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++number);
    m_root = Create(HKEY_CURRENT_USER, m_path);
}

IsolatedRegistry::~IsolatedRegistry() {
    RegCloseKey(m_root);
    DeleteTree(HKEY_CURRENT_USER, m_path);
}

void IsolatedRegistry::CreateKey(const std::wstring& path) {
    RegCloseKey(Create(m_root, path));
}

void IsolatedRegistry::SetText(const std::wstring& path, const std::wstring& name, const std::wstring& value) {
    SetBytes(path, name, REG_SZ, value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

void IsolatedRegistry::SetNumber(const std::wstring& path, const std::wstring& name, DWORD value) {
    SetBytes(path, name, REG_DWORD, &value, sizeof(value));
}

void IsolatedRegistry::SetBytes(const std::wstring& path, const std::wstring& name, DWORD type, const void* data,
                                DWORD size) {
    HKEY key = Create(m_root, path);
    const LSTATUS code = RegSetValueExW(key, name.c_str(), 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
    Check(code, "RegSetValueExW");
}

} // namespace harness
