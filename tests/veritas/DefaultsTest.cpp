// What no caller of the class gets to see: default attribute lists, the result of a wait, and what earlier content of
// an output becomes.
#include "PrivateMember.h"
#include "ServiceStandIn.h"
#include "VeritasTest.h"

#include "common/Files.h"

using namespace harness;

namespace {

PRIVATE_MEMBER(RegRepDefaults, &CVeritasCluster::MakeDefaultCreateRegRepResoruceParams, void(NameValuePairList&));
PRIVATE_MEMBER(ServiceDefaults, &CVeritasCluster::MakeDefaultCreateGenericServiceResoruceParams,
               void(NameValuePairList&));
PRIVATE_MEMBER(WaitForService, &CVeritasCluster::WaitForServiceToStart, bool(const wchar_t*, int));
PRIVATE_MEMBER(Parse, &CVeritasCluster::Parse_, bool(const std::wstring&, std::vector<std::wstring>&));
PRIVATE_MEMBER(Read, &CVeritasCluster::Read_, bool(const wchar_t*, std::wstring&));
PRIVATE_MEMBER(Dump, &CVeritasCluster::DumpResult_, void(const wchar_t*));
PRIVATE_MEMBER(ExecuteForText, &CVeritasCluster::ExecuteVeritasCommand_,
               bool(const wchar_t*, const wchar_t*, std::wstring&, bool));
PRIVATE_MEMBER(ExecuteForTokens, &CVeritasCluster::ExecuteVeritasCommand_,
               bool(const wchar_t*, const wchar_t*, std::vector<std::wstring>*, bool));

class VeritasDefaults : public VeritasTest {
protected:
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasDefaults, OfARegistryReplicationReplaceWhatTheListHeld) {
    NameValuePairList params = {{L"old", L"1"}, {L"older", L"2"}};
    (cluster.*Private(RegRepDefaults()))(params);
    EXPECT_EQ(params, (NameValuePairList{
                          {L"MountResName", L""},
                          {L"ReplicationDirectory", L""},
                          {L"Keys", L"\"HKLM\\SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion\" \"\""},
                          {L"RestoreLocally", L"1"},
                          {L"Critical", L"0"},
                          {L"Enabled", L"1"},
                      }));
}

TEST_F(VeritasDefaults, OfAServiceReplaceWhatTheListHeld) {
    NameValuePairList params = {{L"old", L"1"}, {L"older", L"2"}};
    (cluster.*Private(ServiceDefaults()))(params);
    EXPECT_EQ(params, (NameValuePairList{
                          {L"DelayAfterOnline", L"600"},
                          {L"DelayAfterOffline", L"600"},
                          {L"UserAccount", L"LocalSystem"},
                          {L"Password", L"\"\""},
                          {L"Domain", L"\"NT Authority\""},
                          {L"LanmanResName", L"\"\""},
                          {L"UseVirtualName", L"1"},
                          {L"ServiceName", L"\"\""},
                          {L"Critical", L"0"},
                          {L"Enabled", L"1"},
                      }));
}

TEST_F(VeritasDefaults, AWaitSaysWhetherTheServiceRuns) {
    const auto wait = [this](int timeout) { return (cluster.*Private(WaitForService()))(L"Svc", timeout); };
    EXPECT_TRUE(wait(1));
    service.state = [](unsigned) { return SERVICE_STOPPED; };
    EXPECT_FALSE(wait(1));
    EXPECT_TRUE(wait(0));
    EXPECT_TRUE(wait(-1));
    service.state = [](unsigned look) -> DWORD { return look == 3 ? SERVICE_RUNNING : SERVICE_START_PENDING; };
    EXPECT_FALSE(wait(1999));
    EXPECT_TRUE(wait(2000));
    service.state = [](unsigned) -> DWORD { throw OS::CException(ERROR_ACCESS_DENIED); };
    EXPECT_FALSE(wait(1));
    service.openError = ERROR_SERVICE_DOES_NOT_EXIST;
    EXPECT_FALSE(wait(1));
    EXPECT_TRUE(wait(0));
}

TEST_F(VeritasDefaults, EveryRunAppendsToItsOutput) {
    tools.AnswerPrefix(L"hares ", "A  NODE1\r\nB\r\n");
    std::wstring text = L"before ";
    EXPECT_TRUE((cluster.*Private(ExecuteForText()))(L"hares", L"-x", text, true));
    EXPECT_EQ(text, L"before A  NODE1\nB\n");

    std::vector<std::wstring> tokens = {L"before"};
    EXPECT_TRUE((cluster.*Private(ExecuteForTokens()))(L"hares", L"-x", &tokens, true));
    EXPECT_EQ(tokens, (Names{L"before", L"A", L"NODE1", L"B"}));
    EXPECT_TRUE((cluster.*Private(ExecuteForTokens()))(L"hares", L"-x", nullptr, true));

    EXPECT_TRUE((cluster.*Private(Parse()))(L" \n", tokens));
    EXPECT_TRUE((cluster.*Private(Parse()))(L"C", tokens));
    EXPECT_EQ(tokens, (Names{L"before", L"A", L"NODE1", L"B", L"C"}));
    EXPECT_FALSE((cluster.*Private(Read()))(L".\\none", text));
    EXPECT_EQ(text, L"before A  NODE1\nB\n");
}

TEST_F(VeritasDefaults, ADumpLogsEachLineOfAnOutput) {
    common::WriteWholeFile(L"output", "A  NODE1\r\n\r\nB");
    Forget();
    (cluster.*Private(Dump()))(L"output");
    EXPECT_EQ(TakeLog(), Lines({"I Result: A  NODE1", "I Result: ", "I Result: B"}));
    EXPECT_TRUE(DeleteFileW(L"output"));
    (cluster.*Private(Dump()))(L"output");
    EXPECT_EQ(TakeLog(), "") << "a file that cannot be read has no lines";
}

} // namespace
