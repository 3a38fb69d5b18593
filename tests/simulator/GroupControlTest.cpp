// ClusterGroupControl, and what a snapshot could not read.
#include "SimulatorTest.h"

using testing::HasSubstr;
using testing::Not;

namespace {

// What the group answers, or the code with which it does not.
DWORD Ask(HGROUP group, DWORD control, Bytes& answer) {
    DWORD cb = 0;
    const DWORD probed = ClusterGroupControl(group, nullptr, control, nullptr, 0, nullptr, 0, &cb);
    if (probed != ERROR_MORE_DATA) {
        return probed;
    }
    answer.resize(cb);
    return ClusterGroupControl(group, nullptr, control, nullptr, 0, answer.data(), cb, &cb);
}

DWORD Threshold(HGROUP group) {
    Bytes answer;
    EXPECT_EQ(Ask(group, CLUSCTL_GROUP_GET_COMMON_PROPERTIES, answer), 0u);
    DWORD number = 0;
    EXPECT_EQ(ResUtilFindDwordProperty(answer.data(), static_cast<DWORD>(answer.size()), L"FailoverThreshold", &number),
              0u);
    return number;
}

// A property list of one number.
Bytes NumberProperty(const std::wstring& name, DWORD number) {
    Bytes list;
    Append(list, 1);
    AppendEntry(list, 0x00040003, TextOf(name));
    Bytes value;
    Append(value, number);
    AppendEntry(list, 0x00010002, value);
    Append(list, 0);
    return list;
}

DWORD Set(HGROUP group, Bytes list) {
    return ClusterGroupControl(group, nullptr, CLUSCTL_GROUP_SET_COMMON_PROPERTIES, list.data(),
                               static_cast<DWORD>(list.size()), nullptr, 0, nullptr);
}

const char* const RefusingCluster =
    R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "N"}],
        "groups": [{"name": "G", "owner": "N", "unread": {"common": 5, "preferredOwners": 70}}],
        "resources": [{"name": "D", "type": "Physical Disk", "id": "1", "group": "G", "state": "Offline",
                       "unread": {"class": 11, "common": 12, "dependsOn": 13, "disk": 5004, "id": 14,
                                  "possibleOwners": 15, "private": 16, "type": 17}}]})";

} // namespace

class GroupControl : public SimulatorTest {};

TEST_F(GroupControl, NameAndCommonPropertiesAreAnsweredWithTheirDefaults) {
    Load();
    Bytes answer;
    EXPECT_EQ(Ask(Group(L"evs1"), 0x03000029, answer), 0u);
    EXPECT_EQ(answer, TextOf(L"EVS1"));
    EXPECT_EQ(Threshold(Group(L"EVS1")), 10u);
    EXPECT_EQ(Ask(Group(L"EVS1"), 0x03007777, answer), static_cast<DWORD>(ERROR_INVALID_FUNCTION));
    Load(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"protocol\": 2008}"));
    EXPECT_EQ(Threshold(Group(L"EVS1")), 0xFFFFFFFFu) << "as many as there are other nodes";
}

TEST_F(GroupControl, CommonPropertiesAreSetWithinTheirRange) {
    Load();
    const GroupOwner group = Group(L"EVS1");
    EXPECT_EQ(Set(group, NumberProperty(L"FailoverThreshold", 3)), 0u);
    EXPECT_EQ(Threshold(group), 3u);
    EXPECT_THAT(ReadModel(), HasSubstr("\"FailoverThreshold\": 3"));
    EXPECT_EQ(Set(group, NumberProperty(L"AutoFailbackType", 2)), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Set(group, NumberProperty(L"Colour", 2)), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(ClusterGroupControl(group, nullptr, CLUSCTL_GROUP_SET_COMMON_PROPERTIES, nullptr, 0, nullptr, 0, nullptr),
              static_cast<DWORD>(RPC_X_BAD_STUB_DATA));
    EXPECT_THAT(ReadModel(), Not(HasSubstr("Colour")));
}

TEST_F(GroupControl, WhatASnapshotCouldNotReadIsRefusedWithItsCode) {
    Load(RefusingCluster);
    const ResourceOwner disk = Resource(L"D");
    const GroupOwner group = Group(L"G");
    const auto codeOf = [&disk](DWORD control) {
        DWORD cb = 0;
        return ClusterResourceControl(disk, nullptr, control, nullptr, 0, nullptr, 0, &cb);
    };
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_GET_CLASS_INFO), 11u);
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES), 12u);
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO), 5004u);
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_GET_ID), 14u);
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES), 16u);
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_GET_RESOURCE_TYPE), 17u);
    EXPECT_EQ(codeOf(CLUSCTL_RESOURCE_GET_NAME), static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(ClusterResourceOpenEnum(disk, CLUSTER_RESOURCE_ENUM_DEPENDS), nullptr);
    EXPECT_EQ(GetLastError(), 13u);
    EXPECT_EQ(ClusterResourceOpenEnum(disk, CLUSTER_RESOURCE_ENUM_NODES), nullptr);
    EXPECT_EQ(GetLastError(), 15u);
    EXPECT_EQ(ListResource(disk, CLUSTER_RESOURCE_ENUM_PROVIDES).size(), 0u);
    Bytes answer;
    EXPECT_EQ(Ask(group, CLUSCTL_GROUP_GET_COMMON_PROPERTIES, answer), 5u);
    EXPECT_EQ(ClusterGroupOpenEnum(group, CLUSTER_GROUP_ENUM_NODES), nullptr);
    EXPECT_EQ(GetLastError(), 70u);
    EXPECT_EQ(ListGroup(group, CLUSTER_GROUP_ENUM_CONTAINS).size(), 1u);
    EXPECT_EQ(LoadError(ReadModel()), "") << "it is written as it was read";
    EXPECT_THAT(ReadModel(), HasSubstr("\"disk\": 5004"));
}

TEST_F(GroupControl, WhatCouldNotBeOpenedOrHasNoStateIsRefusedWithItsCode) {
    Load(R"({"cluster": {"name": "C", "coreGroup": "none"},
             "nodes": [{"name": "N"}, {"name": "S", "unread": {"state": 31}}, {"name": "O", "unread": {"open": 32}}],
             "groups": [{"name": "G", "owner": "N", "unread": {"owner": 33}},
                        {"name": "H", "owner": "N", "unread": {"open": 34}}],
             "resources": [{"name": "R", "type": "IP Address", "id": "1", "group": "G", "unread": {"state": 35}},
                           {"name": "T", "type": "IP Address", "id": "2", "group": "G", "unread": {"open": 36}}]})");
    const NodeOwner node = Node(L"S");
    const GroupOwner group = Group(L"G");
    const ResourceOwner resource = Resource(L"R");
    EXPECT_EQ(GetClusterNodeState(node), ClusterNodeStateUnknown);
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_EQ(OpenClusterNode(m_cluster, L"O"), nullptr);
    EXPECT_EQ(GetLastError(), 32u);
    EXPECT_EQ(GetClusterGroupState(group, nullptr, nullptr), ClusterGroupStateUnknown);
    EXPECT_EQ(GetLastError(), 33u);
    EXPECT_EQ(OpenClusterGroup(m_cluster, L"H"), nullptr);
    EXPECT_EQ(GetLastError(), 34u);
    EXPECT_EQ(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr), ClusterResourceStateUnknown);
    EXPECT_EQ(GetLastError(), 35u);
    EXPECT_EQ(OpenClusterResource(m_cluster, L"T"), nullptr);
    EXPECT_EQ(GetLastError(), 36u);
    EXPECT_EQ(LoadError(ReadModel()), "") << "it is written as it was read";
    EXPECT_THAT(ReadModel(), HasSubstr("\"open\": 32"));
}

TEST_F(GroupControl, WhatCouldNotBeReadOfTheClusterIsRefusedWithItsCode) {
    Load(R"({"cluster": {"name": "C", "coreGroup": "none", "unread": {"networks": 41, "quorum": 42, "version": 43}},
             "nodes": [{"name": "N"}]})");
    for (const DWORD mask : {CLUSTER_ENUM_NETWORK, CLUSTER_ENUM_NETINTERFACE, CLUSTER_ENUM_ALL}) {
        EXPECT_EQ(ClusterOpenEnum(m_cluster, mask), nullptr);
        EXPECT_EQ(GetLastError(), 41u);
    }
    EXPECT_EQ(ListCluster(m_cluster, CLUSTER_ENUM_NODE).size(), 1u);
    wchar_t name[20] = L"";
    wchar_t device[20] = L"";
    DWORD length = 20;
    DWORD deviceLength = 20;
    DWORD type = 0;
    EXPECT_EQ(GetClusterQuorumResource(m_cluster, name, &length, device, &deviceLength, &type), 42u);
    CLUSTERVERSIONINFO version = {};
    version.dwVersionInfoSize = sizeof(version);
    EXPECT_EQ(GetClusterInformation(m_cluster, name, &length, &version), 43u);
    EXPECT_EQ(GetClusterInformation(m_cluster, name, &length, nullptr), 0u) << "the name alone";
    EXPECT_EQ(LoadError(ReadModel()), "") << "it is written as it was read";
    EXPECT_THAT(ReadModel(), HasSubstr("\"quorum\": 42"));
}

TEST_F(GroupControl, OnlyPartsThatThereAreCanBeUnread) {
    EXPECT_EQ(LoadError(Replaced(RefusingCluster, "\"class\": 11", "\"colour\": 11")),
              "resources[0].unread.colour: unknown member");
    EXPECT_EQ(LoadError(Replaced(RefusingCluster, "\"class\": 11", "\"class\": 0")),
              "resources[0].unread.class: a code other than 0 is expected");
}
