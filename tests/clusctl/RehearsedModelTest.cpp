#include "RehearsedModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

Json TwoNodes() {
    return Json::parse(R"({
  "cluster": {"name": "C", "clock": 5000},
  "nodes": [{"name": "."}, {"name": "NODE2", "state": "paused"}],
  "groups": [{"name": "EVS1", "owner": ".", "preferredOwners": ["NODE2", "."]}],
  "resources": [
    {"name": "Disk", "type": "Physical Disk", "group": "EVS1", "id": "1", "state": "Online"},
    {"name": "IS", "type": "Store", "group": "EVS1", "id": "2", "state": "OnlinePending", "dueAt": 9000, "dependsOn": ["Disk"]}
  ]
})");
}

} // namespace

TEST(RehearsedModel, ACopyGetsAClockAndActsOnFailures) {
    Json model = TwoNodes();
    model["cluster"].erase("clock");
    EXPECT_EQ(ClockOf(PrivateCopy(model)), 9000); // where what is under way ends first
    model["resources"][1].erase("dueAt");
    EXPECT_GT(ClockOf(PrivateCopy(model)), 0);
    EXPECT_EQ(PrivateCopy(model)["cluster"]["behaviour"]["failures"], "acted-on");
    model["cluster"]["behaviour"] = {{"failures", "stay"}};
    EXPECT_EQ(PrivateCopy(model)["cluster"]["behaviour"]["failures"], "stay");
    EXPECT_EQ(ClockOf(PrivateCopy(TwoNodes())), 5000);
}

TEST(RehearsedModel, WhatIsUnderWayHasAnEnd) {
    Json model = TwoNodes();
    EXPECT_EQ(NextEnd(model), 9000);
    model["resources"][1].erase("dueAt");
    EXPECT_EQ(NextEnd(model), 0);
}

TEST(RehearsedModel, StatesAreWords) {
    EXPECT_EQ(WordsOfState("is OnlinePending"), "is online pending");
    EXPECT_EQ(WordsOfState("is on NODE2"), "is on NODE2");
    EXPECT_EQ(WordsOfState("goes down"), "goes down");
}

TEST(RehearsedModel, ThisComputerIsTheNodeWithoutAName) {
    const Json model = TwoNodes();
    EXPECT_EQ(NodesOf(model, "NODE1"), (std::vector<std::string>{"NODE1", "NODE2"}));
    EXPECT_EQ(NodeState(model, "node1", "NODE1"), "up");
    EXPECT_EQ(NodeState(model, "NODE2", "NODE1"), "paused");
    EXPECT_EQ(NodeState(model, "NODE3", "NODE1"), "");
}

TEST(RehearsedModel, EndsAreComparedWithoutTimesAndNewIds) {
    const Json before = TwoNodes();
    Json first = before;
    first["resources"].push_back({{"name", "Gate"}, {"type", "T"}, {"group", "EVS1"}, {"id", "a"}});
    Json second = first;
    second["resources"][2]["id"] = "b";
    second["resources"][1]["dueAt"] = 9500;
    second["cluster"]["clock"] = 7000;
    EXPECT_EQ(ComparableEnd(before, first), ComparableEnd(before, second));
    second["resources"][0]["id"] = "other";
    EXPECT_NE(ComparableEnd(before, first), ComparableEnd(before, second));
    EXPECT_TRUE(ModelDifference(before, before).empty());
    EXPECT_FALSE(ModelDifference(before, first).empty());
}

TEST(RehearsedModel, WhatIsInAnotherPlaceOfItsListIsTheSame) {
    Json before = TwoNodes();
    before["resources"].push_back({{"name", "Gate"}, {"type", "T"}, {"group", "EVS1"}, {"id", "3"}});
    Json after = before;
    after["resources"].erase(1);
    after["cluster"]["clock"] = 6000;
    const std::vector<std::string> gone = ModelDifference(before, after);
    EXPECT_EQ(std::count(gone.begin(), gone.end(), "-      \"name\": \"IS\","), 1);
    EXPECT_EQ(std::count(gone.begin(), gone.end(), "-      \"name\": \"Gate\","), 0);
    std::swap(before["resources"][0], before["resources"][2]);
    after["resources"] = before["resources"];
    std::swap(after["resources"][0], after["resources"][1]);
    EXPECT_EQ(ModelDifference(before, after), std::vector<std::string>());
    after["resources"][0]["state"] = "Failed";
    const std::vector<std::string> lines = ModelDifference(before, after);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "       \"id\": \"2\","), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "-      \"state\": \"OnlinePending\","), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "+      \"state\": \"Failed\","), 1);
}

TEST(RehearsedModel, WhatStaysDownHasTheNearestReason) {
    Json after = TwoNodes();
    after["resources"][0]["state"] = "Failed";
    after["resources"][1]["state"] = "Offline";
    const Json timeline =
        Json::parse(R"([{"kind": "resource", "name": "Disk", "what": "is failed", "why": "it failed"}])");
    Json before = TwoNodes();
    before["resources"][1]["state"] = "Online";
    const Json down = StaysDown(before, after, timeline);
    ASSERT_EQ(down.size(), 2U);
    EXPECT_EQ(down[0]["reason"], "is failed: it failed");
    EXPECT_EQ(down[1]["reason"], "it depends on Disk, which is not online either");
    EXPECT_TRUE(StaysDown(before, before, timeline).empty());
}
