#include "CommandLine.h"
#include "RehearsalEvents.h"

#include <gtest/gtest.h>

namespace {

std::string ReasonAgainst(const std::vector<std::wstring>& words, Answering asked) {
    try {
        ParseEvents(words, asked);
    } catch (const WrongUsage& wrong) {
        return wrong.what();
    }
    return "none";
}

} // namespace

TEST(RehearsalEvents, EachTakesItsNames) {
    const std::vector<RehearsalEvent> events =
        ParseEvents({L"node-down", L"NODE1", L"move", L"Group A", L"NODE2", L"quorum-loss", L"wait", L"60"},
                    Answering::FailoverCluster);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[0].Text(), "node-down NODE1");
    EXPECT_EQ(events[1].Text(), "move \"Group A\" NODE2");
    EXPECT_EQ(events[2].Text(), "quorum-loss");
    EXPECT_EQ(events[3].names, std::vector<std::string>{"60"});
}

TEST(RehearsalEvents, WhatIsNoneIsRefusedWithWhatWasMeant) {
    EXPECT_EQ(ReasonAgainst({L"nodedown", L"NODE1"}, Answering::FailoverCluster),
              "there is no event \"nodedown\"; did you mean \"node-down\"?");
    EXPECT_EQ(ReasonAgainst({L"fail", L"A", L"B"}, Answering::FailoverCluster),
              "there is no event \"B\"; an event before it has its names: \"fail A\"");
    EXPECT_EQ(ReasonAgainst({L"move", L"EVS1"}, Answering::FailoverCluster), "the event is to be \"move GROUP NODE\"");
    EXPECT_EQ(ReasonAgainst({L"fail", L""}, Answering::FailoverCluster), "fail: a name must not be empty");
}

TEST(RehearsalEvents, AWaitTakesAYearAtMost) {
    EXPECT_EQ(ReasonAgainst({L"wait", L"31622400"}, Answering::FailoverCluster), "none");
    for (const wchar_t* const wrong : {L"31622401", L"-1", L"1.5", L"999999999"}) {
        EXPECT_NE(ReasonAgainst({L"wait", wrong}, Answering::FailoverCluster), "none");
    }
}

TEST(RehearsalEvents, VcsHasSomeOfThemOnly) {
    for (const wchar_t* const word : {L"quorum-loss", L"service-stop", L"service-start"}) {
        EXPECT_EQ(ReasonAgainst({word}, Answering::FailoverCluster), "none");
        EXPECT_NE(ReasonAgainst({word}, Answering::Vcs), "none");
    }
    for (const wchar_t* const word : {L"node-pause", L"node-resume"}) {
        EXPECT_NE(ReasonAgainst({word, L"NODE1"}, Answering::Vcs), "none");
    }
    for (const wchar_t* const word : {L"node-down", L"node-up", L"fail", L"offline", L"online"}) {
        EXPECT_EQ(ReasonAgainst({word, L"NAME"}, Answering::Vcs), "none");
    }
    EXPECT_EQ(ReasonAgainst({L"quorum-loss"}, Answering::Vcs),
              "VCS has no event \"quorum-loss\", only node-down NODE, node-up NODE, move GROUP NODE, fail RESOURCE, "
              "offline NAME, online NAME, wait SECONDS");
}
