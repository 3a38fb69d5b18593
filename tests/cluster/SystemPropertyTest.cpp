#include "ControlAnswer.h"

using namespace harness;

namespace {

typedef CClusterResource Res;

using SystemProperty = OpenClusterTest;

TEST(SystemPropertyNumbers, ArePartOfTheInterface) {
    EXPECT_EQ(Res::RES_PROP_NAME, 0);
    EXPECT_EQ(Res::RES_PROP_TYPE, 1);
    EXPECT_EQ(Res::RES_PROP_NETWORK_NAME, 2);
    EXPECT_EQ(Res::RES_PROP_DISK_DEVICE, 3);
    EXPECT_EQ(Res::RES_PROP_GUID, 4);
}

// Each one
// -----------------------------------------------------------------------------------------------------------------

struct PropertyCase {
    const char* name;
    const wchar_t* resource;
    Res::RES_PROPERTY_ID id;
    DWORD control;
    const wchar_t* text;

    friend void PrintTo(const PropertyCase& row, std::ostream* out) {
        *out << row.name;
    }
};

using EachSystemProperty = OpenClusterTestWith<PropertyCase>;

TEST_P(EachSystemProperty, SendsItsControlCodeAndGivesTheText) {
    CClusterResource resource;
    cluster.Open(resource, GetParam().resource);
    std::vector<DWORD> codes;
    const auto patch = PatchImport(
        clusapi, ClusterResourceControl,
        [&](HRESOURCE h, HNODE node, DWORD code, LPVOID in, DWORD cbIn, LPVOID out, DWORD cbOut, LPDWORD cb) -> DWORD {
            EXPECT_EQ(node, nullptr);
            EXPECT_EQ(in, nullptr);
            EXPECT_EQ(cbIn, 0u);
            codes.push_back(code);
            return ::ClusterResourceControl(h, node, code, in, cbIn, out, cbOut, cb);
        });
    EXPECT_STREQ(resource.GetSystemStringProperty(GetParam().id, false), GetParam().text);
    for (const DWORD code : codes) {
        EXPECT_EQ(code, GetParam().control);
    }
    EXPECT_EQ(codes.size(), GetParam().id == Res::RES_PROP_DISK_DEVICE ? 2u : 1u);
    EXPECT_EQ(TakeLog(), "");
}

const PropertyCase PropertyCases[] = {
    {"Name", L"evs1 name", Res::RES_PROP_NAME, 0x01000029, L"EVS1 Name"},
    {"Type", L"EVS1 Name", Res::RES_PROP_TYPE, 0x0100002D, L"Network Name"},
    {"NetworkName", L"EVS1 Name", Res::RES_PROP_NETWORK_NAME, 0x01000169, L"EVS1"},
    {"DiskDevice", L"EVS1 Disk", Res::RES_PROP_DISK_DEVICE, 0x01000191, L"F:"},
    {"Id", L"EVS1 Name", Res::RES_PROP_GUID, 0x01000039, L"0a0b0c0d-0000-0000-0000-0000000000e1"}};

INSTANTIATE_TEST_SUITE_P(Table, EachSystemProperty, ::testing::ValuesIn(PropertyCases), RowName());

// Cache
// --------------------------------------------------------------------------------------------------------------------

TEST_F(SystemProperty, IsReadOnceWithoutRefresh) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const wchar_t* const first = resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false);
    const wchar_t* const second = resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false);
    EXPECT_STREQ(first, L"IP Address");
    EXPECT_EQ(first, second);
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(EVS1 IP,GET_RESOURCE_TYPE,128)"}));
}

TEST_F(SystemProperty, IsReadEachTimeWithRefresh) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, true), L"IP Address");
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, true), L"IP Address");
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false), L"IP Address");
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(EVS1 IP,GET_RESOURCE_TYPE,128)",
                                    "ClusterResourceControl(EVS1 IP,GET_RESOURCE_TYPE,128)"}));
}

TEST_F(SystemProperty, EachHasACacheOfItsOwn) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Name");
    const wchar_t* const name = resource.GetSystemStringProperty(Res::RES_PROP_NAME, false);
    const wchar_t* const type = resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false);
    EXPECT_STREQ(name, L"EVS1 Name");
    EXPECT_STREQ(type, L"Network Name");
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, true), L"Network Name");
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), name) << "stays valid";
}

TEST_F(SystemProperty, AFailedRefreshKeepsTheCache) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false), L"IP Address");
    Platform().FailCall("ClusterResourceControl", 1726);
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, true), nullptr);
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false), L"IP Address");
}

TEST_F(SystemProperty, AnEmptyTextIsNotNullAndIsReadAgain) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    int calls = 0;
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD, LPDWORD cb) -> DWORD {
                                       ++calls;
                                       std::memset(out, 0, 2);
                                       *cb = 2;
                                       return ERROR_SUCCESS;
                                   });
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), L"");
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), L"");
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(TakeLog(), "");
}

// Failures
// -----------------------------------------------------------------------------------------------------------------

TEST_F(SystemProperty, WithoutAHandleIsLogged) {
    CClusterResource resource;
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E Resource handle is NULL.", "< CClusterResource::GetSystemStringProperty"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(SystemProperty, AFailingControlIsLogged) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_NETWORK_NAME, false), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E Calling ClusterResourceControl returns error, code:1", "E 0 == dwSize"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(EVS1 IP,GET_NETWORK_NAME,128)=1"}));
}

TEST_F(SystemProperty, AnEmptyAnswerIsAFailure) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const ControlAnswer answer(Bytes{});
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E 0 == dwSize"}));
}

TEST_F(SystemProperty, ASecondCallThatFailsIsLogged) {
    Platform().FailCall("ClusterResourceControl", 1726, 2);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_DISK_DEVICE, false), nullptr);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith(
                               Lines({"E Calling ClusterResourceControl returns error, code:1726", "E 0 == dwSize"})));
}

TEST_F(SystemProperty, TwoCountsThatDifferAreLoggedAndTheTextStillHolds) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    int calls = 0;
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD, LPDWORD cb) -> DWORD {
                                       if (++calls == 1) {
                                           *cb = 400;
                                           return ERROR_MORE_DATA;
                                       }
                                       std::memcpy(out, L"shrunk", 14);
                                       *cb = 14;
                                       return ERROR_SUCCESS;
                                   });
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), L"shrunk");
    EXPECT_EQ(TakeLog(), Lines({"E dwSizeCheck != dwSize"}));
}

TEST_F(SystemProperty, NothingOfTheFirstAnswerShowsBehindAShorterSecond) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    int calls = 0;
    const auto patch =
        PatchImport(clusapi, ClusterResourceControl,
                    [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD cbOut, LPDWORD cb) -> DWORD {
                        if (++calls == 1) {
                            std::memset(out, 'x', cbOut);
                            *cb = 400;
                            return ERROR_MORE_DATA;
                        }
                        std::memcpy(out, L"ab", 4); // without its terminator
                        *cb = 4;
                        return ERROR_SUCCESS;
                    });
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), L"ab");
    EXPECT_EQ(calls, 2);
}

TEST_F(SystemProperty, ACountBeyondTheBufferIsReadUpToItsEnd) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD, LPDWORD cb) -> DWORD {
                                       std::memcpy(out, std::wstring(64, L'x').c_str(), 128);
                                       *cb = 0x7fffffff;
                                       return ERROR_SUCCESS;
                                   });
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), std::wstring(64, L'x'));
}

TEST_F(SystemProperty, ATextThatGrowsBetweenTheTwoCallsIsAFailure) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    DWORD wanted = 200;
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID, DWORD, LPDWORD cb) -> DWORD {
                                       *cb = wanted;
                                       wanted += 100;
                                       return ERROR_MORE_DATA;
                                   });
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), nullptr);
    EXPECT_EQ(wanted, 400u) << "two calls, no more";
    EXPECT_EQ(TakeLog(), Lines({"E dwSizeCheck != dwSize", "E Calling ClusterResourceControl returns error, code:234",
                                "E 0 == dwSize"}));
}

// Boundaries of the 128 byte buffer
// ------------------------------------------------------------------------------------------

using SystemPropertyLength = OpenClusterTestWith<std::size_t>;

TEST_P(SystemPropertyLength, TextsOfAnyLengthAreRead) {
    const std::string name(GetParam(), 'n');
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress(name, "10.0.0.1"));
    CClusterResource resource;
    cluster.Open(resource, Utf16(name).c_str());
    EXPECT_STREQ(resource.GetSystemStringProperty(Res::RES_PROP_NAME, false), Utf16(name).c_str());
    const std::string call = "ClusterResourceControl(" + name + ",GET_NAME,";
    const std::size_t bytes = (name.size() + 1) * 2;
    EXPECT_EQ(TakeJournal(),
              bytes <= 128 ? Lines({call + "128)"}) : Lines({call + "128)=234", call + std::to_string(bytes) + ")"}));
    EXPECT_EQ(TakeLog(), "");
}

INSTANTIATE_TEST_SUITE_P(Boundary, SystemPropertyLength, ::testing::Values(1u, 62u, 63u, 64u, 65u, 260u, 5000u),
                         ::testing::PrintToStringParamName());

TEST_F(SystemProperty, ATextThatTheBufferCannotGrowForIsAFailure) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    Heap().FailLocalReAlloc(1);
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_DISK_DEVICE, false), nullptr);
    EXPECT_TRUE(Heap().Fired());
    EXPECT_EQ(TakeLog(), Lines({"E Calling ClusterResourceControl returns error, code:234", "E 0 == dwSize"}));
}

TEST_F(SystemProperty, MissingMemoryNeverGivesAWrongText) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto noMemory = PatchImport(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false), nullptr);
    EXPECT_NE(TakeLog(), "");
}

TEST_F(SystemProperty, AnAnswerWithoutABufferIsLogged) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto noMemory = PatchImport(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID, DWORD, LPDWORD cb) -> DWORD {
                                       *cb = 8;
                                       return ERROR_SUCCESS;
                                   });
    EXPECT_EQ(resource.GetSystemStringProperty(Res::RES_PROP_TYPE, false), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E NULL == lpStringStart"}));
}

// Disk device
// ----------------------------------------------------------------------------------------------------------------

class DiskDevice : public ClusterTest {
protected:
    // What the disk's device is when its information consists of these bytes.
    std::wstring DeviceIn(const Bytes& bytes) {
        CClusterResource resource;
        cluster.Open(resource, L"EVS1 Disk");
        const ControlAnswer answer(bytes);
        const wchar_t* const text = resource.GetSystemStringProperty(Res::RES_PROP_DISK_DEVICE, false);
        return text ? text : L"(null)";
    }

    OpenedCluster cluster{*this};
    const Bytes signature = Entry(0x00050002, {1, 2, 3, 4});
    const Bytes endMark = Bytes(4);
};

TEST_F(DiskDevice, IsThatOfTheFirstPartition) {
    EXPECT_EQ(DeviceIn(Concat({signature, PartitionEntry(L"F:"), PartitionEntry(L"G:"), endMark})), L"F:");
}

TEST_F(DiskDevice, FollowsEntriesWhoseLengthIsPadded) {
    EXPECT_EQ(DeviceIn(Concat({Entry(0x000B0003, Bytes(78, 0x41)), Entry(1, Bytes(1)), Entry(2, Bytes(2)),
                               Entry(3, Bytes(3)), Entry(4, Bytes{}), PartitionEntry(L"Disk1Partition2"), endMark})),
              L"Disk1Partition2");
}

TEST_F(DiskDevice, WithoutAPartitionIsTheTextAtTheStartOfTheInformation) {
    EXPECT_EQ(DeviceIn(Concat({signature, endMark})), std::wstring({0x0002, 0x0005, 0x0004}));
    EXPECT_EQ(TakeLog(), "");
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").Disk("D", std::vector<std::string>{}));
    CClusterResource resource;
    cluster.Open(resource, L"D");
    const wchar_t* const text = resource.GetSystemStringProperty(Res::RES_PROP_DISK_DEVICE, false);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::wstring(text), std::wstring({0x0002, 0x0005, 0x0004}));
}

TEST_F(DiskDevice, APartitionBehindTheEndMarkDoesNotCount) {
    EXPECT_EQ(DeviceIn(Concat({signature, endMark, PartitionEntry(L"F:")})), std::wstring({0x0002, 0x0005, 0x0004}));
}

TEST_F(DiskDevice, AnEndMarkAtTheStartGivesAnEmptyText) {
    EXPECT_EQ(DeviceIn(endMark), L"");
}

TEST_F(DiskDevice, AListCutShortIsReadUpToItsEnd) {
    Bytes cut = Concat({signature, PartitionEntry(L"F:")});
    cut.resize(signature.size() + 12 + 4); // the two characters, no terminator
    EXPECT_EQ(DeviceIn(cut), L"F:");
    cut.resize(signature.size() + 12 + 2);
    EXPECT_EQ(DeviceIn(cut), L"F");
    cut.resize(signature.size() + 12);
    EXPECT_EQ(DeviceIn(cut), L"");
}

TEST_F(DiskDevice, LengthsThatLieDoNotLeadOutOfTheInformation) {
    for (const DWORD length : {0xFFFFFFFFu, 0xFFFFFFFDu, 0xFFFFFFF8u, 0x7FFFFFFFu, 0x80000000u, 4096u}) {
        Bytes lying;
        lying += DWORD(0x00050002);
        lying += length;
        lying += DWORD(0x04030201);
        EXPECT_EQ(DeviceIn(Concat({lying, PartitionEntry(L"F:"), endMark})).substr(0, 2),
                  std::wstring({0x0002, 0x0005}))
            << length;
    }
}

TEST_F(DiskDevice, ADeviceNameWithoutTerminatorEndsWithTheInformation) {
    const Bytes bytes = Concat({PartitionEntry(std::wstring(558, L'x'))});
    EXPECT_EQ(DeviceIn(bytes), std::wstring(558, L'x'));
}

TEST_F(DiskDevice, OddAndTinyInformationIsSurvived) {
    for (std::size_t size = 1; size < 24; ++size) {
        Bytes bytes = Concat({PartitionEntry(L"FGHIJK")});
        bytes.resize(size);
        EXPECT_NE(DeviceIn(bytes), L"(null)") << size;
    }
}

} // namespace
