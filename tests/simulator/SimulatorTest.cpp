#include "SimulatorTest.h"

const char* const MailCluster = R"({
  "cluster": {"name": "MAILCLUSTER", "coreGroup": "none"},
  "nodes": [{"name": "NODE-A"}, {"name": "NODE-B", "state": "down"}, {"name": "NODE-C", "state": "paused"}],
  "groups": [
    {"name": "EVS1", "owner": "NODE-A", "preferredOwners": ["NODE-B", "NODE-A"]},
    {"name": "EVS2", "owner": "NODE-C"}
  ],
  "resources": [
    {"name": "EVS1 IP", "type": "IP Address", "id": "aaaaaaaa-0000-0000-0000-000000000001", "group": "EVS1",
     "state": "Online", "private": {"Address": "10.1.2.3"}},
    {"name": "EVS1 Name", "type": "Network Name", "id": "aaaaaaaa-0000-0000-0000-000000000002", "group": "EVS1",
     "state": "Online", "dependsOn": ["EVS1 IP"], "private": {"Name": "MAIL1"}},
    {"name": "EVS1 Disk", "type": "Physical Disk", "id": "aaaaaaaa-0000-0000-0000-000000000003", "group": "EVS1",
     "state": "Online", "disk": {"signature": 287454020, "number": 2, "partitions": [{"device": "F:", "label": "Mail"}]}},
    {"name": "EVS1 SA", "type": "Microsoft Exchange System Attendant", "id": "aaaaaaaa-0000-0000-0000-000000000004",
     "group": "EVS1", "dependsOn": ["EVS1 Name", "EVS1 Disk"], "possibleOwners": ["NODE-A"]},
    {"name": "EVS1 Store", "type": "Microsoft Exchange Information Store",
     "id": "aaaaaaaa-0000-0000-0000-000000000005", "group": "EVS1", "dependsOn": ["EVS1 SA"]},
    {"name": "EVS2 IP", "type": "IP Address", "id": "aaaaaaaa-0000-0000-0000-000000000006", "group": "EVS2"}
  ]
})";

std::ostream& operator<<(std::ostream& out, const ListedName& item) {
    return out << item.type << " " << std::string(item.name.begin(), item.name.end());
}

void SimulatorTest::SetUp() {
    ClusSimReset();
}

void SimulatorTest::TearDown() {
    m_cluster.Close();
    EXPECT_EQ(ClusSimOpenHandles(nullptr), 0u);
    EXPECT_EQ(ClusSimBadHandleCalls(), m_badHandleCalls);
    ClusSimReset();
}

void SimulatorTest::Load(const std::string& json) {
    ASSERT_EQ(LoadError(json), "");
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
}

ResourceOwner SimulatorTest::Resource(const wchar_t* name) {
    ResourceOwner resource(OpenClusterResource(m_cluster, name));
    EXPECT_NE(static_cast<HRESOURCE>(resource), nullptr) << "error " << GetLastError();
    return resource;
}

std::wstring SimulatorTest::OwnerOf(HGROUP group) {
    wchar_t name[64] = L"";
    DWORD cch = 64;
    GetClusterGroupState(group, name, &cch);
    return name;
}

GroupOwner SimulatorTest::Group(const wchar_t* name) {
    GroupOwner group(OpenClusterGroup(m_cluster, name));
    EXPECT_NE(static_cast<HGROUP>(group), nullptr) << "error " << GetLastError();
    return group;
}

NodeOwner SimulatorTest::Node(const wchar_t* name) {
    NodeOwner node(OpenClusterNode(m_cluster, name));
    EXPECT_NE(static_cast<HNODE>(node), nullptr) << "error " << GetLastError();
    return node;
}

int SimulatorTest::StateOf(const wchar_t* resource) {
    return GetClusterResourceState(Resource(resource), nullptr, nullptr, nullptr, nullptr);
}

namespace {

template <typename Read> std::string ReadText(Read read) {
    std::string text(read(nullptr, 0), '\0');
    read(&text[0], text.size());
    text.pop_back();
    return text;
}

template <typename Handle, typename Read> std::vector<ListedName> ReadAll(Handle handle, Read read) {
    std::vector<ListedName> items;
    for (DWORD index = 0;; ++index) {
        wchar_t name[300];
        DWORD cch = 300;
        DWORD type = 0;
        const DWORD code = read(handle, index, &type, name, &cch);
        if (code != ERROR_SUCCESS) {
            EXPECT_EQ(code, static_cast<DWORD>(ERROR_NO_MORE_ITEMS));
            return items;
        }
        items.push_back({type, std::wstring(name, cch)});
    }
}

} // namespace

std::string ReadModel() {
    return ReadText(ClusSimReadModel);
}

std::string ReadJournal() {
    return ReadText(ClusSimReadJournal);
}

std::string LoadError(const std::string& json) {
    char error[300] = "";
    return ClusSimLoadModel(json.c_str(), error, sizeof(error)) ? std::string() : std::string(error);
}

bool Accepts(const char* fault) {
    return ClusSimAddFault(fault) != 0;
}

std::string Replaced(const std::string& text, const std::string& from, const std::string& to) {
    const std::size_t found = text.find(from);
    EXPECT_NE(found, std::string::npos) << from;
    EXPECT_EQ(text.find(from, found + 1), std::string::npos) << from;
    return text.substr(0, found) + to + text.substr(found + from.size());
}

std::vector<ListedName> ListCluster(HCLUSTER cluster, DWORD mask) {
    const HCLUSENUM list = ClusterOpenEnum(cluster, mask);
    const std::vector<ListedName> items = ReadAll(list, ClusterEnum);
    EXPECT_EQ(ClusterCloseEnum(list), 0u);
    return items;
}

std::vector<ListedName> ListGroup(HGROUP group, DWORD mask) {
    const HGROUPENUM list = ClusterGroupOpenEnum(group, mask);
    const std::vector<ListedName> items = ReadAll(list, ClusterGroupEnum);
    EXPECT_EQ(ClusterGroupCloseEnum(list), 0u);
    return items;
}

std::vector<ListedName> ListResource(HRESOURCE resource, DWORD mask) {
    const HRESENUM list = ClusterResourceOpenEnum(resource, mask);
    const std::vector<ListedName> items = ReadAll(list, ClusterResourceEnum);
    EXPECT_EQ(ClusterResourceCloseEnum(list), 0u);
    return items;
}

Bytes Control(HRESOURCE resource, DWORD code) {
    DWORD cb = 0;
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, code, nullptr, 0, nullptr, 0, &cb),
              static_cast<DWORD>(ERROR_MORE_DATA));
    Bytes bytes(cb);
    DWORD cbReturned = 0;
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, code, nullptr, 0, bytes.data(), cb, &cbReturned), 0u);
    EXPECT_EQ(cbReturned, cb);
    return bytes;
}

DWORD SetControl(HRESOURCE resource, DWORD code, Bytes list) {
    return ClusterResourceControl(resource, nullptr, code, list.data(), static_cast<DWORD>(list.size()), nullptr, 0,
                                  nullptr);
}

Bytes TextOf(const std::wstring& text) {
    Bytes bytes;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        bytes.push_back(static_cast<unsigned char>(text.c_str()[i]));
        bytes.push_back(static_cast<unsigned char>(text.c_str()[i] >> 8));
    }
    return bytes;
}

void Append(Bytes& bytes, DWORD number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(number >> shift));
    }
}

void AppendEntry(Bytes& bytes, DWORD syntax, const Bytes& value) {
    Append(bytes, syntax);
    Append(bytes, static_cast<DWORD>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
    while (bytes.size() % 4 != 0) {
        bytes.push_back(0);
    }
}
