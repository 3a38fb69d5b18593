// What constructing and destroying instances does, and in which order.
#include "HostFixture.h"

#include <memory>
#include <new>

using namespace harness;

namespace {

class UtilInstance : public HostTest {
protected:
    const std::vector<std::string> ClusteredConstructor = {
        "> CVirtualServerUtil::CVirtualServerUtil()", "> CVirtualServerUtil::CheckIsClusterByRegKey()",
        "< CVirtualServerUtil::CheckIsClusterByRegKey()", "< CVirtualServerUtil::CVirtualServerUtil()"};
    const std::vector<std::string> Destructor = {"> CVirtualServerUtil::~CVirtualServerUtil()",
                                                 "< CVirtualServerUtil::~CVirtualServerUtil()"};
    const std::string Opened = "RegOpenKeyExW(" + ProductKeyText + ")";
};

TEST_F(UtilInstance, ClusteredConstructorReadsIsClusterOnly) {
    SetNumber(L"IsCluster", 1);
    auto util = std::make_unique<CVirtualServerUtil>();
    EXPECT_EQ(TakeLog(), Lines(ClusteredConstructor));
    EXPECT_EQ(TakeJournal(), Lines({"WSAStartup()", Opened, "RegQueryValueExW(IsCluster)", "RegCloseKey()"}));
    util.reset();
    EXPECT_EQ(TakeLog(), Lines(Destructor));
    EXPECT_EQ(TakeJournal(), Lines({"WSACleanup()"}));
}

TEST_F(UtilInstance, StopsWindowsSocketsThatDidNotStart) {
    SetNumber(L"IsCluster", 1);
    Platform().FailCall("WSAStartup", WSASYSNOTREADY);
    auto util = std::make_unique<CVirtualServerUtil>();
    EXPECT_EQ(TakeJournal(), Lines({"WSAStartup()=10091", Opened, "RegQueryValueExW(IsCluster)", "RegCloseKey()"}));
    util.reset();
    EXPECT_EQ(TakeJournal(), Lines({"WSACleanup()=10093"})) << "it was started all the same";
    EXPECT_EQ(TakeLog(), Lines(ClusteredConstructor) + Lines(Destructor));
}

TEST_F(UtilInstance, PlainConstructorFillsItsRecord) {
    SetNumber(L"IsCluster", 0);
    SetText(L"HomeDir", L"D:\\Product");
    SetText(L"ServerIP", L"10.1.2.3");
    SetText(L"SERVERGUID", L"{guid}");
    auto util = std::make_unique<CVirtualServerUtil>();
    EXPECT_EQ(TakeLog(),
              Lines({"> CVirtualServerUtil::CVirtualServerUtil()", "> CVirtualServerUtil::CheckIsClusterByRegKey()",
                     "< CVirtualServerUtil::CheckIsClusterByRegKey()", "> CVirtualServerUtil::GetNormalServerInfo()",
                     "I Got server IP from registry: 10.1.2.3", "I Got server guid from registry: {guid}",
                     "I GetVeritasDiskPath: returns: ", "I Root data path got: ", "I Skip update Root data path.",
                     "I Got Normal Server: NODE-A, D:\\Product, {guid}", "< CVirtualServerUtil::GetNormalServerInfo()",
                     "< CVirtualServerUtil::CVirtualServerUtil()"}));
    EXPECT_EQ(TakeJournal(), Lines({"WSAStartup()", Opened, "RegQueryValueExW(IsCluster)", "RegCloseKey()", Opened,
                                    "RegQueryValueExW(HomeDir)", "RegQueryValueExW(ServerIP)",
                                    "RegQueryValueExW(SERVERGUID)", "RegCloseKey()", "GetComputerNameW()", Opened,
                                    "RegQueryValueExW(DataRootPath)=2", "RegCloseKey()"}));

    CClusterVirtualServerInfo info;
    int count = 1;
    EXPECT_EQ(util->EnumServersOnCurrentNode(&info, &count), CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(info.m_bIsOnline);
    EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
    EXPECT_STREQ(info.m_wsServerName, L"NODE-A");
    EXPECT_STREQ(info.m_wsServerIP, L"10.1.2.3");
    EXPECT_STREQ(info.m_wsDataPath, L"D:\\Product");
    EXPECT_STREQ(info.m_wsServerGUID, L"{guid}");
    Forget();
    util.reset();
    EXPECT_EQ(TakeLog(), Lines(Destructor));
    EXPECT_EQ(TakeJournal(), Lines({"WSACleanup()"}));
}

TEST_F(UtilInstance, PlainConstructorWithoutAHomeDirectoryLeavesItsRecordEmpty) {
    SetNumber(L"IsCluster", 0);
    SetText(L"ServerIP", L"10.1.2.3");
    SetText(L"SERVERGUID", L"{guid}");
    SetText(L"DataRootPath", L"E:\\Data");
    CVirtualServerUtil util;
    EXPECT_EQ(TakeLog(),
              Lines({"> CVirtualServerUtil::CVirtualServerUtil()", "> CVirtualServerUtil::CheckIsClusterByRegKey()",
                     "< CVirtualServerUtil::CheckIsClusterByRegKey()", "> CVirtualServerUtil::GetNormalServerInfo()",
                     "E Cannot get home directory", "< CVirtualServerUtil::GetNormalServerInfo()",
                     "< CVirtualServerUtil::CVirtualServerUtil()"}));

    Guarded<CClusterVirtualServerInfo> info;
    int count = 1;
    ASSERT_EQ(util.EnumServersOnCurrentNode(info.get(), &count), CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(info->m_bIsOnline);
    EXPECT_EQ(info->m_nSmtpInstanceCount, -1);
    EXPECT_STREQ(info->m_wsServerIP, L"");
    EXPECT_STREQ(info->m_wsServerName, L"");
    EXPECT_STREQ(info->m_wsDataPath, L"");
    EXPECT_STREQ(info->m_wsServerGUID, L"");
}

TEST_F(UtilInstance, SecondInstanceReadsIsClusterNoMore) {
    SetNumber(L"IsCluster", 1);
    const CVirtualServerUtil first;
    Forget();
    const CVirtualServerUtil second;
    EXPECT_EQ(TakeLog(), Lines(ClusteredConstructor));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(UtilInstance, SecondPlainInstanceReadsItsRecordAfresh) {
    SetText(L"HomeDir", L"D:\\First");
    CVirtualServerUtil first;
    SetText(L"HomeDir", L"D:\\Second");
    CVirtualServerUtil second;
    CClusterVirtualServerInfo info;
    int count = 1;
    EXPECT_EQ(first.EnumServersOnCurrentNode(&info, &count), CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS);
    EXPECT_STREQ(info.m_wsDataPath, L"D:\\First");
    EXPECT_EQ(second.EnumServersOnCurrentNode(&info, &count), CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS);
    EXPECT_STREQ(info.m_wsDataPath, L"D:\\Second");
}

TEST_F(UtilInstance, FirstInstanceStartsWinsockAndTheLastOneStopsIt) {
    SetNumber(L"IsCluster", 1);
    auto first = std::make_unique<CVirtualServerUtil>();
    EXPECT_EQ(Platform().WinsockStarts(), 1);
    Forget();
    auto second = std::make_unique<CVirtualServerUtil>();
    auto third = std::make_unique<CVirtualServerUtil>();
    first.reset();
    third.reset();
    EXPECT_EQ(TakeJournal(), "");
    second.reset();
    EXPECT_EQ(TakeJournal(), Lines({"WSACleanup()"}));
    auto fourth = std::make_unique<CVirtualServerUtil>();
    EXPECT_EQ(TakeJournal(), Lines({"WSAStartup()"}));
    fourth.reset();
    EXPECT_EQ(TakeJournal(), Lines({"WSACleanup()"}));
}

TEST_F(UtilInstance, AConstructorWithoutMemoryStopsWinsockAgain) {
    SetNumber(L"IsCluster", 1);
    Heap().FailAllocation(1, FaultMode::Once); // of the first reading of the settings
    Heap().StartOperation();
    EXPECT_THROW(CVirtualServerUtil(), std::bad_alloc);
    Heap().EndOperation();
    EXPECT_TRUE(Heap().Fired());
    Heap().FailAllocation(0, FaultMode::Once);
    EXPECT_EQ(TakeJournal(), Lines({"WSAStartup()", "WSACleanup()"}));
    EXPECT_EQ(Platform().WinsockStarts(), 0);
    { const CVirtualServerUtil util; }
    EXPECT_EQ(TakeJournal(),
              Lines({"WSAStartup()", Opened, "RegQueryValueExW(IsCluster)", "RegCloseKey()", "WSACleanup()"}));
}

TEST_F(UtilInstance, WinsockIsAskedForVersion22) {
    WORD asked = 0;
    const ImportPatch<int(WORD, LPWSADATA), struct VersionTag> start(
        FindImports(LibraryModule(), "ws2_32.dll", "WSAStartup"), [&](WORD version, LPWSADATA data) {
            asked = version;
            return start.Next(version, data);
        });
    { const CVirtualServerUtil util; }
    EXPECT_EQ(asked, 0x0202);
}

TEST_F(UtilInstance, FailedWinsockStartIsNotNoticed) {
    SetNumber(L"IsCluster", 1);
    int stops = 0;
    const auto start = PatchImport(ws2_32, WSAStartup, [](WORD, LPWSADATA) -> int { return WSASYSNOTREADY; });
    const auto stop = PatchImport(ws2_32, WSACleanup, [&]() -> int {
        ++stops;
        return SOCKET_ERROR;
    });
    { const CVirtualServerUtil util; }
    EXPECT_EQ(TakeLog(), Lines(ClusteredConstructor) + Lines(Destructor));
    EXPECT_EQ(stops, 1);
}

} // namespace
