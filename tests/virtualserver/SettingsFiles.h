// Real settings files beside a host executable, in a folder of the test's own.
#ifndef SETTINGSFILES_H
#define SETTINGSFILES_H

#include "HostFixture.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

namespace harness {

const wchar_t SettingsFileName[] = L"cfg_ProductRegistry.txt";
const char SettingsEntry[] = "RegKeyProductCurrentVersion\tSOFTWARE\\Other\n";

class SettingsFiles {
public:
    // The library finds them: it runs in this folder.
    explicit SettingsFiles(HostTest& test) : m_test(test) {
        CreateDirectoryW(m_configFolder.c_str(), nullptr);
        test.SetHostPath(m_folder + L"host.exe");
    }
    ~SettingsFiles() {
        for (const std::wstring& file : m_files) {
            DeleteFileW(file.c_str());
        }
    }
    SettingsFiles(const SettingsFiles&) = delete;
    SettingsFiles& operator=(const SettingsFiles&) = delete;

    void WriteText(const std::wstring& path, const std::string& text) {
        common::WriteWholeFile(path, text);
        m_files.push_back(path);
    }
    void WriteConfig(const std::string& text) {
        WriteText(m_configFolder + SettingsFileName, text);
    }
    void WriteBeside(const std::string& text) {
        WriteText(m_folder + SettingsFileName, text);
    }

    // The key that the library now takes for the product's.
    std::string KeyInUse() {
        m_test.TakeOpenedKeys();
        CVirtualServerUtil::GetClusterQuorumModeByRegKey();
        const std::vector<HostTest::OpenedKey> keys = m_test.TakeOpenedKeys();
        EXPECT_EQ(keys.size(), 1u);
        return keys.empty() ? "none" : keys[0].path;
    }
    // The files that the library tried to open.
    const std::vector<std::string>& Opened() const {
        return m_opened;
    }
    // Whether nobody holds the file open: it is not to be had alone otherwise.
    static bool IsClosed(const std::wstring& path) {
        const HANDLE alone =
            CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        return alone != INVALID_HANDLE_VALUE && CloseHandle(alone);
    }

    // Both with a backslash at the end.
    const std::wstring& Folder() const {
        return m_folder;
    }
    const std::wstring& ConfigFolder() const {
        return m_configFolder;
    }

private:
    HostTest& m_test;
    const common::TemporaryFolder m_temporary{L"clusutil-settings"};
    const std::wstring m_folder = m_temporary.File(L"");
    const std::wstring m_configFolder = m_temporary.File(L"config\\");
    std::vector<std::wstring> m_files;
    std::vector<std::string> m_opened;
    ImportPatch<FILE*(const wchar_t*, const wchar_t*), struct OpenFileTag> m_openFilePatch{
        FindImports(LibraryModule(), AnyCRuntime, "_wfopen"), [this](const wchar_t* path, const wchar_t* mode) {
            EXPECT_STREQ(mode, L"r");
            m_opened.push_back(Utf8(path));
            return m_openFilePatch.Next(path, mode);
        }};
};

class SettingsTest : public HostTest {
protected:
    SettingsFiles files{*this};
};

} // namespace harness

#endif
