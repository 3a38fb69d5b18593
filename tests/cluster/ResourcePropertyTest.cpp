// Private properties.
#include "ControlAnswer.h"

using namespace harness;

namespace {

ModelBuilder ClusterWithProperties() {
    return GivenCluster()
        .Node("NODE-A")
        .Group("EVS1", "NODE-A")
        .IpAddress("EVS1 IP", "192.168.1.10")
        .Resource("EVS1 SMTP", "Generic Service")
        .Private("Path", "F:\\Data")
        .Private("ProtocolInstanceId", 3)
        .Private("Empty", "")
        .Resource("Long", "Generic Service")
        .Private("P", std::string(300, 'p'));
}

class PrivateProperty : public ClusterTest {
protected:
    PrivateProperty() {
        AtEnd([this] {
            ip.Close();
            smtp.Close();
        });
        cluster.Open(ip, L"EVS1 IP");
        cluster.Open(smtp, L"EVS1 SMTP");
    }

    OpenedCluster cluster{*this, ClusterWithProperties()};
    CClusterResource ip;
    CClusterResource smtp;
};

TEST_F(PrivateProperty, TextIsReadAndItsCopyFreed) {
    std::wstring value;
    EXPECT_TRUE(ip.GetPrivateStringProperty(L"Address", value));
    EXPECT_EQ(value, L"192.168.1.10");
    EXPECT_EQ(TakeLog(), "");
    const std::string journal = TakeJournal();
    EXPECT_THAT(journal, ::testing::StartsWith("ClusterResourceControl(EVS1 IP,GET_PRIVATE_PROPERTIES,128)"));
    EXPECT_THAT(journal, ::testing::EndsWith("ResUtilFindSzProperty(Address)\n"));
    EXPECT_EQ(Heap().LiveBlocks(), 0u);
}

TEST_F(PrivateProperty, NamesCompareWithoutCase) {
    std::wstring value;
    EXPECT_TRUE(ip.GetPrivateStringProperty(L"ADDRESS", value));
    EXPECT_EQ(value, L"192.168.1.10");
}

TEST_F(PrivateProperty, AnEmptyTextIsAText) {
    std::wstring value = L"before";
    EXPECT_TRUE(smtp.GetPrivateStringProperty(L"Empty", value));
    EXPECT_EQ(value, L"");
}

TEST_F(PrivateProperty, AMissingTextIsASilentFailure) {
    std::wstring value = L"before";
    EXPECT_FALSE(ip.GetPrivateStringProperty(L"Nothing", value));
    EXPECT_EQ(value, L"before");
    EXPECT_EQ(TakeLog(), "");
    EXPECT_THAT(TakeJournal(), ::testing::EndsWith("ResUtilFindSzProperty(Nothing)=2\n"));
}

TEST_F(PrivateProperty, ANumberIsNoText) {
    std::wstring value = L"before";
    EXPECT_FALSE(smtp.GetPrivateStringProperty(L"ProtocolInstanceId", value));
    EXPECT_EQ(value, L"before");
}

TEST_F(PrivateProperty, NumberIsRead) {
    DWORD value = 0;
    EXPECT_TRUE(smtp.GetPrivateDWORDProperty(L"ProtocolInstanceId", value));
    EXPECT_EQ(value, 3u);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_THAT(TakeJournal(), ::testing::EndsWith("ResUtilFindDwordProperty(ProtocolInstanceId)\n"));
}

TEST_F(PrivateProperty, AMissingNumberIsASilentFailure) {
    DWORD value = 77;
    EXPECT_FALSE(smtp.GetPrivateDWORDProperty(L"Nothing", value));
    EXPECT_EQ(value, 77u);
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(PrivateProperty, ATextIsNoNumber) {
    DWORD value = 77;
    EXPECT_FALSE(smtp.GetPrivateDWORDProperty(L"Path", value));
    EXPECT_EQ(value, 77u);
}

TEST_F(PrivateProperty, AFailingReadIsLoggedByTheReadAlone) {
    Platform().FailCall("ClusterResourceControl", 5, 1, FaultMode::FromThenOn);
    std::wstring text = L"before";
    DWORD number = 77;
    EXPECT_FALSE(ip.GetPrivateStringProperty(L"Address", text));
    EXPECT_FALSE(ip.GetPrivateDWORDProperty(L"Address", number));
    EXPECT_EQ(text, L"before");
    EXPECT_EQ(number, 77u);
    EXPECT_EQ(TakeLog(), Lines({"E Calling ClusterResourceControl returns error, code:5",
                                "E Calling ClusterResourceControl returns error, code:5"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(EVS1 IP,GET_PRIVATE_PROPERTIES,128)=5",
                                    "ClusterResourceControl(EVS1 IP,GET_PRIVATE_PROPERTIES,128)=5"}));
}

TEST_F(PrivateProperty, AnEmptyAnswerIsAFailure) {
    const ControlAnswer answer(Bytes{});
    std::wstring text;
    DWORD number = 0;
    EXPECT_FALSE(ip.GetPrivateStringProperty(L"Address", text));
    EXPECT_FALSE(ip.GetPrivateDWORDProperty(L"Address", number));
    EXPECT_EQ(TakeJournal(), "") << "nothing is searched in an empty list";
}

TEST_F(PrivateProperty, TheSearchIsGivenTheAllocatedSize) {
    DWORD size = 0;
    const auto patch =
        PatchImport(resutils, ResUtilFindSzProperty, [&](const PVOID list, DWORD cb, LPCWSTR name, LPWSTR* text) {
            size = cb;
            return ::ResUtilFindSzProperty(list, cb, name, text);
        });
    std::wstring text;
    const ControlAnswer answer(Bytes(4));
    EXPECT_FALSE(ip.GetPrivateStringProperty(L"Address", text));
    EXPECT_EQ(size, 128u);
}

TEST_F(PrivateProperty, TheSearchForANumberIsGivenTheAllocatedSize) {
    DWORD size = 0;
    const auto patch =
        PatchImport(resutils, ResUtilFindDwordProperty, [&](const PVOID, DWORD cb, LPCWSTR, LPDWORD) -> DWORD {
            size = cb;
            return ERROR_FILE_NOT_FOUND;
        });
    DWORD number = 0;
    const ControlAnswer answer(Bytes(4));
    EXPECT_FALSE(ip.GetPrivateDWORDProperty(L"Address", number));
    EXPECT_EQ(size, 128u);
}

using PrivateTextLength = OpenClusterTestWith<std::size_t>;

TEST_P(PrivateTextLength, TextsOfAnyLengthAreRead) {
    const std::string text(GetParam(), 'p');
    cluster.Load(
        GivenCluster().Node("NODE-A").Group("G", "NODE-A").Resource("R", "Generic Service").Private("P", text));
    CClusterResource resource;
    cluster.Open(resource, L"R");
    std::wstring value;
    EXPECT_TRUE(resource.GetPrivateStringProperty(L"P", value));
    EXPECT_EQ(Utf8(value), text);
}

INSTANTIATE_TEST_SUITE_P(Boundary, PrivateTextLength, ::testing::Values(0u, 44u, 45u, 46u, 47u, 48u, 260u, 5000u),
                         ::testing::PrintToStringParamName());

TEST_F(PrivateProperty, ATextThatTheBufferCannotGrowForIsAFailure) {
    CClusterResource resource;
    cluster.Open(resource, L"Long");
    Heap().FailLocalReAlloc(1);
    std::wstring value = L"before";
    EXPECT_FALSE(resource.GetPrivateStringProperty(L"P", value));
    EXPECT_EQ(value, L"before");
    EXPECT_EQ(TakeLog(), Lines({"E Calling ClusterResourceControl returns error, code:234"}));
}

} // namespace
