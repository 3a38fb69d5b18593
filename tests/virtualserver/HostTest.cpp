// The product's settings as the members of CVirtualServerUtil read them, and what an instance starts and stops.
#include "HostFixture.h"

using namespace harness;

namespace {

const std::string CheckEnter = "> CVirtualServerUtil::CheckIsClusterByRegKey()";
const std::string CheckLeave = "< CVirtualServerUtil::CheckIsClusterByRegKey()";

// The journal of reading one value from the default key; `result` as in "=2".
std::string Reads(const std::string& value, const std::string& result = "") {
    return Lines(
        {"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(" + value + ")" + result, "RegCloseKey()"});
}

// IsCluster

class IsClusterSetting : public HostTest {
protected:
    bool Check() {
        return CVirtualServerUtil::CheckIsClusterByRegKey();
    }
};

TEST_F(IsClusterSetting, OneMeansCluster) {
    SetNumber(L"IsCluster", 1);
    EXPECT_TRUE(Check());
    EXPECT_EQ(TakeLog(), Lines({CheckEnter, CheckLeave}));
    EXPECT_EQ(TakeJournal(), Reads("IsCluster"));
}

TEST_F(IsClusterSetting, ZeroMeansPlain) {
    SetNumber(L"IsCluster", 0);
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, TwoMeansPlain) {
    SetNumber(L"IsCluster", 2);
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, AllBitsMeanPlain) {
    SetNumber(L"IsCluster", 0xffffffff);
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, AbsentValueMeansPlain) {
    Registry().CreateKey(ProductKey);
    EXPECT_FALSE(Check());
    EXPECT_EQ(TakeLog(), Lines({CheckEnter, CheckLeave}));
    EXPECT_EQ(TakeJournal(), Reads("IsCluster", "=2"));
}

TEST_F(IsClusterSetting, TextMeansPlain) {
    SetText(L"IsCluster", L"1");
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, BytesMeanPlain) {
    const DWORD one = 1;
    Registry().SetBytes(ProductKey, L"IsCluster", REG_BINARY, &one, sizeof(one));
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, LongerNumberMeansPlain) {
    const unsigned long long one = 1;
    Registry().SetBytes(ProductKey, L"IsCluster", REG_QWORD, &one, sizeof(one));
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, MissingKeyMeansPlainForTheWholeProcess) {
    EXPECT_FALSE(Check());
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")=2"}));
    SetNumber(L"IsCluster", 1);
    EXPECT_FALSE(Check());
    EXPECT_EQ(TakeJournal(), "");
    EXPECT_EQ(TakeLog(), Lines({CheckEnter, CheckLeave, CheckEnter, CheckLeave}));
}

TEST_F(IsClusterSetting, ClusterStaysForTheWholeProcess) {
    SetNumber(L"IsCluster", 1);
    EXPECT_TRUE(Check());
    SetNumber(L"IsCluster", 0);
    Forget();
    EXPECT_TRUE(Check());
    EXPECT_EQ(TakeJournal(), "");
    EXPECT_EQ(TakeLog(), Lines({CheckEnter, CheckLeave}));
}

TEST_F(IsClusterSetting, PlainStaysForTheWholeProcess) {
    SetNumber(L"IsCluster", 0);
    EXPECT_FALSE(Check());
    SetNumber(L"IsCluster", 1);
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, RefusedKeyMeansPlain) {
    SetNumber(L"IsCluster", 1);
    Platform().FailCall("RegOpenKeyExW", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(Check());
    EXPECT_FALSE(Check());
}

TEST_F(IsClusterSetting, FullAccessIsAskedFor) {
    Registry().CreateKey(ProductKey);
    Check();
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].path, ProductKeyText);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_ALL_ACCESS));
}

// ClusterQuorumMode

class QuorumModeSetting : public HostTest {
protected:
    const std::string Name = "CVirtualServerUtil::GetClusterQuorumModeByRegKey()";

    int Mode() {
        return CVirtualServerUtil::GetClusterQuorumModeByRegKey();
    }
    // The mode counts as one that cannot be read.
    void ExpectUnreadable() {
        EXPECT_EQ(Mode(), 0);
        EXPECT_EQ(TakeLog(),
                  Lines({"> " + Name, "W " + Name + ", cannot read key value ClusterQuorumMode!", "< " + Name}));
    }
};

TEST_F(QuorumModeSetting, StoredNumberComesUnchanged) {
    for (const DWORD number : {0u, 1u, 2u, 77u, 0x7fffffffu, 0xffffffffu}) {
        SetNumber(L"ClusterQuorumMode", number);
        EXPECT_EQ(Mode(), static_cast<int>(number));
        EXPECT_EQ(TakeLog(), Lines({"> " + Name, "< " + Name}));
        EXPECT_EQ(TakeJournal(), Reads("ClusterQuorumMode"));
    }
}

TEST_F(QuorumModeSetting, AbsentValueMeansZeroAndAWarning) {
    Registry().CreateKey(ProductKey);
    ExpectUnreadable();
    EXPECT_EQ(TakeJournal(), Reads("ClusterQuorumMode", "=2"));
}

TEST_F(QuorumModeSetting, ValueOfAnotherTypeOrSizeCannotBeRead) {
    const DWORD number[] = {2, 0};
    SetText(L"ClusterQuorumMode", L"2");
    ExpectUnreadable();
    Registry().SetBytes(ProductKey, L"ClusterQuorumMode", REG_BINARY, number, 4);
    ExpectUnreadable();
    Registry().SetBytes(ProductKey, L"ClusterQuorumMode", REG_QWORD, number, 8);
    ExpectUnreadable();
    Registry().SetBytes(ProductKey, L"ClusterQuorumMode", REG_DWORD, number, 2);
    ExpectUnreadable();
}

TEST_F(QuorumModeSetting, MissingKeyMeansZeroAndNoWarning) {
    EXPECT_EQ(Mode(), 0);
    EXPECT_EQ(TakeLog(), Lines({"> " + Name, "< " + Name}));
}

TEST_F(QuorumModeSetting, ReadAccessIsAskedFor) {
    Mode();
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_READ));
}

// DataRootPath

class DataRootSetting : public HostTest {
protected:
    // Reads it, and checks the one log line.
    std::wstring Root() {
        Forget();
        const std::wstring root = CVirtualServerUtil::GetDataRootPath();
        EXPECT_EQ(TakeLog(), Lines({"I GetVeritasDiskPath: returns: " + Utf8(root)}));
        EXPECT_EQ(Platform().OpenKeys(), 0);
        return root;
    }
};

TEST_F(DataRootSetting, StoredTextIsReadAfreshEachTime) {
    SetText(L"DataRootPath", L"E:\\Data");
    EXPECT_EQ(Root(), L"E:\\Data");
    SetText(L"DataRootPath", L"F:\\");
    EXPECT_EQ(Root(), L"F:\\");
}

TEST_F(DataRootSetting, AbsentValueMeansEmpty) {
    Registry().CreateKey(ProductKey);
    EXPECT_EQ(Root(), L"");
}

TEST_F(DataRootSetting, EmptyValueMeansEmpty) {
    SetText(L"DataRootPath", L"");
    EXPECT_EQ(Root(), L"");
    SetCharacters(L"DataRootPath", REG_SZ, L"");
    EXPECT_EQ(Root(), L"");
}

TEST_F(DataRootSetting, MissingKeyIsAWarningWithTheLastError) {
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), L"");
    EXPECT_EQ(TakeLog(),
              Lines({"W Cannot open registry " + ProductKeyText + ", Last err:5", "I GetVeritasDiskPath: returns: "}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")=2"}));
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_READ));
}

TEST_F(DataRootSetting, TextMayHave2047Characters) {
    const std::wstring text(2047, L'd');
    SetText(L"DataRootPath", text);
    EXPECT_EQ(Root(), text);
}

TEST_F(DataRootSetting, LongerTextIsNotRead) {
    SetText(L"DataRootPath", std::wstring(2048, L'd'));
    EXPECT_EQ(Root(), L"");
}

TEST_F(DataRootSetting, TextWithoutTerminatorIsTerminated) {
    SetCharacters(L"DataRootPath", REG_SZ, L"E:\\Data");
    EXPECT_EQ(Root(), L"E:\\Data");
    SetCharacters(L"DataRootPath", REG_SZ, std::wstring(2048, L'd'));
    EXPECT_EQ(Root(), std::wstring(2047, L'd')) << "the last character is forced to zero";
}

TEST_F(DataRootSetting, ExpandableTextCountsAsText) {
    SetCharacters(L"DataRootPath", REG_EXPAND_SZ, std::wstring(L"%windir%\\Data\0", 14));
    EXPECT_EQ(Root(), L"%windir%\\Data");
}

TEST_F(DataRootSetting, OtherTypesAreNoText) {
    SetNumber(L"DataRootPath", 0x00410041);
    EXPECT_EQ(Root(), L"");
    SetCharacters(L"DataRootPath", REG_BINARY, L"E:\\Data");
    EXPECT_EQ(Root(), L"");
}

// HomeDir

class HomeDirSetting : public HostTest {
protected:
    const std::string Name = "CVirtualServerUtil::GetHomeDir()";

    void ExpectText(const std::wstring& expected) {
        Forget();
        std::wstring homeDir = L"before";
        EXPECT_TRUE(UtilAccess::GetHomeDir(homeDir));
        EXPECT_EQ(homeDir, expected);
        EXPECT_EQ(TakeLog(), Lines({"> " + Name, "< " + Name}));
        EXPECT_EQ(TakeJournal(), Reads("HomeDir"));
    }
    void ExpectUnreadable() {
        Forget();
        std::wstring homeDir = L"before";
        EXPECT_FALSE(UtilAccess::GetHomeDir(homeDir));
        EXPECT_EQ(homeDir, L"before");
        EXPECT_EQ(TakeLog(), Lines({"> " + Name, "E Cannot get home directory", "< " + Name}));
    }
};

TEST_F(HomeDirSetting, StoredTextIsReadAfreshEachTime) {
    SetText(L"HomeDir", L"D:\\Product");
    ExpectText(L"D:\\Product");
    SetText(L"HomeDir", L"");
    ExpectText(L"");
}

TEST_F(HomeDirSetting, TextMayHave1023Characters) {
    SetText(L"HomeDir", std::wstring(1023, L'h'));
    ExpectText(std::wstring(1023, L'h'));
}

TEST_F(HomeDirSetting, LongerTextCannotBeRead) {
    SetText(L"HomeDir", std::wstring(1024, L'h'));
    ExpectUnreadable();
    SetText(L"HomeDir", std::wstring(2048, L'h'));
    ExpectUnreadable();
}

TEST_F(HomeDirSetting, TextWithoutTerminatorIsTerminated) {
    SetCharacters(L"HomeDir", REG_SZ, L"D:\\Product");
    ExpectText(L"D:\\Product");
    SetCharacters(L"HomeDir", REG_SZ, std::wstring(1023, L'h'));
    ExpectText(std::wstring(1023, L'h'));
    SetCharacters(L"HomeDir", REG_SZ, std::wstring(1024, L'h'));
    ExpectText(std::wstring(1024, L'h')); // as many bytes as may be filled
    SetCharacters(L"HomeDir", REG_SZ, std::wstring(1025, L'h'));
    ExpectUnreadable();
}

TEST_F(HomeDirSetting, ExpandableTextCountsAsText) {
    SetCharacters(L"HomeDir", REG_EXPAND_SZ, L"%windir%");
    ExpectText(L"%windir%");
}

TEST_F(HomeDirSetting, OtherTypesCannotBeRead) {
    SetNumber(L"HomeDir", 0x00410041);
    ExpectUnreadable();
    SetCharacters(L"HomeDir", REG_BINARY, L"D:\\Product");
    ExpectUnreadable();
    SetCharacters(L"HomeDir", REG_MULTI_SZ, std::wstring(L"D:\\Product\0\0", 12));
    ExpectUnreadable();
}

TEST_F(HomeDirSetting, AbsentValueCannotBeRead) {
    Registry().CreateKey(ProductKey);
    ExpectUnreadable();
    EXPECT_EQ(TakeJournal(), Reads("HomeDir", "=2"));
}

TEST_F(HomeDirSetting, MissingKeyFailsWithoutALogLine) {
    std::wstring homeDir = L"before";
    EXPECT_FALSE(UtilAccess::GetHomeDir(homeDir));
    EXPECT_EQ(homeDir, L"before");
    EXPECT_EQ(TakeLog(), Lines({"> " + Name, "< " + Name}));
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_READ));
}

// The data folder of a virtual server

std::wstring CcrPath(const wchar_t* dataRoot, const wchar_t* serverName) {
    std::wstring path = L"before";
    CVirtualServerUtil::ConcatCCRDataPath(dataRoot, serverName, path);
    return path;
}

using ReplicationDataPath = HostTest;

TEST_F(ReplicationDataPath, PartsAreJoinedWithOneBackslash) {
    EXPECT_EQ(CcrPath(L"E:\\Data", L"EVS1"), L"E:\\Data\\CCRVSDB\\EVS1");
    EXPECT_EQ(CcrPath(L"E:\\Data\\", L"EVS1"), L"E:\\Data\\CCRVSDB\\EVS1");
    EXPECT_EQ(CcrPath(L"E:\\Data", L"\\EVS1"), L"E:\\Data\\CCRVSDB\\EVS1");
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ReplicationDataPath, NullCountsAsEmpty) {
    EXPECT_EQ(CcrPath(nullptr, L"EVS1"), CcrPath(L"", L"EVS1"));
    EXPECT_EQ(CcrPath(L"E:\\Data", nullptr), CcrPath(L"E:\\Data", L""));
    EXPECT_EQ(CcrPath(nullptr, nullptr), CcrPath(L"", L""));
    EXPECT_NE(CcrPath(nullptr, nullptr).find(L"CCRVSDB"), std::wstring::npos);
}

TEST_F(ReplicationDataPath, OutputMayBeAnInput) {
    std::wstring path = L"E:\\Data";
    CVirtualServerUtil::ConcatCCRDataPath(path.c_str(), L"EVS1", path);
    EXPECT_EQ(path, L"E:\\Data\\CCRVSDB\\EVS1");
}

} // namespace
