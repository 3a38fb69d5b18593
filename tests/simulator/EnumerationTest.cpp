#include "SimulatorTest.h"

using testing::ElementsAre;

class Enumeration : public SimulatorTest {};

TEST_F(Enumeration, KindsComeByAscendingBitAndInTheOrderOfTheModel) {
    Load();
    EXPECT_THAT(ListCluster(m_cluster, CLUSTER_ENUM_GROUP | CLUSTER_ENUM_NODE),
                ElementsAre(ListedName{1, L"NODE-A"}, ListedName{1, L"NODE-B"}, ListedName{1, L"NODE-C"},
                            ListedName{8, L"EVS1"}, ListedName{8, L"EVS2"}));
    EXPECT_THAT(ListCluster(m_cluster, CLUSTER_ENUM_RESOURCE),
                ElementsAre(ListedName{4, L"EVS1 IP"}, ListedName{4, L"EVS1 Name"}, ListedName{4, L"EVS1 Disk"},
                            ListedName{4, L"EVS1 SA"}, ListedName{4, L"EVS1 Store"}, ListedName{4, L"EVS2 IP"}));
    EXPECT_EQ(ListCluster(m_cluster, CLUSTER_ENUM_RESTYPE).size(), 10u);
    EXPECT_EQ(ListCluster(m_cluster, CLUSTER_ENUM_NETWORK).size(), 0u);
}

TEST_F(Enumeration, UnknownMaskBitsAreInvalid) {
    Load();
    for (const DWORD mask : {0x40u, 0x80u, 0x104u, 0u}) {
        EXPECT_EQ(ClusterOpenEnum(m_cluster, mask), nullptr) << mask;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
    const ResourceOwner resource = Resource(L"EVS1 IP");
    for (const DWORD mask : {0u, 8u, 9u}) {
        EXPECT_EQ(ClusterResourceOpenEnum(resource, mask), nullptr) << mask;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
    EXPECT_EQ(ListGroup(Group(L"EVS1"), 0x100).size(), 0u) << "groups ignore unknown bits";
}

TEST_F(Enumeration, AnEmptyMaskIsAnEmptyListWhenTheModelSaysSo) {
    Load(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"enumMaskZero\": \"empty\"}"));
    EXPECT_EQ(ListCluster(m_cluster, 0).size(), 0u);
}

TEST_F(Enumeration, GroupsListTheirResourcesAndPreferredOwners) {
    Load();
    EXPECT_THAT(ListGroup(Group(L"EVS1"), CLUSTER_GROUP_ENUM_NODES),
                ElementsAre(ListedName{2, L"NODE-B"}, ListedName{2, L"NODE-A"}));
    EXPECT_THAT(ListGroup(Group(L"EVS2"), CLUSTER_GROUP_ENUM_CONTAINS | CLUSTER_GROUP_ENUM_NODES),
                ElementsAre(ListedName{1, L"EVS2 IP"}));
}

TEST_F(Enumeration, ResourcesListBothDirectionsAndTheirPossibleOwners) {
    Load();
    EXPECT_THAT(ListResource(Resource(L"EVS1 SA"), 7),
                ElementsAre(ListedName{1, L"EVS1 Name"}, ListedName{1, L"EVS1 Disk"}, ListedName{2, L"EVS1 Store"},
                            ListedName{4, L"NODE-A"}));
    EXPECT_EQ(ListResource(Resource(L"EVS1 IP"), CLUSTER_RESOURCE_ENUM_NODES).size(), 3u);
}

TEST_F(Enumeration, ANameFitsWithItsTerminatorAndNotOneShort) {
    Load();
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE);
    wchar_t name[10];
    std::fill(std::begin(name), std::end(name), L'#');
    DWORD type = 99;
    DWORD cch = 6;
    EXPECT_EQ(ClusterEnum(list, 0, &type, name, &cch), static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(cch, 6u);
    EXPECT_EQ(name[0], L'#');
    cch = 7;
    EXPECT_EQ(ClusterEnum(list, 0, &type, name, &cch), 0u);
    EXPECT_EQ(cch, 6u);
    EXPECT_EQ(type, 1u);
    EXPECT_STREQ(name, L"NODE-A");
    EXPECT_EQ(name[7], L'#');
    // A count of bytes passed as characters must do no harm.
    cch = 1000;
    EXPECT_EQ(ClusterEnum(list, 1, &type, name, &cch), 0u);
    EXPECT_EQ(name[7], L'#');
    EXPECT_EQ(ClusterCloseEnum(list), 0u);
}

TEST_F(Enumeration, WithoutABufferTheLengthIsTold) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 SA");
    const HRESENUM list = ClusterResourceOpenEnum(resource, CLUSTER_RESOURCE_ENUM_DEPENDS);
    DWORD cch = 0;
    DWORD type = 0;
    EXPECT_EQ(ClusterResourceEnum(list, 0, &type, nullptr, &cch), 0u);
    EXPECT_EQ(cch, 9u);
    EXPECT_EQ(ClusterResourceEnum(list, 2, &type, nullptr, &cch), static_cast<DWORD>(ERROR_NO_MORE_ITEMS));
    EXPECT_EQ(ClusterResourceCloseEnum(list), 0u);
}

TEST_F(Enumeration, AListIsTakenWhenItIsOpened) {
    Load();
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_RESOURCE);
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS2 IP")), 0u);
    wchar_t name[32];
    DWORD cch = 32;
    DWORD type = 0;
    EXPECT_EQ(ClusterEnum(list, 5, &type, name, &cch), 0u);
    EXPECT_STREQ(name, L"EVS2 IP");
    EXPECT_EQ(OpenClusterResource(m_cluster, name), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
    EXPECT_EQ(ClusterCloseEnum(list), 0u);
}

TEST_F(Enumeration, EnumeratorsOfDifferentKindsDoNotMix) {
    Load();
    const GroupOwner group = Group(L"EVS1");
    const HGROUPENUM list = ClusterGroupOpenEnum(group, 1);
    const HCLUSENUM mistaken = reinterpret_cast<HCLUSENUM>(list);
    DWORD cch = 0;
    EXPECT_EQ(ClusterEnum(mistaken, 0, nullptr, nullptr, &cch), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(ClusterCloseEnum(mistaken), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(ClusterGroupCloseEnum(list), 0u);
    EXPECT_EQ(ClusterGroupCloseEnum(list), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    ExpectBadHandleCalls(3);
}
