// Rules of the cluster's own resources, of types that not every node has, and of deep dependencies.
#include "SimulatorTest.h"

using testing::HasSubstr;

class CoreResource : public SimulatorTest {
protected:
    void LoadCore(const std::string& behaviour = "") {
        Load(R"({"cluster": {"name": "C")" + behaviour + R"(},
                 "resourceTypes": [{"name": "Vendor", "nodes": ["N1"]}],
                 "nodes": [{"name": "N1"}, {"name": "N2"}], "groups": [{"name": "G", "owner": "N1"}],
                 "resources": [
                   {"name": "Quorum", "type": "Physical Disk", "id": "1", "group": "G", "quorum": true},
                   {"name": "Address", "type": "IP Address", "id": "2", "group": "G", "core": true},
                   {"name": "Name", "type": "Network Name", "id": "3", "group": "G", "core": true},
                   {"name": "Own", "type": "Vendor", "id": "4", "group": "G", "possibleOwners": ["N1"]}]})");
    }
};

TEST_F(CoreResource, IsNotDeleted) {
    LoadCore();
    for (const wchar_t* const name : {L"Quorum", L"Address", L"Name"}) {
        EXPECT_EQ(DeleteClusterResource(Resource(name)), static_cast<DWORD>(ERROR_CORE_RESOURCE)) << name;
    }
    EXPECT_EQ(AddClusterResourceDependency(Resource(L"Name"), Resource(L"Address")), 0u);
    EXPECT_EQ(DeleteClusterResource(Resource(L"Address")), static_cast<DWORD>(ERROR_DEPENDENT_RESOURCE_EXISTS))
        << "who depends on it is looked for first";
    EXPECT_THAT(ReadModel(), HasSubstr("\"quorum\": true"));
}

TEST_F(CoreResource, TheQuorumDependsOnNothing) {
    LoadCore();
    EXPECT_EQ(AddClusterResourceDependency(Resource(L"Quorum"), Resource(L"Address")), 5069u);
    EXPECT_EQ(AddClusterResourceDependency(Resource(L"Address"), Resource(L"Quorum")), 0u);
}

TEST_F(CoreResource, ANodeWithoutTheTypeDoesNotBecomeAnOwner) {
    LoadCore();
    EXPECT_EQ(AddClusterResourceNode(Resource(L"Own"), Node(L"N2")), 5079u);
    EXPECT_EQ(AddClusterResourceNode(Resource(L"Own"), Node(L"N1")), static_cast<DWORD>(ERROR_OBJECT_ALREADY_EXISTS));
    EXPECT_EQ(LoadError(R"({"cluster": {"name": "C"}, "nodes": [{"name": "N1"}],
                            "resourceTypes": [{"name": "Vendor", "nodes": ["N9"]}]})"),
              "resourceTypes[0].nodes[0]: there is no node N9");
}

TEST_F(CoreResource, Since2008DependenciesAreAHundredDeepAtMost) {
    for (const bool is2008 : {false, true}) {
        LoadCore(is2008 ? R"(, "behaviour": {"protocol": 2008})" : "");
        const auto name = [](int i) { return L"R" + std::to_wstring(i); };
        for (int i = 0; i <= 100; ++i) {
            const ResourceOwner made(CreateClusterResource(Group(L"G"), name(i).c_str(), L"Generic Service", 0));
            const DWORD code = i == 0 ? 0 : AddClusterResourceDependency(made, Resource(name(i - 1).c_str()));
            EXPECT_EQ(code, is2008 && i == 100 ? 5929u : 0u) << i;
        }
    }
}
