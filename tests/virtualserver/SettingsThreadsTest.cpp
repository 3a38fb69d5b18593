// Several first callers at once: file and registry are read by one of them.
#include "AtOnce.h"
#include "HostFixture.h"
#include "ThreadedRegistry.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

using namespace harness;

namespace {

const int FirstCallers = 30;

// A machine without settings file and product key whose answers take their time; it counts the questions.
class SettingsThreads : public ::testing::Test {
protected:
    LogCounter log;
    std::atomic<int> paths{0};
    std::atomic<int> files{0};
    std::atomic<int> fullAccessKeys{0};
    std::atomic<int> readAccessKeys{0};

private:
    ImportPatch<DWORD(HMODULE, LPWSTR, DWORD), struct ThreadPathTag> m_path{
        FindImports(LibraryModule(), "kernel32.dll", "GetModuleFileNameW"), [this](HMODULE, LPWSTR, DWORD) -> DWORD {
            ++paths;
            ::Sleep(50);
            return 0;
        }};
    ImportPatch<FILE*(const wchar_t*, const wchar_t*), struct ThreadFileTag> m_file{
        FindImports(LibraryModule(), AnyCRuntime, "_wfopen"), [this](const wchar_t*, const wchar_t*) -> FILE* {
            ++files;
            return nullptr;
        }};
    ImportPatch<LSTATUS(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY), struct ThreadKeyTag> m_key{
        FindImports(LibraryModule(), "advapi32.dll", "RegOpenKeyExW"),
        [this](HKEY, LPCWSTR, DWORD, REGSAM access, PHKEY) -> LSTATUS {
            ++(access == KEY_ALL_ACCESS ? fullAccessKeys : readAccessKeys);
            ::Sleep(50);
            return ERROR_FILE_NOT_FOUND;
        }};
};

TEST_F(SettingsThreads, FirstCallersReadFileAndRegistryOnce) {
    std::atomic<int> clustered(0);
    RunAtOnce(std::vector<std::function<void()>>(
        FirstCallers, [&] { clustered += CVirtualServerUtil::CheckIsClusterByRegKey() ? 1 : 0; }));
    EXPECT_EQ(paths, 1);
    EXPECT_EQ(files, 2);
    EXPECT_EQ(fullAccessKeys, 1);
    EXPECT_EQ(readAccessKeys, 0);
    EXPECT_EQ(clustered, 0);
    EXPECT_EQ(log.Count(), 2 * FirstCallers);
}

TEST_F(SettingsThreads, FirstCallersOfDifferentMembersReadTheFileOnce) {
    std::vector<std::function<void()>> callers;
    for (int i = 0; i < 2; ++i) {
        callers.emplace_back([] { CVirtualServerUtil::CheckIsClusterByRegKey(); });
        callers.emplace_back([] { CVirtualServerUtil::GetClusterQuorumModeByRegKey(); });
        callers.emplace_back([] { CVirtualServerUtil::QueryIISSiteID(); });
        callers.emplace_back([] {
            std::wstring homeDir;
            UtilAccess::GetHomeDir(homeDir);
        });
    }
    RunAtOnce(callers);
    EXPECT_EQ(paths, 1);
    EXPECT_EQ(files, 2);
    EXPECT_EQ(fullAccessKeys, 1);
    EXPECT_EQ(readAccessKeys, 6) << "these values are read afresh by each";
}

TEST_F(SettingsThreads, FirstCallersGetTheSameKey) {
    std::vector<std::wstring> keys(FirstCallers);
    std::vector<std::function<void()>> callers;
    for (std::wstring& key : keys) {
        callers.emplace_back([&key] { key = CVirtualServerUtil::GetProductRegistryKey(); });
    }
    RunAtOnce(callers);
    EXPECT_EQ(keys, std::vector<std::wstring>(FirstCallers, ProductKey));
    EXPECT_EQ(paths, 1);
    EXPECT_EQ(files, 2);
}

// A host whose settings file names another key, below which there is something to read. The file takes its time.
class FirstCallersOfAClusterNode : public ::testing::Test {
protected:
    FirstCallersOfAClusterNode() {
        m_registry.SetNumber(OtherKey, L"IsCluster", 1);
        m_registry.SetText(OtherKey, L"HomeDir", L"D:\\Product");
        common::WriteWholeFile(m_file, "RegKeyProductCurrentVersion\tSOFTWARE\\Other\n");
    }

    static constexpr const wchar_t* OtherKey = L"SOFTWARE\\Other";
    std::atomic<int> files{0};

private:
    const common::TemporaryFolder m_folder{L"clusutil-first-callers"};
    const std::wstring m_file = m_folder.File(L"settings.txt");
    LogCounter m_log;
    ThreadedRegistry m_registry;
    ImportPatch<FILE*(const wchar_t*, const wchar_t*), struct FirstCallersFileTag> m_open{
        FindImports(LibraryModule(), AnyCRuntime, "_wfopen"), [this](const wchar_t*, const wchar_t* mode) -> FILE* {
            ++files;
            ::Sleep(50);
            return _wfopen(m_file.c_str(), mode);
        }};
};

TEST_F(FirstCallersOfAClusterNode, AllGetWhatFileAndRegistryTell) {
    std::atomic<int> clustered(0);
    std::vector<std::wstring> keys(FirstCallers), folders(FirstCallers);
    std::vector<std::function<void()>> callers;
    for (int i = 0; i < FirstCallers; ++i) {
        callers.emplace_back([&, i] {
            const auto index = static_cast<std::size_t>(i);
            clustered += CVirtualServerUtil::CheckIsClusterByRegKey() ? 1 : 0;
            keys[index] = CVirtualServerUtil::GetProductRegistryKey();
            UtilAccess::GetHomeDir(folders[index]);
        });
    }
    RunAtOnce(callers);
    EXPECT_EQ(clustered, FirstCallers);
    EXPECT_EQ(keys, std::vector<std::wstring>(FirstCallers, OtherKey));
    EXPECT_EQ(folders, std::vector<std::wstring>(FirstCallers, L"D:\\Product"));
    EXPECT_EQ(files, 1);
}

} // namespace
