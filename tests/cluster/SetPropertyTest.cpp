// SetDWORDProperty: the list it builds, byte by byte.
#include "ControlAnswer.h"

using namespace harness;

namespace {

class SetProperty : public ClusterTest {
protected:
    // The bytes that setting this property sends.
    Bytes Sent(const wchar_t* name, DWORD value) {
        CClusterResource resource;
        cluster.Open(resource, L"Spare IP");
        Bytes sent;
        const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                       [&](HRESOURCE h, HNODE node, DWORD code, LPVOID in, DWORD cbIn, LPVOID out,
                                           DWORD cbOut, LPDWORD cb) -> DWORD {
                                           EXPECT_EQ(h, resource.GetResourceHandle());
                                           EXPECT_EQ(node, nullptr);
                                           EXPECT_EQ(code, 0x0140005Eu);
                                           EXPECT_EQ(out, nullptr);
                                           EXPECT_EQ(cbOut, 0u);
                                           EXPECT_EQ(cb, nullptr);
                                           const auto* bytes = static_cast<const unsigned char*>(in);
                                           sent.assign(bytes, bytes + cbIn);
                                           return ERROR_SUCCESS;
                                       });
        EXPECT_TRUE(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, name, value));
        return sent;
    }

    OpenedCluster cluster{*this, ExchangeCluster().IpAddress("Spare IP", "10.0.0.9").State("Offline")};
};

Bytes Expected(const std::wstring& name, DWORD value) {
    return PropertyListOf(name, 0x00010002, NumberBytes(value));
}

TEST_F(SetProperty, OfRestartActionIsAListOf56Bytes) {
    const Bytes sent = Sent(L"RestartAction", 1);
    EXPECT_EQ(sent.size(), 56u);
    EXPECT_EQ(sent, Expected(L"RestartAction", 1));
}

TEST_F(SetProperty, PadsNamesOfAnyLengthToFourBytes) {
    for (const std::size_t length : {std::size_t(0), std::size_t(1), std::size_t(2), std::size_t(3), std::size_t(4),
                                     std::size_t(260), std::size_t(5000)}) {
        const std::wstring name(length, L'\u0160');
        EXPECT_EQ(Sent(name.c_str(), 0x80000001), Expected(name, 0x80000001)) << length;
    }
}

TEST_F(SetProperty, OfANullNameIsAListWithAnEmptyName) {
    EXPECT_EQ(Sent(nullptr, 7), Expected(L"", 7));
}

TEST_F(SetProperty, LogsAndSends) {
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    EXPECT_TRUE(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 1));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::SetDWORDProperty, 20971614,RestartAction,1",
                                "< CClusterResource::SetDWORDProperty"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(Spare IP,SET_COMMON_PROPERTIES,56)"}));
}

TEST_F(SetProperty, StoresPrivateNumbersToo) {
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    EXPECT_TRUE(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, L"Mine", 42));
    DWORD value = 0;
    EXPECT_TRUE(resource.GetPrivateDWORDProperty(L"Mine", value));
    EXPECT_EQ(value, 42u);
}

TEST_F(SetProperty, AFailingControlIsLogged) {
    Platform().FailCall("ClusterResourceControl", 87);
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    EXPECT_FALSE(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 9));
    EXPECT_EQ(TakeLog(),
              Lines({"> CClusterResource::SetDWORDProperty, 20971614,RestartAction,9",
                     "E CClusterResource::SetDWORDProperty failed, code:87", "< CClusterResource::SetDWORDProperty"}));
}

TEST_F(SetProperty, OfAnOnlineResourceCountsAsFailureWhenItIsOnlyStored) {
    Platform().FailCall("ClusterResourceControl", ERROR_RESOURCE_PROPERTIES_STORED);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_FALSE(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 1));
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("E CClusterResource::SetDWORDProperty failed, code:5024\n"));
}

TEST_F(SetProperty, MissingMemoryIsLoggedAndNothingSent) {
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    Heap().FailLocalAlloc(1);
    EXPECT_FALSE(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 1));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::SetDWORDProperty, 20971614,RestartAction,1",
                                "E LocalAlloc 56 bytes fail", "< CClusterResource::SetDWORDProperty"}));
    EXPECT_EQ(TakeJournal(), "");
}

} // namespace
