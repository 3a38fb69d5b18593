// Dependencies and possible owners.
#include "SimulatorTest.h"

using testing::ElementsAre;

class ResourceRelation : public SimulatorTest {
protected:
    DWORD Add(const wchar_t* resource, const wchar_t* dependsOn) {
        return AddClusterResourceDependency(Resource(resource), Resource(dependsOn));
    }
};

TEST_F(ResourceRelation, ANewDependencyShowsInBothDirections) {
    Load();
    EXPECT_EQ(Add(L"EVS1 Store", L"EVS1 Disk"), 0u);
    EXPECT_THAT(ListResource(Resource(L"EVS1 Store"), CLUSTER_RESOURCE_ENUM_DEPENDS),
                ElementsAre(ListedName{1, L"EVS1 SA"}, ListedName{1, L"EVS1 Disk"}));
    EXPECT_THAT(ListResource(Resource(L"EVS1 Disk"), CLUSTER_RESOURCE_ENUM_PROVIDES),
                ElementsAre(ListedName{2, L"EVS1 SA"}, ListedName{2, L"EVS1 Store"}));
}

TEST_F(ResourceRelation, ADependencyIsRefusedWithTheCodeOfItsReason) {
    Load();
    EXPECT_EQ(Add(L"EVS1 SA", L"EVS1 SA"), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Add(L"EVS1 SA", L"EVS1 Disk"), static_cast<DWORD>(ERROR_DEPENDENCY_ALREADY_EXISTS));
    EXPECT_EQ(Add(L"EVS1 SA", L"EVS1 Store"), static_cast<DWORD>(ERROR_CIRCULAR_DEPENDENCY));
    EXPECT_EQ(Add(L"EVS1 IP", L"EVS1 Store"), static_cast<DWORD>(ERROR_CIRCULAR_DEPENDENCY));
    EXPECT_EQ(Add(L"EVS1 SA", L"EVS2 IP"), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Add(L"EVS1 Name", L"EVS1 Disk"), static_cast<DWORD>(ERROR_RESOURCE_ONLINE));
}

TEST_F(ResourceRelation, Since2008AnOnlineResourceMayDependOnAnOnlineOne) {
    Load(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"protocol\": 2008}"));
    EXPECT_EQ(Add(L"EVS1 Name", L"EVS1 Disk"), 0u);
    const ResourceOwner made(CreateClusterResource(Group(L"EVS1"), L"New", L"IP Address", 0));
    EXPECT_EQ(Add(L"EVS1 Name", L"New"), static_cast<DWORD>(ERROR_RESOURCE_ONLINE));
}

TEST_F(ResourceRelation, ARemovedDependencyIsGone) {
    Load();
    const ResourceOwner attendant = Resource(L"EVS1 SA");
    const ResourceOwner disk = Resource(L"EVS1 Disk");
    EXPECT_EQ(RemoveClusterResourceDependency(attendant, disk), 0u);
    EXPECT_EQ(ListResource(disk, CLUSTER_RESOURCE_ENUM_PROVIDES).size(), 0u);
    EXPECT_EQ(RemoveClusterResourceDependency(attendant, disk), static_cast<DWORD>(ERROR_DEPENDENCY_NOT_FOUND));
}

TEST_F(ResourceRelation, ANodeBecomesAPossibleOwnerOnce) {
    Load();
    EXPECT_EQ(AddClusterResourceNode(Resource(L"EVS1 SA"), Node(L"NODE-A")),
              static_cast<DWORD>(ERROR_OBJECT_ALREADY_EXISTS));
    EXPECT_EQ(AddClusterResourceNode(Resource(L"EVS1 SA"), Node(L"NODE-C")), 0u);
    EXPECT_THAT(ListResource(Resource(L"EVS1 SA"), CLUSTER_RESOURCE_ENUM_NODES),
                ElementsAre(ListedName{4, L"NODE-A"}, ListedName{4, L"NODE-C"}));
    EXPECT_EQ(AddClusterResourceNode(Resource(L"EVS1 IP"), Node(L"NODE-B")),
              static_cast<DWORD>(ERROR_OBJECT_ALREADY_EXISTS))
        << "all nodes own a resource that names none";
}
