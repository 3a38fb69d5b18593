// Where the product's registry key comes from: real settings files beside a host executable.
#include "SettingsFixture.h"

using namespace harness;

namespace {

TEST_F(SettingsTest, NoFileMeansTheDefaultKey) {
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened(),
              (std::vector<std::string>{Path(m_configFolder + SettingsFileName), Path(m_folder + SettingsFileName)}));
    EXPECT_EQ(HostPathCalls(), std::vector<DWORD>{260});
}

TEST_F(SettingsTest, FileInTheConfigFolderNamesTheKey) {
    WriteConfig(SettingsEntry);
    WriteBeside("RegKeyProductCurrentVersion\tSOFTWARE\\Beside\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    EXPECT_EQ(Opened(), std::vector<std::string>{Path(m_configFolder + SettingsFileName)});
}

TEST_F(SettingsTest, FileBesideTheExecutableNamesTheKeyWhenThereIsNoOther) {
    WriteBeside(SettingsEntry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    EXPECT_EQ(Opened().size(), 2u);
}

TEST_F(SettingsTest, ConfigFileWithoutTheKeyHidesTheOtherFile) {
    WriteConfig("OtherKey\tx\n");
    WriteBeside(SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened().size(), 1u);
}

TEST_F(SettingsTest, EmptyConfigFileHidesTheOtherFile) {
    WriteConfig("");
    WriteBeside(SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened().size(), 1u);
}

TEST_F(SettingsTest, ConfigFileThatCannotBeOpenedGivesWayToTheOther) {
    WriteConfig("RegKeyProductCurrentVersion\tSOFTWARE\\Hidden\n");
    WriteBeside(SettingsEntry);
    const HANDLE locked =
        CreateFileW((m_configFolder + SettingsFileName).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(locked, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    CloseHandle(locked);
}

TEST_F(SettingsTest, QuotesAroundThePathGo) {
    WriteConfig("RegKeyProductCurrentVersion\t\"SOFTWARE\\Some Product\"\r\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Some Product") << "a CR LF line end reads as LF";
}

TEST_F(SettingsTest, CommentedEntryIsIgnored) {
    WriteConfig(std::string("#") + SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, EntryBehindACommentTakesEffect) {
    WriteConfig(std::string("# product key\r\n") + SettingsEntry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, EntryBehindAnotherEntryHasNoEffect) {
    WriteConfig(std::string("OtherKey\tx\n") + SettingsEntry);
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
    WriteConfig(comment + SettingsEntry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, LineOneCharacterShorterThanAPieceHidesWhatFollows) {
    WriteConfig("#" + std::string(8188, 'x') + "\t" + SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText) << "the second piece lacks the key's first character";
}

TEST_F(SettingsTest, LinesMayTotal10240Characters) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = SettingsEntry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    WriteConfig(first + "#" + std::string(left - 2, 'x') + "\n" + entry);
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, EntryPassingTheTotalIsIgnored) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = SettingsEntry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    WriteConfig(first + "#" + std::string(left - 1, 'x') + "\n" + entry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, FileIsReadOncePerProcess) {
    WriteConfig(SettingsEntry);
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
    WriteConfig(SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened().size(), 2u);
    EXPECT_EQ(HostPathCalls().size(), 1u);
}

TEST_F(SettingsTest, NothingIsLogged) {
    WriteConfig(SettingsEntry);
    Registry().SetNumber(L"SOFTWARE\\Other", L"ClusterQuorumMode", 2);
    EXPECT_EQ(CVirtualServerUtil::GetClusterQuorumModeByRegKey(), 2);
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::GetClusterQuorumModeByRegKey()",
                                "< CVirtualServerUtil::GetClusterQuorumModeByRegKey()"}));
}

TEST_F(SettingsTest, FileIsClosedAfterReading) {
    WriteConfig(SettingsEntry);
    ASSERT_EQ(ProductKey(), "SOFTWARE\\Other");
    EXPECT_TRUE(IsClosed(m_configFolder + SettingsFileName));
}

TEST_F(SettingsTest, FileBesideTheExecutableIsClosedAfterReading) {
    WriteBeside(SettingsEntry);
    ASSERT_EQ(ProductKey(), "SOFTWARE\\Other");
    ASSERT_EQ(Opened().back(), Path(m_folder + SettingsFileName));
    EXPECT_TRUE(IsClosed(m_folder + SettingsFileName));
}

TEST_F(SettingsTest, OpenFileStreamsAreFlushed) {
    WriteConfig(SettingsEntry);
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
    WriteConfig(SettingsEntry);
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
    WriteConfig(SettingsEntry);
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
    WriteBeside(SettingsEntry);
    SetHostPath(L"");
    SetCurrentDirectoryW(m_folder.c_str());
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
    SetCurrentDirectoryW(before);
    EXPECT_EQ(Opened(), std::vector<std::string>{"cfg_ProductRegistry.txt"});
}

TEST_F(SettingsTest, PathCutAt260CharactersIsUsedUpToItsLastBackslash) {
    WriteBeside(SettingsEntry);
    SetHostPath(m_folder + std::wstring(300, L'h') + L"\\host.exe");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, PathOf259CharactersIsNotCut) {
    const std::wstring folder = L"Q:\\" + std::wstring(246, L'f') + L"\\";
    SetHostPath(folder + L"host1.exe");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
    EXPECT_EQ(Opened(), (std::vector<std::string>{Path(folder + L"config\\" + SettingsFileName),
                                                  Path(folder + SettingsFileName)}));
}

} // namespace
