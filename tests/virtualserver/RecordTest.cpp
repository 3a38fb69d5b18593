// The server record, and filling it for the plain server.
#include "HostFixture.h"
#include "RecordText.h"

#include <cstring>

using namespace harness;

namespace {

typedef CClusterVirtualServerInfo Info;

const std::string RecordEnter = "> CVirtualServerUtil::GetNormalServerInfo()";
const std::string RecordLeave = "< CVirtualServerUtil::GetNormalServerInfo()";

TEST(ServerRecord, LayoutIsFixed) {
    Info info;
    const auto at = [&info](const void* member) {
        return static_cast<const char*>(member) - reinterpret_cast<const char*>(&info);
    };
    EXPECT_EQ(at(&info.m_bIsOnline), 0);
    EXPECT_EQ(at(&info.m_nSmtpInstanceCount), 4);
    EXPECT_EQ(at(&info.m_dwSmtpInstanceIds), 8);
    EXPECT_EQ(at(&info.m_wsServerIP), 520);
    EXPECT_EQ(at(&info.m_wsServerName), 1542);
    EXPECT_EQ(at(&info.m_wsDataPath), 2566);
    EXPECT_EQ(at(&info.m_wsServerGUID), 3590);
    EXPECT_EQ(sizeof(info), 4616u);
    EXPECT_EQ(sizeof(info.m_bIsOnline), 1u);
    EXPECT_EQ(sizeof(info.m_dwSmtpInstanceIds), 512u);
    EXPECT_EQ(sizeof(info.m_wsServerIP), 1022u);
    EXPECT_EQ(sizeof(info.m_wsServerName), 1024u);
    EXPECT_EQ(sizeof(info.m_wsDataPath), 1024u);
    EXPECT_EQ(sizeof(info.m_wsServerGUID), 1024u);
}

TEST(ServerRecord, ConstructorEmptiesIt) {
    Guarded<Info> memory;
    new (memory.get()) Info;
    EXPECT_FALSE(memory->m_bIsOnline);
    EXPECT_EQ(memory->m_nSmtpInstanceCount, -1);
    const auto* bytes = reinterpret_cast<const unsigned char*>(memory->m_dwSmtpInstanceIds);
    EXPECT_TRUE(std::all_of(bytes, bytes + 4614 - 8, [](unsigned char byte) { return byte == 0; }));
    EXPECT_TRUE(memory.GuardsIntact());
}

TEST(ServerRecord, RequestHoldsTheNameAsItsSecondMember) {
    CClusterVirtualServerLookupRequest request;
    const auto offset = reinterpret_cast<const char*>(&request.m_wsNameOrIP) - reinterpret_cast<const char*>(&request);
    EXPECT_EQ(offset, 8);
    EXPECT_TRUE(request.m_wsNameOrIP.empty());
}

TEST(ServerRecord, ResultNumbersAreFixed) {
    EXPECT_EQ(static_cast<int>(CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS), 0);
    EXPECT_EQ(static_cast<int>(CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA), 1);
    EXPECT_EQ(static_cast<int>(CVirtualServerUtil::ENUM_VS_RESULT_FAIL), 2);
}

// The plain server

class PlainServerRecord : public HostTest {
protected:
    PlainServerRecord() {
        SetText(L"HomeDir", L"D:\\Product");
        SetText(L"ServerIP", L"10.1.2.3");
        SetText(L"SERVERGUID", L"{guid}");
    }

    // Fills a record of poison bytes, and checks that it stayed in its bounds.
    bool Fill() {
        Forget();
        const bool filled = CVirtualServerUtil::GetNormalServerInfo(*info);
        EXPECT_TRUE(info.GuardsIntact());
        return filled;
    }
    // What is logged from the data root on when there is none.
    std::string EndOfLog(const std::string& dataPath, const std::string& guid) {
        return Lines({"I GetVeritasDiskPath: returns: ", "I Root data path got: ", "I Skip update Root data path.",
                      "I Got Normal Server: NODE-A, " + dataPath + ", " + guid, RecordLeave});
    }

    // The address cannot be read.
    void ExpectLoopback() {
        EXPECT_TRUE(Fill());
        EXPECT_EQ(Text(info->m_wsServerIP), L"127.0.0.1");
        EXPECT_TRUE(TailIsZero(info->m_wsServerIP));
        EXPECT_EQ(TakeLog(), Lines({RecordEnter, "E Cannot get ServerIP, assume 127.0.0.1",
                                    "I Got server guid from registry: {guid}"}) +
                                 EndOfLog("D:\\Product", "{guid}"));
    }

    Guarded<Info> info;
};

TEST_F(PlainServerRecord, RecordHoldsTheRegistrysValuesAndTheComputerName) {
    EXPECT_TRUE(Fill());
    EXPECT_TRUE(info->m_bIsOnline);
    EXPECT_EQ(info->m_nSmtpInstanceCount, -1);
    EXPECT_EQ(Text(info->m_wsServerIP), L"10.1.2.3");
    EXPECT_EQ(Text(info->m_wsServerName), L"NODE-A");
    EXPECT_EQ(Text(info->m_wsDataPath), L"D:\\Product");
    EXPECT_EQ(Text(info->m_wsServerGUID), L"{guid}");
    EXPECT_TRUE(IsPoison(info->m_dwSmtpInstanceIds, sizeof(info->m_dwSmtpInstanceIds)));
    EXPECT_EQ(TakeLog(), Lines({RecordEnter, "I Got server IP from registry: 10.1.2.3",
                                "I Got server guid from registry: {guid}"}) +
                             EndOfLog("D:\\Product", "{guid}"));
}

TEST_F(PlainServerRecord, TextsAreFollowedByZeros) {
    EXPECT_TRUE(Fill());
    EXPECT_TRUE(TailIsZero(info->m_wsServerIP));
    EXPECT_TRUE(TailIsZero(info->m_wsServerName));
    EXPECT_TRUE(TailIsZero(info->m_wsDataPath));
    EXPECT_TRUE(TailIsZero(info->m_wsServerGUID));
}

TEST_F(PlainServerRecord, FullAccessIsAskedForTheProductKeyAndReadAccessForTheDataRoot) {
    EXPECT_TRUE(Fill());
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_ALL_ACCESS));
    EXPECT_EQ(keys[1].access, static_cast<REGSAM>(KEY_READ));
}

TEST_F(PlainServerRecord, KeyIsClosedBeforeTheNameIsAsked) {
    EXPECT_TRUE(Fill());
    const std::string opened = "RegOpenKeyExW(" + ProductKeyText + ")";
    EXPECT_EQ(TakeJournal(), Lines({opened, "RegQueryValueExW(HomeDir)", "RegQueryValueExW(ServerIP)",
                                    "RegQueryValueExW(SERVERGUID)", "RegCloseKey()", "GetComputerNameW()", opened,
                                    "RegQueryValueExW(DataRootPath)=2", "RegCloseKey()"}));
}

TEST_F(PlainServerRecord, TextsAreCutToTheirMembers) {
    SetText(L"HomeDir", std::wstring(1023, L'h'));
    SetText(L"ServerIP", std::wstring(1023, L'i'));
    SetText(L"SERVERGUID", std::wstring(1023, L'g'));
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsServerIP), std::wstring(510, L'i'));
    EXPECT_EQ(Text(info->m_wsDataPath), std::wstring(511, L'h'));
    EXPECT_EQ(Text(info->m_wsServerGUID), std::wstring(511, L'g'));
    EXPECT_EQ(Text(info->m_wsServerName), L"NODE-A");
}

TEST_F(PlainServerRecord, TextsThatJustFitAreWhole) {
    SetText(L"HomeDir", std::wstring(511, L'h'));
    SetText(L"ServerIP", std::wstring(510, L'i'));
    SetText(L"SERVERGUID", std::wstring(511, L'g'));
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsServerIP), std::wstring(510, L'i'));
    EXPECT_EQ(Text(info->m_wsDataPath), std::wstring(511, L'h'));
    EXPECT_EQ(Text(info->m_wsServerGUID), std::wstring(511, L'g'));
}

TEST_F(PlainServerRecord, AbsentHomeDirectoryFailsAndTouchesNothing) {
    Registry().SetNumber(ProductKey, L"HomeDir", 1);
    EXPECT_FALSE(Fill());
    EXPECT_TRUE(info.Untouched());
    EXPECT_EQ(TakeLog(), Lines({RecordEnter, "E Cannot get home directory", RecordLeave}));
    EXPECT_EQ(TakeJournal(),
              Lines({"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(HomeDir)", "RegCloseKey()"}));
}

TEST_F(PlainServerRecord, HomeDirectoryOfMoreThan1023CharactersFails) {
    SetText(L"HomeDir", std::wstring(1024, L'h'));
    EXPECT_FALSE(Fill());
    EXPECT_EQ(TakeLog(), Lines({RecordEnter, "E Cannot get home directory", RecordLeave}));
}

TEST_F(PlainServerRecord, UnreadableIpMeansLoopback) {
    SetNumber(L"ServerIP", 1);
    ExpectLoopback();
}

TEST_F(PlainServerRecord, IpOfMoreThan1023CharactersMeansLoopback) {
    SetText(L"ServerIP", std::wstring(1024, L'i'));
    ExpectLoopback();
}

TEST_F(PlainServerRecord, UnreadableGuidMeansTheNullGuid) {
    const std::string null = "00000000-0000-0000-0000-000000000000";
    SetText(L"SERVERGUID", std::wstring(1024, L'g'));
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Utf8(Text(info->m_wsServerGUID)), null);
    EXPECT_TRUE(TailIsZero(info->m_wsServerGUID));
    EXPECT_EQ(TakeLog(), Lines({RecordEnter, "I Got server IP from registry: 10.1.2.3",
                                "E Cannot get SERVER GUID, assume NULL server guid"}) +
                             EndOfLog("D:\\Product", null));
}

TEST_F(PlainServerRecord, EmptyTextsAreValues) {
    SetText(L"HomeDir", L"");
    SetText(L"ServerIP", L"");
    SetText(L"SERVERGUID", L"");
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsServerIP), L"");
    EXPECT_EQ(Text(info->m_wsDataPath), L"");
    EXPECT_EQ(Text(info->m_wsServerGUID), L"");
}

TEST_F(PlainServerRecord, TextWithoutTerminatorShowsNothingOfTheValueReadBeforeIt) {
    SetText(L"HomeDir", L"D:\\A long home directory");
    SetCharacters(L"ServerIP", REG_SZ, L"10.0.0.1");
    SetCharacters(L"SERVERGUID", REG_EXPAND_SZ, L"{g}");
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsServerIP), L"10.0.0.1");
    EXPECT_EQ(Text(info->m_wsServerGUID), L"{g}");
}

TEST_F(PlainServerRecord, KeyThatCannotBeOpenedLeavesTheRegistrysMembers) {
    Platform().FailCall("RegOpenKeyExW", ERROR_ACCESS_DENIED);
    EXPECT_TRUE([&] {
        new (info.get()) Info;
        wcscpy(info->m_wsServerIP, L"before");
        wcscpy(info->m_wsDataPath, L"path");
        wcscpy(info->m_wsServerGUID, L"guid");
        return Fill();
    }());
    EXPECT_EQ(Text(info->m_wsServerIP), L"before");
    EXPECT_EQ(Text(info->m_wsDataPath), L"path");
    EXPECT_EQ(Text(info->m_wsServerGUID), L"guid");
    EXPECT_EQ(Text(info->m_wsServerName), L"NODE-A");
    EXPECT_TRUE(info->m_bIsOnline);
    EXPECT_EQ(TakeLog(), Lines({RecordEnter}) + EndOfLog("path", "guid"));
}

TEST_F(PlainServerRecord, DataRootTakesTheHomeDirectorysPlace) {
    SetText(L"DataRootPath", L"E:\\Data");
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsDataPath), L"E:\\Data");
    EXPECT_TRUE(TailIsZero(info->m_wsDataPath));
    EXPECT_EQ(TakeLog(),
              Lines({RecordEnter, "I Got server IP from registry: 10.1.2.3", "I Got server guid from registry: {guid}",
                     "I GetVeritasDiskPath: returns: E:\\Data", "I Root data path got: E:\\Data", "I Root data path.",
                     "I Got Normal Server: NODE-A, E:\\Data, {guid}", RecordLeave}));
}

TEST_F(PlainServerRecord, DataRootIsCutTo511Characters) {
    SetText(L"DataRootPath", std::wstring(2000, L'd'));
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsDataPath), std::wstring(511, L'd'));
    EXPECT_EQ(Text(info->m_wsServerGUID), L"{guid}");
}

TEST_F(PlainServerRecord, ComputerNameMayHave15Characters) {
    SetComputerName(L"A-NODE-NAMED-15");
    EXPECT_TRUE(Fill());
    EXPECT_EQ(Text(info->m_wsServerName), L"A-NODE-NAMED-15");
}

TEST_F(PlainServerRecord, LongerComputerNameFails) {
    SetComputerName(L"A-NODE-NAMED-016");
    EXPECT_FALSE(Fill());
    EXPECT_EQ(TakeLog(),
              Lines({RecordEnter, "I Got server IP from registry: 10.1.2.3", "I Got server guid from registry: {guid}",
                     "E CServerPathLocatorBase::Init(), cannot get computer name", RecordLeave}));
    EXPECT_EQ(Text(info->m_wsDataPath), L"D:\\Product");
    EXPECT_TRUE(IsPoison(info->m_wsServerName, sizeof(info->m_wsServerName)));
    EXPECT_TRUE(IsPoison(&info->m_nSmtpInstanceCount, sizeof(int)));
    EXPECT_TRUE(IsPoison(&info->m_bIsOnline, 1));
}

TEST_F(PlainServerRecord, FailingNameQueryFailsWithoutARegistryKeyToo) {
    Platform().FailCall("RegOpenKeyExW", ERROR_FILE_NOT_FOUND);
    Platform().FailCall("GetComputerNameW", ERROR_GEN_FAILURE);
    Forget();
    EXPECT_FALSE(CVirtualServerUtil::GetNormalServerInfo(*info));
    EXPECT_TRUE(info.Untouched());
    EXPECT_EQ(TakeLog(),
              Lines({RecordEnter, "E CServerPathLocatorBase::Init(), cannot get computer name", RecordLeave}));
}

} // namespace
