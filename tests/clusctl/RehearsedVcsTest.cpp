#include "RehearsedVcs.h"

#include <gtest/gtest.h>

namespace {

const char Configuration[] = R"(include "types.cf"
system NODE1 (
	)
group EVS1 (
	SystemList = { NODE1 = 0 }
	)
	IP EVS1-IP (
		)
	Lanman EVS1-Lanman (
		)
	EVS1-Lanman requires EVS1-IP
)";

const char Shown[] = "clock    0                    \r\n"
                     "system   NODE1                RUNNING, frozen\r\n"
                     "group    EVS1                 NODE1        ONLINE\r\n"
                     "resource EVS1-IP              NODE1        ONLINE\r\n"
                     "resource EVS1-Lanman          NODE1        ONLINE\r\n";

Json Rows() {
    return StateRows(Shown, Json::object());
}

// With another state of a resource.
Json With(Json rows, const std::string& name, const std::string& state) {
    for (Json& row : rows) {
        if (row["name"] == name) {
            row["state"] = state;
        }
    }
    return rows;
}

} // namespace

TEST(RehearsedVcs, AClockBeginsAtZeroOrBeforeWhatIsUnderWay) {
    Json state = Json::object();
    SetClock(state);
    EXPECT_EQ(ClockOfVcs(state), 0);
    EXPECT_EQ(NextEndOfVcs(state), 0);
    state = Json::parse(R"({"transitions": {"A": {"NODE1": {"now": "goes online", "due": 1700000030}},
                                            "B": {"NODE1": {"now": "goes online", "due": 1700000010}}}})");
    SetClock(state);
    EXPECT_EQ(ClockOfVcs(state), 1700000009);
    EXPECT_EQ(NextEndOfVcs(state), 1700000010);
    state["clock"] = 1700000010;
    SetClock(state); // has one
    EXPECT_EQ(NextEndOfVcs(state), 1700000030);
}

TEST(RehearsedVcs, OnlyIdleTimePassesWithoutTheSimulator) {
    Json idle = {{"clock", 5}};
    EXPECT_TRUE(PassIdly(idle, 7));
    EXPECT_EQ(ClockOfVcs(idle), 12);
    for (const char* const member : {"transitions", "moves"}) {
        Json busy = {{"clock", 5}, {member, Json::object()}};
        EXPECT_FALSE(PassIdly(busy, 7));
        EXPECT_EQ(ClockOfVcs(busy), 5);
    }
}

TEST(RehearsedVcs, TheTimeLineIsThatSinceTheBeginning) {
    const Json state = Json::parse(R"({"timeline": [
        {"at": 3, "event": "system NODE1 is RUNNING", "reason": "old"},
        {"at": 12, "event": "group EVS1 stays offline", "reason": "system NODE1 is FAULTED"},
        {"at": 13, "event": "resource EVS1-IP is ONLINE on NODE1", "reason": ""}]})");
    const Json timeline = TimelineOfVcs(state, 1, 10);
    ASSERT_EQ(timeline.size(), 2U);
    EXPECT_EQ(timeline[0], Json::parse(R"({"at": 2.0, "kind": "group", "name": "EVS1", "what": "stays offline",
                                           "why": "system NODE1 is FAULTED"})"));
    EXPECT_EQ(timeline[1]["what"], "is ONLINE on NODE1");
    EXPECT_TRUE(timeline[1]["why"].is_null());
}

TEST(RehearsedVcs, StatesAreThoseOfSystemsGroupsResourcesAndTheConfiguration) {
    const Json rows = Rows();
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_EQ(StateIn(rows, "system", "NODE1", ""), "RUNNING, frozen");
    EXPECT_EQ(StateIn(rows, "resource", "EVS1-IP", "NODE1"), "ONLINE");
    EXPECT_EQ(StateIn(rows, "resource", "EVS1-IP", "NODE2"), "");
    EXPECT_EQ(StateIn(rows, "configuration", "main.cf", ""), "read-only");
    EXPECT_EQ(StateIn(StateRows(Shown, {{"mode", "rw"}}), "configuration", "main.cf", ""), "open for writing");
}

TEST(RehearsedVcs, ChangesNameWhatCameAndWhatWent) {
    EXPECT_TRUE(StateChanges(Rows(), Rows()).empty());
    Json after = With(Rows(), "EVS1-IP", "FAULTED");
    after.push_back({{"kind", "resource"}, {"name", "EVS1-New"}, {"system", "NODE1"}, {"state", "OFFLINE"}});
    const Json changes = StateChanges(Rows(), after);
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0]["before"], "ONLINE");
    EXPECT_EQ(changes[0]["after"], "FAULTED");
    EXPECT_TRUE(changes[1]["before"].is_null());
    EXPECT_TRUE(StateChanges(after, Rows())[1]["after"].is_null());
}

TEST(RehearsedVcs, WhatStaysDownHasTheNearestReason) {
    const vcssim::CfDocument configuration(Configuration);
    const Json after = With(With(Rows(), "EVS1-IP", "FAULTED"), "EVS1-Lanman", "OFFLINE");
    Json timeline = Json::parse(
        R"([{"kind": "resource", "name": "EVS1-IP", "what": "is FAULTED on NODE1", "why": "fault"},
            {"kind": "group", "name": "EVS1", "what": "stays offline", "why": "its AutoFailOver is 0"}])");
    Json down = StaysDownOnVcs(Rows(), after, configuration, timeline);
    ASSERT_EQ(down.size(), 2U);
    EXPECT_EQ(down[0]["name"], "EVS1-IP");
    EXPECT_EQ(down[0]["state"], "FAULTED");
    EXPECT_EQ(down[0]["reason"], "is FAULTED on NODE1: fault");
    EXPECT_EQ(down[1]["reason"], "it depends on EVS1-IP, which is not online either");
    timeline.erase(0);
    EXPECT_EQ(StaysDownOnVcs(Rows(), after, configuration, timeline)[0]["reason"],
              "the group stays offline: its AutoFailOver is 0");
    timeline.push_back({{"kind", "group"}, {"name", "EVS1"}, {"what", "goes online on NODE1"}, {"why", "failover"}});
    EXPECT_TRUE(StaysDownOnVcs(Rows(), after, configuration, timeline)[0]["reason"].is_null());
    EXPECT_TRUE(StaysDownOnVcs(Rows(), Rows(), configuration, timeline).empty());
}
