// What the engine is given, and what it shows of it.
#include "EngineInput.h"
#include "Scenario.h"

#include <gtest/gtest.h>

using scenario::LoadCluster;
using vcssim::Cluster;
using vcssim::Engine;
using vcssim::EngineModel;
using vcssim::EngineState;
using vcssim::GroupDependency;
using vcssim::GroupModel;
using vcssim::GroupStateText;
using vcssim::MakeEngineModel;
using vcssim::WhyNotSimulated;

TEST(VcsEngineInput, AttributesHaveTheirDefaults) {
    const EngineModel model = MakeEngineModel(LoadCluster("system A\ngroup G (\n)\nT r ()\n"));
    const GroupModel& group = model.groups.at(0);
    EXPECT_EQ(model.systems.at(0).capacity, 100);
    EXPECT_FALSE(group.parallel);
    EXPECT_EQ(group.autoFailOver, 1);
    EXPECT_EQ(group.policy, GroupModel::Priority);
    EXPECT_TRUE(group.autoStart && group.autoRestart && group.faultPropagation);
    EXPECT_EQ(group.onlineRetryLimit, 0);
    EXPECT_TRUE(group.places.empty() && group.autoStartList.empty() && group.dependencies.empty());
    const vcssim::ResourceModel& resource = group.resources.at(0);
    EXPECT_TRUE(resource.critical && resource.enabled.at(0) && resource.autoStart.at(0));
    EXPECT_FALSE(resource.persistent || resource.failing.at(0));
    EXPECT_EQ(resource.onlineTime, 0);
    EXPECT_EQ(resource.onlineTimeout, 300);
    EXPECT_EQ(resource.offlineTimeout, 300);
    EXPECT_EQ(resource.confInterval, 600);
}

TEST(VcsEngineInput, AttributesOfATypeAreThoseOfItsResourcesUnlessTheseHaveTheirOwn) {
    Cluster cluster = LoadCluster("system A\nsystem B\ngroup G (\n)\nSlow r ()\n"
                                  "Slow s (\nOnlineTimeout = 9\nEnabled @A = 0\nEnabled @B = 1\n)\n");
    cluster.types.Read("type Slow ( static int OnlineTimeout = 600 static int RestartLimit = 3 str Text )");
    const std::vector<vcssim::ResourceModel> resources = MakeEngineModel(cluster).groups.at(0).resources;
    EXPECT_EQ(resources.at(0).onlineTimeout, 600);
    EXPECT_EQ(resources.at(1).onlineTimeout, 9);
    EXPECT_EQ(resources.at(1).restartLimit, 3);
    EXPECT_EQ(resources.at(1).enabled, (std::vector<bool>{false, true}));
}

TEST(VcsEngineInput, TimesAreThoseOfTheResourceItsTypeOrAll) {
    Cluster cluster = LoadCluster("system A\ngroup G (\n)\nT r ()\nT s ()\nU t ()\n");
    cluster.state.progress.times = {{"*", {1, 2}}, {"T", {3, 4}}, {"r", {5, 6}}};
    const std::vector<vcssim::ResourceModel> resources = MakeEngineModel(cluster).groups.at(0).resources;
    EXPECT_EQ(resources.at(0).onlineTime, 5);
    EXPECT_EQ(resources.at(1).offlineTime, 4);
    EXPECT_EQ(resources.at(2).onlineTime, 1);
}

TEST(VcsEngineInput, TheSystemListGivesPriorities) {
    const EngineModel model = MakeEngineModel(
        LoadCluster("system A\nsystem B\nsystem C\ngroup G (\nSystemList = { A, B = 0, C, Absent = 7 }\n)\n"));
    std::vector<int> priorities;
    for (const vcssim::GroupPlace& place : model.groups.at(0).places) {
        priorities.push_back(place.priority);
    }
    EXPECT_EQ(priorities, (std::vector<int>{0, 0, 1}));
}

TEST(VcsEngineInput, DependenciesAreReadByTheirWords) {
    const auto read = [](const std::string& words, const std::string& parallel = "") {
        const Cluster cluster =
            LoadCluster("system A\ngroup P (\n" + parallel + "\nrequires group C " + words + "\n)\ngroup C (\n)\n");
        const std::vector<GroupDependency> found = MakeEngineModel(cluster).groups.at(0).dependencies;
        EXPECT_EQ(found.empty(), !WhyNotSimulated(cluster, cluster.configuration.Groups().at(0)).empty()) << words;
        return found;
    };
    EXPECT_EQ(read("online local firm").at(0).rigidity, GroupDependency::Firm);
    EXPECT_EQ(read("online global").at(0).rigidity, GroupDependency::Firm);
    EXPECT_EQ(read("online global").at(0).location, GroupDependency::Global);
    EXPECT_EQ(read("online remote soft").at(0).location, GroupDependency::Remote);
    EXPECT_EQ(read("online local hard").at(0).rigidity, GroupDependency::Hard);
    EXPECT_TRUE(read("offline local").at(0).offline);
    for (const char* words :
         {"", "online", "online site soft", "online global hard", "offline global", "online soft"}) {
        EXPECT_TRUE(read(words).empty()) << words;
    }
    EXPECT_TRUE(read("online local soft", "Parallel = 1").empty());
    EXPECT_EQ(read("online global soft", "Parallel = 1").size(), 1u);
}

TEST(VcsEngineInput, WhatIsNotSimulatedIsNamed) {
    const auto why = [](const std::string& attributes) {
        const Cluster cluster = LoadCluster("system A\ngroup G (\n" + attributes + "\n)\n");
        return WhyNotSimulated(cluster, cluster.configuration.Groups().at(0));
    };
    EXPECT_EQ(why(""), "");
    EXPECT_EQ(why("FailOverPolicy = Load\nManageFaults = ALL"), "");
    EXPECT_EQ(why("FailOverPolicy = BiggestAvailable"), "the FailOverPolicy BiggestAvailable of group G");
    EXPECT_EQ(why("ManageFaults = NONE"), "ManageFaults of group G, which is not ALL");
    EXPECT_EQ(why("requires group G online local firm"), "group G, which depends on itself");
    EXPECT_EQ(why("requires group X online local firm"),
              "the dependency 'online local firm' of group G on group X, which does not exist");
}

TEST(VcsEngineStates, AreCombinedAsVcsPrintsThem) {
    EXPECT_EQ(GroupStateText(0, 2, false, false, false), "OFFLINE");
    EXPECT_EQ(GroupStateText(1, 2, false, false, false), "PARTIAL");
    EXPECT_EQ(GroupStateText(2, 2, false, false, false), "ONLINE");
    EXPECT_EQ(GroupStateText(0, 2, true, false, false), "OFFLINE|STARTING");
    EXPECT_EQ(GroupStateText(1, 2, true, false, false), "STARTING|PARTIAL");
    EXPECT_EQ(GroupStateText(1, 2, false, true, true), "STOPPING|PARTIAL|FAULTED");
    EXPECT_EQ(GroupStateText(2, 2, false, true, false), "ONLINE|STOPPING");
    EXPECT_EQ(GroupStateText(0, 0, false, false, true), "OFFLINE|FAULTED");
}

TEST(VcsEngineTimeline, ShowsSecondsEventAndReason) {
    EXPECT_EQ(vcssim::TimelineLine({7, "something", "because"}), "     7  something: because");
    EXPECT_EQ(vcssim::TimelineLine({1234567, "something", ""}), "1234567  something");
}

// Links that close a loop: nothing of it goes online, and what is online can go offline.
TEST(VcsEngine, EndsOnALoopOfResources) {
    const EngineModel model = MakeEngineModel(
        LoadCluster("system A\ngroup G (\nSystemList = { A = 0 }\n)\nT r ()\nT s ()\nr requires s\ns requires r\n"));
    EngineState state(model);
    Engine engine(model, state);
    EXPECT_EQ(engine.Online(0, 0), "");
    EXPECT_EQ(engine.GroupStateOn(0, 0), "OFFLINE");
    state.resources[0][0][0].condition = vcssim::ResourceStatus::Online;
    state.resources[0][1][0].condition = vcssim::ResourceStatus::Online;
    EXPECT_EQ(engine.Offline(0, 0), "");
    EXPECT_EQ(engine.GroupStateOn(0, 0), "OFFLINE");
}

TEST(VcsEngine, TimeNeverGoesBack) {
    const EngineModel model = MakeEngineModel(LoadCluster("system A\n"));
    EngineState state(model);
    Engine engine(model, state);
    engine.AdvanceTo(10);
    engine.AdvanceTo(5);
    EXPECT_EQ(state.clock, 10);
}
