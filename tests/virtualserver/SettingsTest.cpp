// Where the product's registry key comes from: real settings files beside a host executable.
#include "SettingsFiles.h"

using namespace harness;

namespace {

using ProductKeyFile = SettingsTest;

TEST_F(ProductKeyFile, NoFileMeansTheDefaultKey) {
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened(), (std::vector<std::string>{Utf8(files.ConfigFolder() + SettingsFileName),
                                                        Utf8(files.Folder() + SettingsFileName)}));
    EXPECT_EQ(HostPathCalls(), std::vector<DWORD>{260});
}

TEST_F(ProductKeyFile, FileInTheConfigFolderNamesTheKey) {
    files.WriteConfig(SettingsEntry);
    files.WriteBeside("RegKeyProductCurrentVersion\tSOFTWARE\\Beside\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    EXPECT_EQ(files.Opened(), std::vector<std::string>{Utf8(files.ConfigFolder() + SettingsFileName)});
}

TEST_F(ProductKeyFile, FileBesideTheExecutableNamesTheKeyWhenThereIsNoOther) {
    files.WriteBeside(SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    EXPECT_EQ(files.Opened().size(), 2u);
}

TEST_F(ProductKeyFile, ConfigFileWithoutTheKeyHidesTheOtherFile) {
    files.WriteConfig("OtherKey\tx\n");
    files.WriteBeside(SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened().size(), 1u);
}

TEST_F(ProductKeyFile, EmptyConfigFileHidesTheOtherFile) {
    files.WriteConfig("");
    files.WriteBeside(SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened().size(), 1u);
}

TEST_F(ProductKeyFile, ConfigFileThatCannotBeOpenedGivesWayToTheOther) {
    files.WriteConfig("RegKeyProductCurrentVersion\tSOFTWARE\\Hidden\n");
    files.WriteBeside(SettingsEntry);
    const HANDLE locked = CreateFileW((files.ConfigFolder() + SettingsFileName).c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(locked, INVALID_HANDLE_VALUE);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    CloseHandle(locked);
}

TEST_F(ProductKeyFile, QuotesAroundThePathGo) {
    files.WriteConfig("RegKeyProductCurrentVersion\t\"SOFTWARE\\Some Product\"\r\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Some Product") << "a CR LF line end reads as LF";
}

TEST_F(ProductKeyFile, CommentedEntryIsIgnored) {
    files.WriteConfig(std::string("#") + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, EntryBehindACommentTakesEffect) {
    files.WriteConfig(std::string("# product key\r\n") + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, EntryBehindAnotherEntryHasNoEffect) {
    files.WriteConfig(std::string("OtherKey\tx\n") + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, EmptyValueMeansTheDefaultKey) {
    files.WriteConfig("RegKeyProductCurrentVersion\t\"\"\n");
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, KeyOfAnotherCaseIsAnotherKey) {
    files.WriteConfig("regkeyproductcurrentversion\tSOFTWARE\\Other\n");
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, LongLineIsReadInPiecesOf8191Characters) {
    // The comment's first piece ends where a tab does, so the second piece is an entry.
    const std::string comment = "#" + std::string(8189, 'x') + "\t";
    files.WriteConfig(comment + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, LineOneCharacterShorterThanAPieceHidesWhatFollows) {
    files.WriteConfig("#" + std::string(8188, 'x') + "\t" + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText) << "the second piece lacks the key's first character";
}

TEST_F(ProductKeyFile, LinesMayTotal10240Characters) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = SettingsEntry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    files.WriteConfig(first + "#" + std::string(left - 2, 'x') + "\n" + entry);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, EachLineCountsOneCharacterMore) {
    std::string comments;
    for (int i = 0; i < 3000; ++i) {
        comments += "#\n";
    }
    files.WriteConfig(comments + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, EntryPassingTheTotalIsIgnored) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = SettingsEntry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    files.WriteConfig(first + "#" + std::string(left - 1, 'x') + "\n" + entry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, FileIsClosedBeforeTheStreamsAreFlushed) {
    files.WriteConfig(SettingsEntry);
    bool wasClosed = false;
    const ImportPatch<int(), struct FlushTag> flush(FindImports(LibraryModule(), AnyCRuntime, "_flushall"), [&] {
        wasClosed = SettingsFiles::IsClosed(files.ConfigFolder() + SettingsFileName);
        return 0;
    });
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    EXPECT_TRUE(wasClosed);
}

TEST_F(ProductKeyFile, FileIsReadOncePerProcess) {
    files.WriteConfig(SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    files.WriteConfig("RegKeyProductCurrentVersion\tSOFTWARE\\Later\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    std::wstring homeDir;
    UtilAccess::GetHomeDir(homeDir);
    CVirtualServerUtil::QueryIISSiteID();
    CVirtualServerUtil::CheckIsClusterByRegKey();
    { const CVirtualServerUtil util; }
    EXPECT_EQ(files.Opened().size(), 1u);
}

TEST_F(ProductKeyFile, MissingFileIsLookedForOncePerProcess) {
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    files.WriteConfig(SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened().size(), 2u);
    EXPECT_EQ(HostPathCalls().size(), 1u);
}

TEST_F(ProductKeyFile, NothingIsLogged) {
    files.WriteConfig(SettingsEntry);
    Registry().SetNumber(L"SOFTWARE\\Other", L"ClusterQuorumMode", 2);
    EXPECT_EQ(CVirtualServerUtil::GetClusterQuorumModeByRegKey(), 2);
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::GetClusterQuorumModeByRegKey()",
                                "< CVirtualServerUtil::GetClusterQuorumModeByRegKey()"}));
}

TEST_F(ProductKeyFile, FileIsClosedAfterReading) {
    files.WriteConfig(SettingsEntry);
    ASSERT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    EXPECT_TRUE(files.IsClosed(files.ConfigFolder() + SettingsFileName));
}

TEST_F(ProductKeyFile, FileBesideTheExecutableIsClosedAfterReading) {
    files.WriteBeside(SettingsEntry);
    ASSERT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    ASSERT_EQ(files.Opened().back(), Utf8(files.Folder() + SettingsFileName));
    EXPECT_TRUE(files.IsClosed(files.Folder() + SettingsFileName));
}

TEST_F(ProductKeyFile, OpenFileStreamsAreFlushed) {
    files.WriteConfig(SettingsEntry);
    files.WriteText(files.Folder() + L"other.txt", "");
    FILE* stream = _wfopen((files.Folder() + L"other.txt").c_str(), L"wb");
    ASSERT_NE(stream, nullptr);
    std::fputs("text", stream);
    files.KeyInUse();
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    GetFileAttributesExW((files.Folder() + L"other.txt").c_str(), GetFileExInfoStandard, &attributes);
    EXPECT_EQ(attributes.nFileSizeLow, 4u);
    std::fclose(stream);
}

TEST_F(ProductKeyFile, EveryMemberButOneUsesTheKeyOfTheFile) {
    files.WriteConfig(SettingsEntry);
    Registry().SetNumber(ProductKey, L"IsCluster", 1);
    Registry().SetText(ProductKey, L"HomeDir", L"D:\\Default");
    Registry().SetText(ProductKey, L"DataRootPath", L"D:\\DefaultData");
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
    EXPECT_EQ(paths, (std::vector<std::string>{other, other, other, ProductKeyText, other}));
    EXPECT_STREQ(info.m_wsDataPath, L"D:\\DefaultData");
}

TEST_F(ProductKeyFile, DataRootPathIgnoresTheFileAndDoesNotReadIt) {
    files.WriteConfig(SettingsEntry);
    Registry().SetText(L"SOFTWARE\\Other", L"DataRootPath", L"D:\\OtherData");
    Registry().SetText(ProductKey, L"DataRootPath", L"D:\\Data");
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), L"D:\\Data");
    EXPECT_TRUE(files.Opened().empty());
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), L"D:\\Data");
}

// Where the executable is

TEST_F(ProductKeyFile, UnknownExecutableMeansTheBareFileName) {
    SetHostPath(L"");
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened(), (std::vector<std::string>{"cfg_ProductRegistry.txt", "cfg_ProductRegistry.txt"}));
}

TEST_F(ProductKeyFile, PathWithoutBackslashMeansTheBareFileName) {
    SetHostPath(L"C:/folder/host.exe");
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened(), (std::vector<std::string>{"cfg_ProductRegistry.txt", "cfg_ProductRegistry.txt"}));
}

TEST_F(ProductKeyFile, BareFileNameIsInTheCurrentFolder) {
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    files.WriteBeside(SettingsEntry);
    SetHostPath(L"");
    SetCurrentDirectoryW(files.Folder().c_str());
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
    SetCurrentDirectoryW(before);
    EXPECT_EQ(files.Opened(), std::vector<std::string>{"cfg_ProductRegistry.txt"});
}

TEST_F(ProductKeyFile, PathCutAt260CharactersIsUsedUpToItsLastBackslash) {
    files.WriteBeside(SettingsEntry);
    SetHostPath(files.Folder() + std::wstring(300, L'h') + L"\\host.exe");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, PathOf259CharactersIsNotCut) {
    const std::wstring folder = L"Q:\\" + std::wstring(246, L'f') + L"\\";
    SetHostPath(folder + L"host1.exe");
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
    EXPECT_EQ(files.Opened(), (std::vector<std::string>{Utf8(folder + L"config\\" + SettingsFileName),
                                                        Utf8(folder + SettingsFileName)}));
}

} // namespace
