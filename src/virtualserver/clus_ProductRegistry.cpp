#include "clus_ProductRegistry.h"

#include "clus_SettingsFile.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>

namespace clus {

const wchar_t DefaultProductRegistryKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

std::wstring ProductRegistryKey(DefaultProductRegistryKey);

CriticalSection SettingsLock;

namespace {

const wchar_t SettingsFileName[] = L"cfg_ProductRegistry.txt";
const wchar_t SettingsKeyName[] = L"RegKeyProductCurrentVersion";

std::atomic<bool> ProductRegistryKeyLoaded(false);

struct FileCloser {
    void operator()(FILE* file) const {
        std::fclose(file);
    }
};
typedef std::unique_ptr<FILE, FileCloser> FileOwner;

// The folder of the host executable, with a backslash at its end; empty when it cannot be told.
std::wstring HostDirectory() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring text(path,
                            std::min<DWORD>(length, MAX_PATH - 1)); // a longer path is cut, and not always terminated
    return text.substr(0, text.rfind(L'\\') + 1);
}

FileOwner OpenSettingsFile() {
    const std::wstring directory = HostDirectory();
    const std::wstring first = (directory.empty() ? directory : directory + L"config\\") + SettingsFileName;
    FileOwner file(_wfopen(first.c_str(), L"r"));
    if (!file) {
        file.reset(_wfopen((directory + SettingsFileName).c_str(), L"r"));
    }
    return file;
}

// The file's lines, in pieces; no further than the settings text can hold.
std::vector<std::string> ReadLines(FILE* file) {
    std::vector<std::string> lines;
    std::vector<char> piece(SettingsPieceCharacters + 1);
    std::size_t total = 0;
    while (total <= SettingsTextCharacters && std::fgets(piece.data(), static_cast<int>(piece.size()), file)) {
        lines.emplace_back(piece.data());
        total += lines.back().size() + 1;
    }
    return lines;
}

std::wstring ProductRegistryKeyFromFile() {
    FileOwner file = OpenSettingsFile();
    if (file) {
        const std::vector<std::string> lines = ReadLines(file.get());
        file.reset();
        _flushall();
        const SettingsTable table = ParseSettings(lines);
        const auto entry = table.find(SettingsKeyName);
        if (entry != table.end()) {
            return entry->second;
        }
    }
    return DefaultProductRegistryKey;
}

} // namespace

void LoadProductRegistryKey() {
    if (ProductRegistryKeyLoaded) {
        return;
    }
    const CriticalSectionGuard guard(SettingsLock);
    if (!ProductRegistryKeyLoaded) {
        ProductRegistryKey = ProductRegistryKeyFromFile();
        ProductRegistryKeyLoaded = true;
    }
}

RegistryKey::RegistryKey(const wchar_t* path, REGSAM access) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, &key) == ERROR_SUCCESS) {
        m_key.reset(key);
    }
}

bool RegistryKey::ReadDword(const wchar_t* name, DWORD& value) const {
    DWORD type = REG_DWORD;
    DWORD stored = 0;
    DWORD cb = sizeof(stored);
    if (RegQueryValueExW(m_key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&stored), &cb) != ERROR_SUCCESS ||
        type != REG_DWORD || cb != sizeof(stored)) {
        return false;
    }
    value = stored;
    return true;
}

bool RegistryKey::ReadBytes(const wchar_t* name, void* data, DWORD cb) const {
    return RegQueryValueExW(m_key.get(), name, nullptr, nullptr, static_cast<BYTE*>(data), &cb) == ERROR_SUCCESS;
}

bool RegistryKey::ReadText(const wchar_t* name, wchar_t* text, DWORD cchText, DWORD cbLimit) const {
    DWORD type = REG_SZ;
    DWORD cb = cbLimit;
    const LONG code = RegQueryValueExW(m_key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text), &cb);
    if (code != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) {
        text[0] = L'\0';
        return false;
    }
    text[std::min(cb / static_cast<DWORD>(sizeof(wchar_t)), cchText - 1)] = L'\0';
    return true;
}

} // namespace clus
