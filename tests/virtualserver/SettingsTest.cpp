// Where the product's registry key comes from: real settings files beside a host executable.
#include "HostFixture.h"

#include <atomic>
#include <thread>

using namespace harness;

namespace {

const wchar_t FileName[] = L"cfg_ProductRegistry.txt";
const char Entry[] = "RegKeyProductCurrentVersion\tSOFTWARE\\Other\n";

class SettingsTest : public HostTest {
protected:
    SettingsTest() {
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        m_folder = temporary + std::wstring(L"clusutil-settings-") + std::to_wstring(GetCurrentProcessId()) + L"\\";
        m_configFolder = m_folder + L"config\\";
        CreateDirectoryW(m_folder.c_str(), nullptr);
        CreateDirectoryW(m_configFolder.c_str(), nullptr);
        SetHostPath(m_folder + L"host.exe");
    }
    ~SettingsTest() override {
        for (const std::wstring& file : m_files) {
            DeleteFileW(file.c_str());
        }
        RemoveDirectoryW(m_configFolder.c_str());
        RemoveDirectoryW(m_folder.c_str());
    }

    void WriteText(const std::wstring& path, const std::string& text) {
        FILE* file = _wfopen(path.c_str(), L"wb");
        ASSERT_NE(file, nullptr) << Utf8(path);
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
        m_files.push_back(path);
    }
    void WriteConfig(const std::string& text) {
        WriteText(m_configFolder + FileName, text);
    }
    void WriteBeside(const std::string& text) {
        WriteText(m_folder + FileName, text);
    }

    // The key that the library now takes for the product's.
    std::string ProductKey() {
        TakeOpenedKeys();
        CVirtualServerUtil::GetClusterQuorumModeByRegKey();
        const std::vector<OpenedKey> keys = TakeOpenedKeys();
        EXPECT_EQ(keys.size(), 1u);
        return keys.empty() ? "none" : keys[0].path;
    }
    // The files that the library tried to open.
    const std::vector<std::string>& Opened() const {
        return m_opened;
    }
    std::string Path(const std::wstring& path) const {
        return Utf8(path);
    }

    std::wstring m_folder;
    std::wstring m_configFolder;

private:
    std::vector<std::wstring> m_files;
    std::vector<std::string> m_opened;
    ImportPatch<FILE*(const wchar_t*, const wchar_t*), struct OpenFileTag> m_openFilePatch{
        FindImports(LibraryModule(), "msvcrt.dll", "_wfopen"), [this](const wchar_t* path, const wchar_t* mode) {
            EXPECT_STREQ(mode, L"r");
            m_opened.push_back(Utf8(path));
            return m_openFilePatch.Next(path, mode);
        }};
};

TEST_F(SettingsTest, NoFileMeansTheDefaultKey) {
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened(), (std::vector<std::string>{Path(m_configFolder + FileName), Path(m_folder + FileName)}));
    EXPECT_EQ(HostPathCalls(), std::vector<DWORD>{260});
}

TEST_F(SettingsTest, FileInTheConfigFolderNamesTheKey) {
    WriteConfig(Entry);
    WriteBeside("RegKeyProductCurrentVersion\tSOFTWARE\\Beside\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    EXPECT_EQ(Opened(), std::vector<std::string>{Path(m_configFolder + FileName)});
}

TEST_F(SettingsTest, FileBesideTheExecutableNamesTheKeyWhenThereIsNoOther) {
    WriteBeside(Entry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    EXPECT_EQ(Opened().size(), 2u);
}

TEST_F(SettingsTest, ConfigFileWithoutTheKeyHidesTheOtherFile) {
    WriteConfig("OtherKey\tx\n");
    WriteBeside(Entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened().size(), 1u);
}

TEST_F(SettingsTest, EmptyConfigFileHidesTheOtherFile) {
    WriteConfig("");
    WriteBeside(Entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened().size(), 1u);
}

TEST_F(SettingsTest, ConfigFileThatCannotBeOpenedGivesWayToTheOther) {
    WriteConfig("RegKeyProductCurrentVersion\tSOFTWARE\\Hidden\n");
    WriteBeside(Entry);
    const HANDLE locked =
        CreateFileW((m_configFolder + FileName).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(locked, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    CloseHandle(locked);
}

TEST_F(SettingsTest, QuotesAroundThePathGo) {
    WriteConfig("RegKeyProductCurrentVersion\t\"SOFTWARE\\Some Product\"\r\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Some Product") << "a CR LF line end reads as LF";
}

TEST_F(SettingsTest, CommentedEntryIsIgnored) {
    WriteConfig(std::string("#") + Entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, EntryBehindACommentTakesEffect) {
    WriteConfig(std::string("# product key\r\n") + Entry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, EntryBehindAnotherEntryHasNoEffect) {
    WriteConfig(std::string("OtherKey\tx\n") + Entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, EmptyValueMeansTheDefaultKey) {
    WriteConfig("RegKeyProductCurrentVersion\t\"\"\n");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, KeyOfAnotherCaseIsAnotherKey) {
    WriteConfig("regkeyproductcurrentversion\tSOFTWARE\\Other\n");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, LongLineIsReadInPiecesOf8191Characters) {
    // The comment's first piece ends where a tab does, so the second piece is an entry.
    const std::string comment = "#" + std::string(8189, 'x') + "\t";
    WriteConfig(comment + Entry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, LineOneCharacterShorterThanAPieceHidesWhatFollows) {
    WriteConfig("#" + std::string(8188, 'x') + "\t" + Entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText) << "the second piece lacks the key's first character";
}

TEST_F(SettingsTest, LinesMayTotal10240Characters) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = Entry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    WriteConfig(first + "#" + std::string(left - 2, 'x') + "\n" + entry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, EntryPassingTheTotalIsIgnored) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = Entry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    WriteConfig(first + "#" + std::string(left - 1, 'x') + "\n" + entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, FileIsReadOncePerProcess) {
    WriteConfig(Entry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    WriteConfig("RegKeyProductCurrentVersion\tSOFTWARE\\Later\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    std::wstring homeDir;
    UtilAccess::GetHomeDir(homeDir);
    CVirtualServerUtil::QueryIISSiteID();
    CVirtualServerUtil::CheckIsClusterByRegKey();
    { const CVirtualServerUtil util; }
    EXPECT_EQ(Opened().size(), 1u);
}

TEST_F(SettingsTest, MissingFileIsLookedForOncePerProcess) {
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    WriteConfig(Entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened().size(), 2u);
    EXPECT_EQ(HostPathCalls().size(), 1u);
}

TEST_F(SettingsTest, NothingIsLogged) {
    WriteConfig(Entry);
    Registry().SetNumber(L"SOFTWARE\\Other", L"ClusterQuorumMode", 2);
    EXPECT_EQ(CVirtualServerUtil::GetClusterQuorumModeByRegKey(), 2);
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::GetClusterQuorumModeByRegKey()",
                                "< CVirtualServerUtil::GetClusterQuorumModeByRegKey()"}));
}

TEST_F(SettingsTest, OpenFileStreamsAreFlushed) {
    WriteConfig(Entry);
    WriteText(m_folder + L"other.txt", "");
    FILE* stream = _wfopen((m_folder + L"other.txt").c_str(), L"wb");
    ASSERT_NE(stream, nullptr);
    std::fputs("text", stream);
    ProductKey();
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    GetFileAttributesExW((m_folder + L"other.txt").c_str(), GetFileExInfoStandard, &attributes);
    EXPECT_EQ(attributes.nFileSizeLow, 4u);
    std::fclose(stream);
}

TEST_F(SettingsTest, EveryMemberButOneUsesTheKeyOfTheFile) {
    WriteConfig(Entry);
    Registry().SetNumber(DefaultKey, L"IsCluster", 1);
    Registry().SetText(DefaultKey, L"HomeDir", L"D:\\Default");
    Registry().SetText(DefaultKey, L"DataRootPath", L"D:\\DefaultData");
    Registry().SetText(L"SOFTWARE\\Other", L"HomeDir", L"D:\\Other");
    Registry().SetText(L"SOFTWARE\\Other", L"DataRootPath", L"D:\\OtherData");
    EXPECT_FALSE(CVirtualServerUtil::CheckIsClusterByRegKey());
    std::wstring homeDir;
    EXPECT_TRUE(UtilAccess::GetHomeDir(homeDir));
    EXPECT_EQ(homeDir, L"D:\\Other");
    CClusterVirtualServerInfo info;
    EXPECT_TRUE(CVirtualServerUtil::GetNormalServerInfo(info));
    CVirtualServerUtil::QueryIISSiteID();
    std::vector<std::string> paths;
    for (const OpenedKey& key : TakeOpenedKeys()) {
        paths.push_back(key.path);
    }
    const std::string other = "SOFTWARE\\Other";
    EXPECT_EQ(paths, (std::vector<std::string>{other, other, other, DefaultKeyText, other}));
    EXPECT_STREQ(info.m_wsDataPath, L"D:\\DefaultData");
}

TEST_F(SettingsTest, DataRootPathIgnoresTheFileAndDoesNotReadIt) {
    WriteConfig(Entry);
    Registry().SetText(L"SOFTWARE\\Other", L"DataRootPath", L"D:\\OtherData");
    Registry().SetText(DefaultKey, L"DataRootPath", L"D:\\Data");
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), L"D:\\Data");
    EXPECT_TRUE(Opened().empty());
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), L"D:\\Data");
}

// Where the executable is

TEST_F(SettingsTest, UnknownExecutableMeansTheBareFileName) {
    SetHostPath(L"");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened(), (std::vector<std::string>{"cfg_ProductRegistry.txt", "cfg_ProductRegistry.txt"}));
}

TEST_F(SettingsTest, PathWithoutBackslashMeansTheBareFileName) {
    SetHostPath(L"C:/folder/host.exe");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened(), (std::vector<std::string>{"cfg_ProductRegistry.txt", "cfg_ProductRegistry.txt"}));
}

TEST_F(SettingsTest, BareFileNameIsInTheCurrentFolder) {
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    WriteBeside(Entry);
    SetHostPath(L"");
    SetCurrentDirectoryW(m_folder.c_str());
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    SetCurrentDirectoryW(before);
    EXPECT_EQ(Opened(), std::vector<std::string>{"cfg_ProductRegistry.txt"});
}

TEST_F(SettingsTest, PathCutAt260CharactersIsUsedUpToItsLastBackslash) {
    WriteBeside(Entry);
    SetHostPath(m_folder + std::wstring(300, L'h') + L"\\host.exe");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, PathOf259CharactersIsNotCut) {
    const std::wstring folder = L"Q:\\" + std::wstring(246, L'f') + L"\\";
    SetHostPath(folder + L"host1.exe");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened(), (std::vector<std::string>{Path(folder + L"config\\" + FileName), Path(folder + FileName)}));
}

// Threads

std::atomic<int> logLines(0);
void CountLogLine(HMODULE, unsigned int, const char*, int, const wchar_t*, ...) {
    ++logLines;
}

TEST(SettingsThreads, FirstCallersReadFileAndRegistryOnce) {
    std::atomic<int> paths(0);
    std::atomic<int> files(0);
    std::atomic<int> keys(0);
    std::atomic<int> waiting(0);
    const ImportEntryPatch log(FindImportsByAddress(LibraryModule(), reinterpret_cast<const void*>(&DBG::DebugLogEx)),
                               reinterpret_cast<void*>(&CountLogLine));
    const auto path = PatchImport(kernel32, GetModuleFileNameW, [&](HMODULE, LPWSTR, DWORD) -> DWORD {
        ++paths;
        ::Sleep(50);
        return 0;
    });
    const ImportPatch<FILE*(const wchar_t*, const wchar_t*), struct ThreadFileTag> file(
        FindImports(LibraryModule(), "msvcrt.dll", "_wfopen"), [&](const wchar_t*, const wchar_t*) -> FILE* {
            ++files;
            return nullptr;
        });
    const auto key = PatchImport(advapi32, RegOpenKeyExW, [&](HKEY, LPCWSTR, DWORD, REGSAM, PHKEY) -> LSTATUS {
        ++keys;
        ::Sleep(50);
        return ERROR_FILE_NOT_FOUND;
    });
    std::vector<std::thread> threads;
    std::atomic<int> clustered(0);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            ++waiting;
            while (waiting < 8) {
                ::Sleep(0);
            }
            clustered += CVirtualServerUtil::CheckIsClusterByRegKey() ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(paths, 1);
    EXPECT_EQ(files, 2);
    EXPECT_EQ(keys, 1);
    EXPECT_EQ(clustered, 0);
    EXPECT_EQ(logLines, 16);
}

} // namespace
