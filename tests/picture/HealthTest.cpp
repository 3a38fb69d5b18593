#include "PictureBuilder.h"

#include "picture/Changes.h"
#include "picture/Health.h"

#include <gtest/gtest.h>

using namespace picture;

namespace {

typedef std::vector<std::string> Texts;

// A virtual server that is as it should be.
class Server : public ::testing::Test {
protected:
    Server() {
        m_built.Add("Name", {"Address"}, Role::NetworkName).Add("Store", {"Name"}, Role::Store);
        m_built.Add("Address", {}, Role::Address).Add("Gate", {"Store", "Name"}, Role::Product);
        m_built.Cluster().resources[0].networkName = "MAIL1";
        m_built.Cluster().nodes = {{"N", "up", true}};
        m_built.Cluster().name = "C";
    }

    void Set(const std::string& resource, const std::string& state, Condition condition) {
        for (Resource& each : m_built.Cluster().resources) {
            if (each.name == resource) {
                each.state = state;
                each.condition = condition;
            }
        }
    }
    void Remove(const std::string& resource) {
        std::vector<Resource>& all = m_built.Cluster().resources;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (all[i].name == resource) {
                all.erase(all.begin() + static_cast<std::ptrdiff_t>(i));
                return;
            }
        }
    }
    Health Found(bool isComplete = true) {
        return HealthOf(m_built.Cluster(), isComplete);
    }
    Texts Problems() {
        Texts texts;
        for (const Problem& problem : Found().problems) {
            texts.push_back(std::string(NameOf(problem.level)) + " " + problem.object + ": " + problem.text);
        }
        return texts;
    }

    PictureBuilder m_built;
};

} // namespace

TEST_F(Server, ThatIsAsItShouldBeIsProtected) {
    const Health health = Found();
    EXPECT_EQ(Problems(), Texts());
    EXPECT_EQ(health.level, Level::Ok);
    ASSERT_EQ(health.servers.size(), 1U);
    EXPECT_EQ(health.servers[0].name, "MAIL1");
    EXPECT_EQ(health.servers[0].product, "online");
    EXPECT_TRUE(health.servers[0].isInOrder);
    EXPECT_TRUE(health.servers[0].isProtected);
    EXPECT_EQ(health.serversProtected, 1U);
    EXPECT_EQ(health.nodesUp, 1U);
}

TEST_F(Server, WhoseProductIsOfflineIsCritical) {
    Set("Gate", "offline", Condition::Offline);
    EXPECT_EQ(Problems(), Texts{"critical Gate: the product's resource is offline, and its virtual server is not"});
    EXPECT_EQ(Found().servers[0].product, "offline");
    EXPECT_FALSE(Found().servers[0].isProtected);
}

TEST_F(Server, WhoseProductIsMissingIsAWarning) {
    Remove("Gate");
    EXPECT_EQ(Problems(), Texts{"warning G: the product's resources are missing in the virtual server's group"});
    EXPECT_EQ(Found().servers[0].product, "missing");
}

TEST_F(Server, WhoseProductRestsOnTooLittleIsNotInOrder) {
    m_built.Cluster().resources.back().dependsOn = {"Name"};
    EXPECT_EQ(Problems(), Texts{"warning Gate: it does not depend on the server's Information Store"});
    EXPECT_FALSE(Found().servers[0].isInOrder);
    EXPECT_TRUE(Found().servers[0].isProtected);
    m_built.Cluster().resources.back().dependsOn = {"Store"}; // and the name only by that
    EXPECT_EQ(Problems(),
              Texts{"critical Gate: it does not depend on the server's network name: the library finds no server"});
    EXPECT_FALSE(Found().servers[0].isProtected);
    m_built.Cluster().resources.back().hasDependenciesRead = false; // nobody knows
    EXPECT_TRUE(Found().servers[0].isInOrder);
}

TEST_F(Server, ThatIsOfflineIsToldOnce) {
    for (const char* const name : {"Name", "Store", "Gate"}) {
        Set(name, "offline", Condition::Offline);
    }
    m_built.Cluster().groups[0].state = "offline";
    m_built.Cluster().groups[0].condition = Condition::Offline;
    EXPECT_EQ(Problems(), Texts{"critical G: the virtual server is offline"});
    EXPECT_EQ(Found().serversOnline, 0U);
}

TEST_F(Server, OfWhichTheGroupCannotBeReadIsOfflineWhereNothingIsOnline) {
    m_built.Cluster().groups[0].condition = Condition::Unknown;
    Set("Store", "offline", Condition::Offline);
    EXPECT_EQ(Problems(), (Texts{"critical Store: the resource is offline, and its virtual server is not",
                                 "unknown G: its state is not known"}));
    for (const char* const name : {"Address", "Name", "Gate"}) {
        Set(name, "offline", Condition::Offline);
    }
    EXPECT_EQ(Problems(), Texts{"unknown G: its state is not known"});
}

TEST_F(Server, TheWorstComesFirst) {
    m_built.Cluster().nodes.push_back({"N2", "down", false});
    Set("Store", "failed", Condition::Failed);
    Set("Gate", "online pending", Condition::Pending);
    EXPECT_EQ(Problems(), (Texts{"critical Store: the resource is failed", "warning N2: the node is down",
                                 "warning Gate: the resource is online pending"}));
    EXPECT_EQ(Found().level, Level::Critical);
    EXPECT_EQ(Found().resourcesFailed, 1U);
    EXPECT_EQ(Found().resourcesPending, 1U);
}

TEST_F(Server, WhatCannotBeReadIsUnknown) {
    EXPECT_EQ(Found(false).level, Level::Unknown);
    Set("Gate", "unknown", Condition::Unknown);
    EXPECT_EQ(Problems(), Texts{"unknown Gate: its state is not known"});
    EXPECT_EQ(Found().servers[0].product, "unknown");
}

TEST_F(Server, OnVcsLacksServices) {
    ClusterPicture& cluster = m_built.Cluster();
    cluster.kind = Kind::Vcs;
    cluster.productServices = {"Host", "Second"};
    cluster.resources.back().service = "Host";
    EXPECT_EQ(Problems(), Texts{"critical G: the product's \"G-Second\" is missing"});
    EXPECT_EQ(Found().servers[0].product, "incomplete");
    cluster.groups[0].states = {{"N", "ONLINE"}, {"N2", "OFFLINE|FAULTED"}};
    EXPECT_EQ(Problems().back(), "warning G: it cannot go to N2, where it is faulted");
}

TEST_F(Server, OnVcsIsToldOfWhatIsFaultedElsewhere) {
    ClusterPicture& cluster = m_built.Cluster();
    cluster.kind = Kind::Vcs;
    cluster.groups[0].states = {{"N", "ONLINE"}, {"N2", "OFFLINE"}};
    cluster.resources[1].states = {{"N", "ONLINE"}, {"N2", "FAULTED"}};
    EXPECT_EQ(Problems(), Texts{"warning Store: the resource is faulted on N2"});
    cluster.groups[0].states[1].state = "OFFLINE|FAULTED"; // says it for all of it
    EXPECT_EQ(Problems(), Texts{"warning G: it cannot go to N2, where it is faulted"});
}

TEST_F(Server, OnVcsIsToldOfWhatIsSwitchedOff) {
    ClusterPicture& cluster = m_built.Cluster();
    cluster.kind = Kind::Vcs;
    cluster.groups[0].isFrozenForNow = true;
    cluster.groups[0].disabledOn = {"N2"};
    cluster.resources.back().isEnabled = false;
    EXPECT_EQ(Problems(), (Texts{"warning G: the group is frozen: VCS does nothing when it fails",
                                 "warning G: the group is disabled on N2, and cannot come online there",
                                 "warning Gate: the resource is disabled: VCS does not look at it"}));
    EXPECT_TRUE(Found().servers[0].isProtected);
    EXPECT_EQ(Found().servers[0].level, Level::Warning);
}

TEST_F(Server, OfAnOwnerInAnotherLetterCaseIsNotProtected) {
    m_built.Cluster().groups[0].isOwnerMisspelt = true;
    EXPECT_EQ(Problems(), Texts{"critical Gate: its owner \"N\" is this computer in another letter case: the library "
                                "serves nothing of it here"});
    EXPECT_FALSE(Found().servers[0].isProtected);
    Remove("Gate"); // nothing of it could be served
    EXPECT_EQ(Problems(), Texts{"warning G: the product's resources are missing in the virtual server's group"});
}

TEST_F(Server, WithoutNetworkNameIsNotProtected) {
    Remove("Name");
    m_built.Cluster().resources[0].dependsOn.clear();
    m_built.Cluster().resources.back().dependsOn = {"Store"};
    EXPECT_EQ(Problems(), Texts{"critical G: the virtual server has no network name"});
    EXPECT_FALSE(Found().servers[0].isProtected);
    EXPECT_EQ(Found().problems[0].code, std::string("network-name-missing"));
}

TEST_F(Server, WhoseNetworkNameHasNoAddressIsNotProtected) {
    Resource& name = m_built.Cluster().resources[0];
    name.dependsOn = {"Store"};
    EXPECT_EQ(Problems(),
              Texts{"critical Gate: its network name depends on no IP address: the library finds no server"});
    EXPECT_FALSE(Found().servers[0].isProtected);
    EXPECT_EQ(Found().serversProtected, 0U);
    m_built.Cluster().leftOut = {{"Gate", "of this"}}; // which is told already
    EXPECT_EQ(Problems().size(), 1U);
    m_built.Cluster().leftOut.clear();
    name.hasDependenciesRead = false; // it may depend on one
    EXPECT_EQ(Problems(), Texts());
    name.hasDependenciesRead = true;
    name.dependsOn = {"Not read"};
    EXPECT_EQ(Problems(), Texts());
    EXPECT_TRUE(Found().servers[0].isProtected);
}

TEST_F(Server, WhoseAddressIsOfflineIsAWarning) {
    Set("Address", "offline", Condition::Offline);
    EXPECT_EQ(Problems(), Texts{"warning Address: the resource is offline, and its virtual server is not"});
}

TEST_F(Server, ThatTheLibraryLeavesOutIsNotProtected) {
    m_built.Cluster().leftOut = {{"Gate", "it has no path"}, {"Of another group", "too"}};
    EXPECT_EQ(Problems(), Texts{"critical Gate: the library leaves its server out: it has no path"});
    EXPECT_EQ(Found().problems[0].code, std::string("server-left-out"));
    EXPECT_EQ(Found().servers[0].product, "online");
    EXPECT_FALSE(Found().servers[0].isProtected);
}

TEST_F(Server, OnANodeThatIsAPlainServerIsNotProtected) {
    m_built.AddGroup("G2").Add("Store 2", {}, Role::Store).Add("Gate 2", {"Store 2"}, Role::Product);
    m_built.Add("Address 2", {}, Role::Address).Add("Name 2", {"Address 2"}, Role::NetworkName);
    m_built.Cluster().resources[5].dependsOn = {"Store 2", "Name 2"};
    m_built.Cluster().groups[1].node = "N2";
    m_built.Cluster().plainNode = "N";
    EXPECT_EQ(Problems(), Texts{"critical N: the product takes the node for a plain server, for IsCluster is not 1: no "
                                "virtual server is served there"});
    const Health found = Found();
    ASSERT_EQ(found.servers.size(), 2U);
    EXPECT_EQ(found.servers[0].group, "G");
    EXPECT_EQ(found.servers[0].level, Level::Critical);
    EXPECT_FALSE(found.servers[0].isProtected);
    EXPECT_TRUE(found.servers[1].isProtected); // by what is known of the other node
}

TEST_F(Server, OnVcsWithoutStoreIsNotProtected) {
    m_built.Cluster().kind = Kind::Vcs;
    Remove("Store");
    m_built.Cluster().resources.back().dependsOn = {"Name"};
    EXPECT_EQ(Problems(),
              Texts{"critical G: none of its resources is the Information Store: the library finds no server"});
    EXPECT_FALSE(Found().servers[0].isProtected);
}

TEST_F(Server, WhatIsOfNoKnownTypeIsNotMissing) {
    Remove("Name");
    Remove("Gate");
    m_built.Add("Unread");
    m_built.Cluster().resources.back().type.clear();
    m_built.Cluster().resources.back().group.clear(); // which group's, is not known either
    EXPECT_EQ(Problems(), Texts());
    EXPECT_EQ(Found().servers[0].product, "unknown");
    EXPECT_FALSE(Found().servers[0].isProtected);
    EXPECT_EQ(Found(false).level, Level::Unknown);
}

TEST_F(Server, EachProblemHasACodeAndAGroup) {
    m_built.Cluster().nodes.push_back({"N2", "down", false});
    Set("Gate", "failed", Condition::Failed);
    Set("Store", "offline", Condition::Offline);
    Texts texts;
    for (const Problem& problem : Found(false).problems) {
        texts.push_back(std::string(problem.code) + " in " + problem.group);
    }
    EXPECT_EQ(texts, (Texts{"server-part-offline in G", "product-failed in G", "cluster-unread in ", "node-down in "}));
}

TEST_F(Server, KeepsWhatWasKnownWhileItCannotBeRead) {
    Set("Gate", "failed", Condition::Failed);
    m_built.Cluster().groups[0].condition = Condition::Failed;
    const ClusterPicture before = m_built.Cluster();
    ClusterPicture& now = m_built.Cluster();
    now.nodes[0] = {"N", "unknown", false};
    now.groups[0] = {"G", "unknown", Condition::Unknown, "", {}};
    for (Resource& resource : now.resources) {
        const std::string name = resource.name;
        resource = Resource();
        resource.name = name;
        resource.state = "unknown";
        resource.hasDependenciesRead = false;
    }
    m_built.Add("New");
    KeepKnown(before, now);
    Texts texts;
    for (const Change& change : ChangesBetween(before, now)) {
        texts.push_back(change.name + " " + change.what);
    }
    EXPECT_EQ(texts, Texts{"New presence"});
    EXPECT_EQ(Problems(), (Texts{"critical Gate: the resource is failed", "critical G: the virtual server is online"}));
    EXPECT_EQ(Found().servers[0].name, "MAIL1");
    EXPECT_TRUE(Found().servers[0].isInOrder);
}

TEST_F(Server, IsLeftOutAsBeforeWhileItCannotBeRead) {
    m_built.Cluster().leftOut = {{"Gate", "it has no path"}};
    const ClusterPicture before = m_built.Cluster();
    ClusterPicture& now = m_built.Cluster();
    now.leftOut.clear();
    now.resources.back().type.clear();
    now.resources.back().role = Role::Other;
    KeepKnown(before, now);
    EXPECT_EQ(Problems(), Texts{"critical Gate: the library leaves its server out: it has no path"});
    now.leftOut.clear(); // of one that was read, the library has been asked
    KeepKnown(before, now);
    EXPECT_EQ(Problems(), Texts());
}

TEST_F(Server, AGroupWithoutExchangeMayBeOffline) {
    m_built.AddGroup("Available Storage").Add("Disk");
    Set("Disk", "offline", Condition::Offline);
    m_built.Cluster().groups.back().condition = Condition::Offline;
    EXPECT_EQ(Problems(), Texts());
    EXPECT_EQ(Found().servers.size(), 1U);
}

TEST_F(Server, TheLineForMonitoringHasAVerdictAndFigures) {
    m_built.Cluster().name = "C|\n";
    EXPECT_EQ(MonitoringLine(m_built.Cluster(), Found()),
              "CLUSTER OK - C/\\x0A: 1 of 1 virtual servers protected, 1 of 1 nodes up | nodes_up=1;;;0;1 "
              "servers_online=1;;;0;1 servers_protected=1;;;0;1 resources_failed=0;;;0;4 resources_pending=0;;;0;4");
    for (int i = 0; i < 5; ++i) {
        m_built.Cluster().nodes.push_back({"D" + std::to_string(i), "down", false});
    }
    const std::string line = MonitoringLine(m_built.Cluster(), Found());
    EXPECT_NE(line.find("CLUSTER WARNING - "), std::string::npos);
    EXPECT_NE(line.find("; D2: the node is down; and 2 more |"), std::string::npos) << line;
}

TEST_F(Server, ChangesAreToldWithItsProblems) {
    const Health well = Found();
    const auto changed = [](const Health& before, const Health& after) {
        Texts texts;
        for (const Change& change : ChangesBetween(before, after)) {
            texts.push_back(std::string(change.kind) + " " + change.name + " " + change.what + " " + change.from + ">" +
                            change.to);
        }
        return texts;
    };
    EXPECT_EQ(changed(well, Found()), Texts());
    Set("Gate", "failed", Condition::Failed);
    m_built.Cluster().groups[0].node = "N2";
    const Health failed = Found();
    EXPECT_EQ(changed(well, failed),
              (Texts{"server MAIL1 node N>N2", "server MAIL1 product online>failed", "server MAIL1 protected yes>no",
                     "problem Gate product-failed >critical: the resource is failed"}));
    m_built.Cluster().resources.clear();
    EXPECT_EQ(changed(failed, Found()), (Texts{"server MAIL1 presence present>absent",
                                               "problem Gate product-failed critical: the resource is failed>"}));
    EXPECT_EQ(changed(Found(), well), Texts{"server MAIL1 presence absent>present"});
}

TEST_F(Server, AProblemThatChangesItsTextIsTheSame) {
    m_built.Cluster().kind = Kind::Vcs;
    m_built.Cluster().groups[0].states = {{"N", "ONLINE"}, {"N2", "FAULTED"}, {"N3", "FAULTED"}};
    const Health before = Found();
    m_built.Cluster().groups[0].states = {{"N", "ONLINE"}, {"N3", "FAULTED"}, {"N4", "FAULTED"}};
    const std::vector<Change> changes = ChangesBetween(before, Found());
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0].from, "warning: it cannot go to N2, where it is faulted");
    EXPECT_EQ(changes[0].to, "warning: it cannot go to N4, where it is faulted");
}

TEST(Changes, OfStatesPlacesAndPresence) {
    PictureBuilder before;
    before.Add("Stays").Add("Goes");
    before.Cluster().nodes = {{"N", "up", true}};
    PictureBuilder after;
    after.Add("Stays").Add("Comes");
    after.Cluster().nodes = {{"N", "paused", false}};
    after.Cluster().groups[0].node = "M";
    after.Cluster().resources[0].state = "failed";
    Texts texts;
    for (const Change& change : ChangesBetween(before.Cluster(), after.Cluster())) {
        texts.push_back(std::string(change.kind) + " " + change.name + " " + change.what + " " + change.from + ">" +
                        change.to);
    }
    EXPECT_EQ(texts, (Texts{"node N state up>paused", "group G node N>M", "resource Stays state online>failed",
                            "resource Comes presence absent>present", "resource Goes presence present>absent"}));
    EXPECT_TRUE(ChangesBetween(after.Cluster(), after.Cluster()).empty());
}
