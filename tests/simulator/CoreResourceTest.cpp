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

TEST_F(CoreResource, TellsByItsFlagsThatItIsOne) {
    LoadCore();
    const Bytes no = {0, 0, 0, 0};
    const Bytes yes = {1, 0, 0, 0};
    EXPECT_EQ(Control(Resource(L"Name"), CLUSCTL_RESOURCE_GET_FLAGS), yes);
    EXPECT_EQ(Control(Resource(L"Own"), CLUSCTL_RESOURCE_GET_FLAGS), no);
    EXPECT_EQ(Control(Resource(L"Quorum"), CLUSCTL_RESOURCE_GET_CHARACTERISTICS), yes) << "may hold a quorum";
    EXPECT_EQ(Control(Resource(L"Name"), CLUSCTL_RESOURCE_GET_CHARACTERISTICS), no);
}

TEST_F(CoreResource, Since2008AProbeOfItsFlagsSucceeds) {
    LoadCore(R"(, "behaviour": {"protocol": 2008})");
    for (const DWORD code : {CLUSCTL_RESOURCE_GET_FLAGS, CLUSCTL_RESOURCE_GET_CHARACTERISTICS}) {
        DWORD cb = 0;
        EXPECT_EQ(ClusterResourceControl(Resource(L"Name"), nullptr, code, nullptr, 0, nullptr, 0, &cb), 0u);
        EXPECT_EQ(cb, 4u);
    }
}

TEST_F(CoreResource, TellsWhatItsTypeRequires) {
    LoadCore();
    Bytes expected;
    AppendEntry(expected, CLUSPROP_SYNTAX_NAME, TextOf(L"IP Address"));
    Append(expected, CLUSPROP_SYNTAX_ENDMARK);
    EXPECT_EQ(Control(Resource(L"Name"), CLUSCTL_RESOURCE_GET_REQUIRED_DEPENDENCIES), expected);
    EXPECT_EQ(Control(Resource(L"Address"), CLUSCTL_RESOURCE_GET_REQUIRED_DEPENDENCIES), Bytes(4));
}

TEST_F(CoreResource, ListsTheNamesOfItsProperties) {
    LoadCore(R"(, "behaviour": {"protocol": 2008})");
    const auto texts = [](const Bytes& bytes) {
        std::wstring text;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto c = static_cast<wchar_t>(bytes[i] | bytes[i + 1] << 8);
            text += c == L'\0' ? L'|' : c;
        }
        return text;
    };
    EXPECT_EQ(texts(Control(Resource(L"Name"), CLUSCTL_RESOURCE_ENUM_COMMON_PROPERTIES)),
              L"Description|DebugPrefix|SeparateMonitor|PersistentState|LooksAlivePollInterval|IsAlivePollInterval|"
              L"RestartAction|RestartThreshold|RestartPeriod|RetryPeriodOnFailure|PendingTimeout|DeadlockTimeout||");
    EXPECT_EQ(texts(Control(Resource(L"Name"), CLUSCTL_RESOURCE_ENUM_PRIVATE_PROPERTIES)), L"|");
    EXPECT_EQ(Control(Resource(L"Name"), CLUSCTL_RESOURCE_GET_RO_PRIVATE_PROPERTIES), Bytes(4));
}

TEST_F(CoreResource, CommonPropertiesAreValidatedWithoutBeingSet) {
    LoadCore();
    const auto list = [](const wchar_t* name, DWORD value) {
        Bytes bytes;
        Append(bytes, 1);
        AppendEntry(bytes, CLUSPROP_SYNTAX_NAME, TextOf(name));
        Bytes number;
        Append(number, value);
        AppendEntry(bytes, CLUSPROP_SYNTAX_LIST_VALUE_DWORD, number);
        Append(bytes, CLUSPROP_SYNTAX_ENDMARK);
        return bytes;
    };
    const DWORD validate = CLUSCTL_RESOURCE_VALIDATE_COMMON_PROPERTIES;
    EXPECT_EQ(SetControl(Resource(L"Own"), validate, list(L"RestartAction", 1)), 0u);
    EXPECT_EQ(SetControl(Resource(L"Own"), validate, list(L"RestartAction", 3)),
              static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(SetControl(Resource(L"Own"), validate, list(L"Colour", 1)), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(ReadModel().find("RestartAction"), std::string::npos);
}
