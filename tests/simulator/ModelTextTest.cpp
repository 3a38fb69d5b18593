// Malformed models: each is refused with a message that names the place.
#include "SimulatorTest.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class ModelText : public SimulatorTest {
protected:
    // What is said about the mail cluster with one change.
    static std::string ErrorOf(const std::string& from, const std::string& to) {
        return LoadError(Replaced(MailCluster, from, to));
    }
};

TEST_F(ModelText, SyntaxErrorsNameLineAndColumn) {
    EXPECT_THAT(LoadError("{\n  \"cluster\": {,}\n}"), AllOf(HasSubstr("line 2"), HasSubstr("column 15")));
    EXPECT_THAT(LoadError(""), HasSubstr("line 1"));
    EXPECT_THAT(LoadError(std::string(MailCluster).substr(0, 321)), HasSubstr("line 8"));
    EXPECT_NE(LoadError("\"\xFF\""), "");
    EXPECT_NE(LoadError("[]"), "");
}

TEST_F(ModelText, UnknownMembersAreNamed) {
    EXPECT_EQ(ErrorOf("\"cluster\":", "\"colour\": 1, \"cluster\":"), "colour: unknown member");
    EXPECT_EQ(ErrorOf("\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"run\": true"), "cluster.run: unknown member");
    EXPECT_EQ(ErrorOf("\"F:\",", "\"F:\", \"size\": 1,"), "resources[2].disk.partitions[0].size: unknown member");
    EXPECT_EQ(ErrorOf("\"NODE-A\"}", "\"NODE-A\", \"State\": \"up\"}"), "nodes[0].State: unknown member");
}

TEST_F(ModelText, SettingsAreTextsAndNumbers) {
    const auto errorOf = [](const std::string& settings) {
        return ErrorOf("\"cluster\":", "\"settings\": " + settings + ", \"cluster\":");
    };
    EXPECT_EQ(errorOf("1"), "settings: an object is expected");
    EXPECT_EQ(errorOf("[]"), "settings: an object is expected");
    for (const char* value : {"null", "true", "-1", "1.5", "[1]", "{}"}) {
        EXPECT_EQ(errorOf(std::string("{\"IsCluster\": ") + value + "}"),
                  "settings.IsCluster: a text or a number is expected");
    }
    EXPECT_EQ(errorOf("{\"Any\": 1, \"any\": \"text\"}"), "");
}

TEST_F(ModelText, AMemberThatStandsTwiceIsNamed) {
    EXPECT_EQ(ErrorOf("\"state\": \"down\"", "\"state\": \"down\", \"state\": \"up\""),
              "nodes[1].state: the member stands twice");
    EXPECT_EQ(ErrorOf("\"Name\": \"MAIL1\"", "\"Name\": \"MAIL1\", \"NAME\": \"MAIL2\""),
              "resources[1].private.NAME: the property stands twice");
}

TEST_F(ModelText, MissingMembersAreNamed) {
    EXPECT_EQ(LoadError("{}"), "cluster: missing");
    EXPECT_EQ(ErrorOf("\"name\": \"MAILCLUSTER\", ", ""), "cluster.name: a text is expected");
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2\", ", ""), "groups[1].name: a text is expected");
    EXPECT_EQ(ErrorOf(", \"owner\": \"NODE-C\"", ""), "groups[1].owner: a text is expected");
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2 IP\", ", ""), "resources[5].name: a text is expected");
    EXPECT_EQ(ErrorOf("\"device\": \"F:\", ", ""), "resources[2].disk.partitions[0].device: a text is expected");
    EXPECT_EQ(LoadError(R"({"cluster": {"name": "C"}})"), "nodes: at least one node is expected");
}

TEST_F(ModelText, NamesAreNeverEmpty) {
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2\"", "\"name\": \"\""), "groups[1].name: a name is expected");
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2 IP\"", "\"name\": \"  \""), "resources[5].name: a name is expected");
}

TEST_F(ModelText, DanglingNamesAreNamed) {
    EXPECT_EQ(ErrorOf("\"owner\": \"NODE-C\"", "\"owner\": \"NODE-X\""), "groups[1].owner: there is no node NODE-X");
    EXPECT_EQ(ErrorOf("[\"NODE-B\", \"NODE-A\"]", "[\"NODE-B\", \"NODE-X\"]"),
              "groups[0].preferredOwners[1]: there is no node NODE-X");
    EXPECT_EQ(ErrorOf("\"possibleOwners\": [\"NODE-A\"]", "\"possibleOwners\": [\"NODE-X\"]"),
              "resources[3].possibleOwners[0]: there is no node NODE-X");
    EXPECT_EQ(ErrorOf("\"group\": \"EVS2\"", "\"group\": \"EVS9\""), "resources[5].group: there is no group EVS9");
    EXPECT_EQ(ErrorOf("[\"EVS1 SA\"]", "[\"EVS1 XX\"]"), "resources[4].dependsOn[0]: there is no resource EVS1 XX");
    EXPECT_EQ(ErrorOf("\"Network Name\"", "\"Netzwerkname\""),
              "resources[1].type: there is no resource type Netzwerkname");
}

TEST_F(ModelText, DuplicateNamesAreNamed) {
    EXPECT_EQ(ErrorOf("\"name\": \"NODE-B\"", "\"name\": \"node-a\""), "nodes[1].name: the node stands twice");
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2\"", "\"name\": \"evs1\""), "groups[1].name: the group stands twice");
    const char* const taken = "resources[5].name: the name or the id is taken by another resource";
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2 IP\"", "\"name\": \"evs1 ip\""), taken);
    EXPECT_EQ(ErrorOf("-000000000006\"", "-000000000005\""), taken);
    EXPECT_EQ(ErrorOf("\"name\": \"EVS2 IP\"", "\"name\": \"aaaaaaaa-0000-0000-0000-000000000001\""), taken);
    EXPECT_EQ(ErrorOf("[\"NODE-A\"]", "[\"NODE-A\", \"node-a\"]"),
              "resources[3].possibleOwners[1]: the node stands twice");
    EXPECT_EQ(ErrorOf("\"nodes\":", R"("resourceTypes": [{"name": "A"}, {"name": "a"}], "nodes":)"),
              "resourceTypes[1].name: the type stands twice");
}

TEST_F(ModelText, DependenciesStayInTheGroupAndHaveNoCycle) {
    EXPECT_EQ(ErrorOf("[\"EVS1 SA\"]", "[\"EVS2 IP\"]"), "resources[4].dependsOn[0]: EVS2 IP is in another group");
    EXPECT_EQ(ErrorOf("[\"EVS1 SA\"]", "[\"EVS1 SA\", \"evs1 sa\"]"),
              "resources[4].dependsOn[1]: the dependency stands twice");
    EXPECT_EQ(ErrorOf("[\"EVS1 SA\"]", "[\"EVS1 Store\"]"), "resources[4].dependsOn[0]: the dependency closes a cycle");
    EXPECT_EQ(ErrorOf("[\"EVS1 IP\"]", "[\"EVS1 Store\"]"), "resources[4].dependsOn[0]: the dependency closes a cycle");
}

TEST_F(ModelText, ValuesOutOfRangeAreNamed) {
    EXPECT_EQ(ErrorOf("\"state\": \"down\"", "\"state\": \"off\""),
              "nodes[1].state: up, down, paused or joining is expected");
    EXPECT_EQ(ErrorOf("\"group\": \"EVS2\"", "\"group\": \"EVS2\", \"state\": \"Sleeping\""),
              "resources[5].state: there is no state Sleeping");
    EXPECT_THAT(ErrorOf("\"number\": 2", "\"number\": -2"), StartsWith("resources[2].disk.number: a whole number"));
    EXPECT_THAT(ErrorOf("287454020", "4294967296"), StartsWith("resources[2].disk.signature: a whole number"));
    EXPECT_EQ(ErrorOf("\"number\": 2", "\"guid\": \"{1}\""), "resources[2].disk: a disk has a signature or a guid");
    EXPECT_THAT(ErrorOf("\"MAIL1\"", "1.5"), StartsWith("resources[1].private.Name: a text, a number"));
    EXPECT_THAT(ErrorOf("\"MAIL1\"", "{\"binary\": \"0\"}"), StartsWith("resources[1].private.Name.binary: pairs"));
    EXPECT_EQ(ErrorOf("[\"NODE-A\"]", "[]"), "resources[3].possibleOwners: at least one node is expected");
    EXPECT_EQ(ErrorOf("\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"protocol\": 2012}"),
              "cluster.behaviour.protocol: 2003 or 2008 is expected");
    EXPECT_EQ(ErrorOf("\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"downOwners\": \"perhaps\"}"),
              "cluster.behaviour.downOwners: \"refused\" or \"accepted\" is expected");
    EXPECT_EQ(ErrorOf("\"nodes\":", "\"faults\": [\"Nonsense\"], \"nodes\":"),
              "faults[0]: a fault like call@object#n=code is expected");
    EXPECT_EQ(ErrorOf("\"device\": \"F:\"", "\"device\": \"" + std::string(260, 'x') + "\""),
              "resources[2].disk.partitions[0]: at most 259 characters fit");
}

TEST_F(ModelText, AGroupOfANodeThatIsDownIsRefusedUnlessTheClusterHasNotNoticed) {
    const std::string name = "\"MAILCLUSTER\"";
    const std::string down = Replaced(MailCluster, "\"owner\": \"NODE-C\"", "\"owner\": \"NODE-B\"");
    EXPECT_EQ(LoadError(down), "groups[1].owner: the node NODE-B is down and owns no group");
    EXPECT_EQ(LoadError(Replaced(down, "\"state\": \"down\"", "\"state\": \"joining\"")),
              "groups[1].owner: the node NODE-B is joining and owns no group");
    EXPECT_EQ(LoadError(Replaced(down, name, name + ", \"behaviour\": {\"downOwners\": \"accepted\"}")), "");
}

TEST_F(ModelText, FurtherTypesJoinTheBuiltInOnesOrReplaceThem) {
    Load(Replaced(MailCluster, "\"nodes\":",
                  R"("resourceTypes": [{"name": "Vendor Volume", "class": 1}, {"name": "ip address", "class": 7}],
                     "nodes":)"));
    const ResourceOwner made(CreateClusterResource(Group(L"EVS1"), L"V", L"Vendor Volume", 0));
    EXPECT_EQ(Control(made, CLUSCTL_RESOURCE_GET_CLASS_INFO)[0], 1u);
    EXPECT_EQ(Control(Resource(L"EVS1 IP"), CLUSCTL_RESOURCE_GET_CLASS_INFO)[0], 7u);
}
