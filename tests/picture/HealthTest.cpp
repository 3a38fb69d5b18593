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
        m_built.Add("Name", {}, Role::NetworkName).Add("Store", {"Name"}, Role::Store);
        m_built.Add("Gate", {"Store", "Name"}, Role::Product);
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
    EXPECT_EQ(Problems(), Texts{"warning G: the product does not depend on the server's network name and store"});
    EXPECT_FALSE(Found().servers[0].isInOrder);
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
    EXPECT_EQ(Problems(), Texts{"warning G: the product's \"G-Second\" is missing"});
    EXPECT_EQ(Found().servers[0].product, "incomplete");
    cluster.groups[0].states = {{"N", "ONLINE"}, {"N2", "OFFLINE|FAULTED"}};
    EXPECT_EQ(Problems().front(), "warning G: it cannot go to N2, where it is faulted");
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
              "servers_online=1;;;0;1 servers_protected=1;;;0;1 resources_failed=0;;;0;3 resources_pending=0;;;0;3");
    for (int i = 0; i < 5; ++i) {
        m_built.Cluster().nodes.push_back({"D" + std::to_string(i), "down", false});
    }
    const std::string line = MonitoringLine(m_built.Cluster(), Found());
    EXPECT_NE(line.find("CLUSTER WARNING - "), std::string::npos);
    EXPECT_NE(line.find("; D2: the node is down; and 2 more |"), std::string::npos) << line;
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
