#include "settings/ProductSettings.h"

#include "core/SettingsFile.h"
#include "platform/CriticalSection.h"
#include "platform/Log.h"
#include "platform/RegistryKey.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>

CLUS_LOG_PLACE(VirtualServerUtil, 1);

namespace clus {

const wchar_t DefaultProductRegistryKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

namespace {

const wchar_t SettingsFileName[] = L"cfg_ProductRegistry.txt";
const wchar_t SettingsKeyName[] = L"RegKeyProductCurrentVersion";

const DWORD DataRootCharacters = 2048;

// Around the values that are read once per process.
CriticalSection SettingsLock;

std::wstring KeyInForce(DefaultProductRegistryKey);
std::atomic<bool> IsKeyInForceKnown(false);
std::atomic<bool> IsCluster(false);
std::atomic<bool> IsClusterKnown(false);

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

const std::wstring& ProductRegistryKey() {
    if (!IsKeyInForceKnown) {
        const CriticalSectionGuard guard(SettingsLock);
        if (!IsKeyInForceKnown) {
            KeyInForce = ProductRegistryKeyFromFile();
            IsKeyInForceKnown = true;
        }
    }
    return KeyInForce;
}

bool IsClusterDeployment() {
    if (!IsClusterKnown) {
        const CriticalSectionGuard guard(SettingsLock);
        if (!IsClusterKnown) {
            DWORD value = 0;
            const RegistryKey key(ProductRegistryKey().c_str(), KEY_ALL_ACCESS);
            if (key) {
                key.ReadDword(L"IsCluster", value);
            }
            IsCluster = value == 1;
            IsClusterKnown = true;
        }
    }
    return IsCluster;
}

std::wstring DataRootPath() {
    wchar_t text[DataRootCharacters] = {};
    {
        const RegistryKey key(DefaultProductRegistryKey, KEY_READ);
        if (key) {
            key.ReadText(L"DataRootPath", text, DataRootCharacters, sizeof(text));
        } else {
            LOG_WARNING(L"Cannot open registry %s, Last err:%d", DefaultProductRegistryKey, GetLastError());
        }
    }
    LOG_INFO(L"GetVeritasDiskPath: returns: %s", text);
    return text;
}

} // namespace clus
