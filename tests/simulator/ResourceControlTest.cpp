// ClusterResourceControl: answers byte for byte.
#include "SimulatorTest.h"

using testing::HasSubstr;

namespace {

const DWORD SyntaxName = 0x00040003;
const DWORD SyntaxDword = 0x00010002;
const DWORD SyntaxSz = 0x00010003;

Bytes Number(DWORD number) {
    Bytes bytes;
    Append(bytes, number);
    return bytes;
}

// A list of one property.
Bytes ListOf(const std::wstring& name, DWORD syntax, const Bytes& value) {
    Bytes list = Number(1);
    AppendEntry(list, SyntaxName, TextOf(name));
    AppendEntry(list, syntax, value);
    Append(list, 0);
    return list;
}

Bytes Slice(const Bytes& bytes, std::size_t from, std::size_t count) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                 bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
}

} // namespace

class ResourceControl : public SimulatorTest {
protected:
    // A cluster of one resource with these members.
    void LoadResource(const std::string& type, const std::string& members) {
        Load(
            R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "N"}], "groups": [{"name": "G", "owner": "N"}],
                 "resources": [{"name": "R", "group": "G", "id": "1", "type": ")" +
            type + "\", " + members + "}]}");
    }
};

TEST_F(ResourceControl, TextsComeWithTheirTerminator) {
    Load();
    const ResourceOwner resource = Resource(L"evs1 name");
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_NAME), TextOf(L"EVS1 Name"));
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE), TextOf(L"Network Name"));
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_ID), TextOf(L"aaaaaaaa-0000-0000-0000-000000000002"));
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_NETWORK_NAME), TextOf(L"MAIL1"));
}

TEST_F(ResourceControl, ABufferOneByteShortGetsTheSizeAndNoBytes) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 IP");
    Bytes buffer(18, 0xCC);
    DWORD cb = 0;
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, buffer.data(), 15, &cb),
              static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(cb, 16u);
    EXPECT_EQ(buffer[0], 0xCC);
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, buffer.data(), 16, &cb),
              0u);
    EXPECT_EQ(cb, 16u);
    EXPECT_EQ(buffer[16], 0xCC);
    EXPECT_EQ(
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, buffer.data(), 16, nullptr),
        0u);
}

TEST_F(ResourceControl, CodesThatATypeDoesNotKnowAreAnInvalidFunction) {
    Load();
    DWORD cb = 77;
    EXPECT_EQ(ClusterResourceControl(Resource(L"EVS1 IP"), nullptr, CLUSCTL_RESOURCE_GET_NETWORK_NAME, nullptr, 0,
                                     nullptr, 0, &cb),
              static_cast<DWORD>(ERROR_INVALID_FUNCTION));
    EXPECT_EQ(cb, 0u);
    EXPECT_EQ(ClusterResourceControl(Resource(L"EVS1 IP"), nullptr, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, nullptr, 0,
                                     nullptr, 0, &cb),
              static_cast<DWORD>(ERROR_INVALID_FUNCTION));
    EXPECT_EQ(ClusterResourceControl(Resource(L"EVS1 IP"), nullptr, 0x01007777, nullptr, 0, nullptr, 0, &cb),
              static_cast<DWORD>(ERROR_INVALID_FUNCTION));
}

TEST_F(ResourceControl, ClassIsThatOfTheType) {
    Load();
    Bytes storage = Number(1);
    Append(storage, 0x80000000);
    EXPECT_EQ(Control(Resource(L"EVS1 Disk"), CLUSCTL_RESOURCE_GET_CLASS_INFO), storage);
    EXPECT_EQ(Control(Resource(L"EVS1 IP"), CLUSCTL_RESOURCE_GET_CLASS_INFO), Bytes(8));
}

TEST_F(ResourceControl, Since2008AddressesAreOfTheNetworkClassAndItsProbeSucceeds) {
    Load(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"protocol\": 2008}"));
    const ResourceOwner resource = Resource(L"EVS1 IP");
    DWORD cb = 0;
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_CLASS_INFO, nullptr, 0, nullptr, 0, &cb),
              0u);
    EXPECT_EQ(cb, 8u);
    DWORD info[2] = {};
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_CLASS_INFO, nullptr, 0, info, 8, &cb), 0u);
    EXPECT_EQ(info[0], 2u);
    EXPECT_EQ(info[1], 0x80000000u);
}

TEST_F(ResourceControl, DiskInformationOfOnePartitionIsLaidOutAsTheApiHasIt) {
    Load();
    const Bytes info = Control(Resource(L"EVS1 Disk"), CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO);
    ASSERT_EQ(info.size(), 1168u);
    Bytes head;
    AppendEntry(head, 0x00050002, Number(287454020)); // signature
    AppendEntry(head, 0x00060002, Number(2 << 16));   // SCSI address: target 2
    AppendEntry(head, 0x00070002, Number(2));         // disk number
    Append(head, 0x00080001);                         // partition
    Append(head, 1120);
    Append(head, 5); // sticky, usable
    EXPECT_EQ(Slice(info, 0, head.size()), head);
    const std::size_t partition = 36;
    EXPECT_EQ(Slice(info, partition + 12, 6), TextOf(L"F:"));
    EXPECT_EQ(Slice(info, partition + 532, 10), TextOf(L"Mail"));
    EXPECT_EQ(Slice(info, partition + 1056, 4), Number(255));
    EXPECT_EQ(Slice(info, partition + 1064, 10), TextOf(L"NTFS"));
    EXPECT_EQ(Slice(info, 1164, 4), Bytes(4));
}

TEST_F(ResourceControl, EachFurtherPartitionAddsItsEntry) {
    LoadResource("Physical Disk", R"("disk": {"guid": "{0a1b2c3d-0000-1111-2222-333344445555}", "number": 3,
        "partitions": [{"device": "F:"}, {"device": "Disk3Partition2"}]})");
    const Bytes info = Control(Resource(L"R"), CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO);
    // A GUID entry of 78 bytes is padded to 80.
    ASSERT_EQ(info.size(), 88u + 12 + 12 + 2 * 1128 + 4);
    Bytes head = Number(0x000B0003);
    Append(head, 78);
    EXPECT_EQ(Slice(info, 0, 8), head);
    EXPECT_EQ(Slice(info, 8, 78), TextOf(L"{0a1b2c3d-0000-1111-2222-333344445555}"));
    const std::size_t second = 88 + 24 + 1128;
    EXPECT_EQ(Slice(info, second + 8, 4), Number(4)) << "without a letter it is not sticky";
    EXPECT_EQ(Slice(info, second + 12, 32), TextOf(L"Disk3Partition2"));
}

TEST_F(ResourceControl, ADiskWithoutPartitionsIsASignature) {
    LoadResource("Physical Disk", R"("disk": {"signature": 7, "number": 1})");
    EXPECT_EQ(Control(Resource(L"R"), CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO).size(), 40u);
}

TEST_F(ResourceControl, PropertyListsHoldEveryKindOfValue) {
    LoadResource("Generic Service", R"("private": {"Text": "ab", "Number": 4294967295, "List": ["a", "bc"],
        "Expand": {"expandSz": "%NO_SUCH_VARIABLE%x"}, "Raw": {"binary": "0102FF"}})");
    Bytes list = Number(5);
    AppendEntry(list, SyntaxName, TextOf(L"Text"));
    AppendEntry(list, SyntaxSz, TextOf(L"ab"));
    Append(list, 0);
    AppendEntry(list, SyntaxName, TextOf(L"Number"));
    AppendEntry(list, SyntaxDword, Number(0xFFFFFFFF));
    Append(list, 0);
    AppendEntry(list, SyntaxName, TextOf(L"List"));
    const std::wstring texts(L"a\0bc\0", 5);
    AppendEntry(list, 0x00010005, TextOf(texts));
    Append(list, 0);
    AppendEntry(list, SyntaxName, TextOf(L"Expand"));
    AppendEntry(list, 0x00010004, TextOf(L"%NO_SUCH_VARIABLE%x"));
    AppendEntry(list, 0x00010008, TextOf(L"%NO_SUCH_VARIABLE%x"));
    Append(list, 0);
    AppendEntry(list, SyntaxName, TextOf(L"Raw"));
    AppendEntry(list, 0x00010001, {1, 2, 0xFF});
    Append(list, 0);
    EXPECT_EQ(Control(Resource(L"R"), CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES), list);
}

TEST_F(ResourceControl, WithoutPropertiesTheListIsItsCount) {
    LoadResource("Generic Service", R"("private": {})");
    EXPECT_EQ(Control(Resource(L"R"), CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES), Bytes(4));
}

TEST_F(ResourceControl, ASetPropertyReplacesThatOneOnly) {
    LoadResource("Generic Service", R"("private": {"First": "1", "Second": 2})");
    const ResourceOwner resource = Resource(L"R");
    EXPECT_EQ(SetControl(resource, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, ListOf(L"second", SyntaxDword, Number(3))),
              0u);
    EXPECT_EQ(SetControl(resource, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, ListOf(L"Third", SyntaxSz, TextOf(L"x"))),
              0u);
    Bytes list = Number(3);
    AppendEntry(list, SyntaxName, TextOf(L"First"));
    AppendEntry(list, SyntaxSz, TextOf(L"1"));
    Append(list, 0);
    AppendEntry(list, SyntaxName, TextOf(L"Second"));
    AppendEntry(list, SyntaxDword, Number(3));
    Append(list, 0);
    AppendEntry(list, SyntaxName, TextOf(L"Third"));
    AppendEntry(list, SyntaxSz, TextOf(L"x"));
    Append(list, 0);
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES), list);
}

TEST_F(ResourceControl, AListIsBoundedByItsCountAndNotByTheBuffer) {
    LoadResource("Generic Service", R"("private": {})");
    Bytes list = ListOf(L"A", SyntaxDword, Number(1));
    list.insert(list.end(), 100, 0xCC);
    EXPECT_EQ(SetControl(Resource(L"R"), CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, list), 0u);
    EXPECT_THAT(ReadModel(), HasSubstr("\"A\": 1"));
}

TEST_F(ResourceControl, AnOnlineResourceStoresPropertiesForLater) {
    LoadResource("Generic Service", R"("state": "Online")");
    EXPECT_EQ(SetControl(Resource(L"R"), CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, ListOf(L"A", SyntaxDword, Number(1))),
              5024u);
    EXPECT_THAT(ReadModel(), HasSubstr("\"A\": 1"));
}

TEST_F(ResourceControl, CommonPropertiesAreThoseThatAreKnown) {
    LoadResource("Generic Service", R"("private": {})");
    const ResourceOwner resource = Resource(L"R");
    const DWORD set = CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES;
    EXPECT_EQ(SetControl(resource, set, ListOf(L"RestartAction", SyntaxDword, Number(0))), 0u);
    EXPECT_THAT(ReadModel(), HasSubstr("\"RestartAction\": 0"));
    const DWORD invalid = ERROR_INVALID_PARAMETER;
    EXPECT_EQ(SetControl(resource, set, ListOf(L"RestartAction", SyntaxDword, Number(3))), invalid);
    EXPECT_EQ(SetControl(resource, set, ListOf(L"RestartAction", SyntaxSz, TextOf(L"1"))), invalid);
    EXPECT_EQ(SetControl(resource, set, ListOf(L"Name", SyntaxSz, TextOf(L"Other"))), invalid);
    EXPECT_EQ(SetControl(resource, set, ListOf(L"NoSuch", SyntaxDword, Number(1))), invalid);
    DWORD cb = 0;
    EXPECT_EQ(
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES, nullptr, 0, nullptr, 0, &cb),
        static_cast<DWORD>(ERROR_MORE_DATA));
}

TEST_F(ResourceControl, MalformedListsAreRefusedAndChangeNothing) {
    LoadResource("Generic Service", R"("private": {})");
    const ResourceOwner resource = Resource(L"R");
    const DWORD set = CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES;
    const Bytes good = ListOf(L"A", SyntaxSz, TextOf(L"abc"));
    for (std::size_t cb = 0; cb < good.size(); ++cb) {
        const Bytes cut = Slice(good, 0, cb);
        EXPECT_EQ(SetControl(resource, set, cut.empty() ? Bytes(1) : cut),
                  static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER))
            << cb << " bytes";
    }
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, set, nullptr, 0, nullptr, 0, nullptr),
              static_cast<DWORD>(RPC_X_BAD_STUB_DATA));
    EXPECT_EQ(SetControl(resource, set, ListOf(L"A", 0x00010008, TextOf(L"x"))),
              static_cast<DWORD>(ERROR_INVALID_DATA));
    Bytes nameless = good;
    nameless[4] = 9;
    EXPECT_EQ(SetControl(resource, set, nameless), static_cast<DWORD>(ERROR_INVALID_DATA));
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES), Bytes(4));
}

TEST_F(ResourceControl, AHostNodeHasToBeOpen) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 IP");
    wchar_t name[16];
    EXPECT_EQ(ClusterResourceControl(resource, Node(L"NODE-A"), CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, name,
                                     sizeof(name), nullptr),
              0u);
    const HNODE bad = reinterpret_cast<HNODE>(static_cast<HRESOURCE>(resource));
    EXPECT_EQ(ClusterResourceControl(resource, bad, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, name, sizeof(name), nullptr),
              static_cast<DWORD>(ERROR_INVALID_HANDLE));
    ExpectBadHandleCalls(1);
}
