#include "ClusterCalls.h"
#include "VcsToolCalls.h"

#include <gtest/gtest.h>

namespace {

const char Journal[] = R"({"call":"OpenCluster","args":{"name":null},"result":1}
{"call":"OpenClusterResource","args":{"cluster":1,"name":"EVS1 Disk"},"result":2}
{"call":"OpenClusterResource","args":{"cluster":1,"name":"Gone"},"result":0,"error":5007}
no JSON
{"call":"OnlineClusterResource","begins":true}
{"call":"ClusterResourceControl","args":{"resource":2,"code":20971614},"result":5}
{"call":"ClusterResourceControl","args":{"resource":2,"code":16777257},"result":0}
{"call":"AddClusterResourceNode","args":{"resource":2,"name":"NODE2"},"result":5010}
)";

} // namespace

TEST(ClusterCalls, HandlesAreShownAsTheNamesTheyWereOpenedWith) {
    const std::vector<ClusterCall> calls = ReadClusterCalls(Journal);
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[1].text, "OpenClusterResource(EVS1 Disk)");
    EXPECT_EQ(calls[3].text, "ClusterResourceControl(EVS1 Disk, SET_COMMON_PROPERTIES)");
    EXPECT_EQ(calls[5].text, "AddClusterResourceNode(EVS1 Disk, NODE2)");
}

TEST(ClusterCalls, OccurrencesCountTheCallsOfOneName) {
    const std::vector<ClusterCall> calls = ReadClusterCalls(Journal);
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[2].call, "OpenClusterResource");
    EXPECT_EQ(calls[2].occurrence, 2U);
    EXPECT_EQ(calls[5].occurrence, 1U);
}

TEST(ClusterCalls, ControlCodesTellWhetherSomethingIsChanged) {
    const std::vector<ClusterCall> calls = ReadClusterCalls(Journal);
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_TRUE(calls[3].changes);
    EXPECT_FALSE(calls[4].changes);
    EXPECT_TRUE(calls[5].changes);
    EXPECT_FALSE(calls[0].changes);
}

TEST(ClusterCalls, CodesComeFromTheErrorOrTheResult) {
    const std::vector<ClusterCall> calls = ReadClusterCalls(Journal);
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[0].code, 0U);
    EXPECT_EQ(calls[2].code, 5007U);
    EXPECT_EQ(calls[3].code, 5U);
    EXPECT_EQ(calls[5].code, 5010U);
}

TEST(ClusterCalls, OnlyTextsAndWholeNumbersTellAnything) {
    const std::vector<ClusterCall> calls = ReadClusterCalls(
        R"({"seq":1,"call":"OpenClusterGroup","args":{"cluster":1,"name":"EVS1"},"result":7}
[1, 2]
"OpenCluster"
{"call":"OpenClusterNode","args":{"name":"cut
{"call":"ClusterGroupOpenEnum","args":{"group":7,"type":2},"result":8}
{"call":"ClusterGroupEnum","args":{"enum":8,"index":0,"cch":256},"result":0}
{"call":"OnlineClusterGroup","args":{"group":7,"node":null,"more":{"args":{"x":1},"call":"Other"},"list":["y"]},"result":997}
{"call":"ResUtilResourceTypesEqual","args":{"type":"A","resource":null},"result":true}
{"call":"CloseClusterGroup","args":{"handle":7},"result":false,"error":6})");
    std::vector<std::string> texts;
    std::vector<unsigned long> codes;
    for (const ClusterCall& call : calls) {
        texts.push_back(call.text);
        codes.push_back(call.code);
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"OpenClusterGroup(EVS1)", "ClusterGroupOpenEnum(EVS1, type 2)",
                                               "ClusterGroupEnum(EVS1, type 2, index 0)", "OnlineClusterGroup(EVS1)",
                                               "ResUtilResourceTypesEqual(A)", "CloseClusterGroup(EVS1)"}));
    EXPECT_EQ(codes, (std::vector<unsigned long>{0, 0, 0, 997, 0, 6}));
}

TEST(ClusterCalls, WhatAsksFailsForWantOfTheServerAndWhatChangesIsDenied) {
    EXPECT_EQ(UsualCodeOf("GetClusterResourceState"), 1722U);
    EXPECT_EQ(UsualCodeOf("ClusterEnum"), 1722U);
    EXPECT_EQ(UsualCodeOf("OpenCluster"), 1722U);
    EXPECT_EQ(UsualCodeOf("AddClusterResourceNode"), 5U);
    EXPECT_EQ(UsualCodeOf("ResUtilFindSzProperty"), 2U);
}

TEST(VcsToolCalls, RunsHaveTheirWordsExitCodeAndWhatWasSaidOfAFailure) {
    const std::vector<ClusterCall> calls =
        ReadToolCalls(R"({"tool":"hares","arguments":["-modify","EVS1-IP","Keys","HKLM\\A B",""],"exit":0,"output":""}
{"tool":"hares","arguments":["-link","A","B"],"exit":1,"output":"VCS WARNING made up\r\nmore\r\n"}
{"tool":"hagrp","arguments":["-list"],"exit":0,"output":"EVS1\r\n"}
)");
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].text, "hares -modify EVS1-IP Keys \"HKLM\\A B\" \"\"");
    EXPECT_TRUE(calls[0].changes);
    EXPECT_EQ(calls[1].occurrence, 2U);
    EXPECT_EQ(calls[1].code, 1U);
    EXPECT_EQ(calls[1].said, "VCS WARNING made up");
    EXPECT_FALSE(calls[2].changes);
    EXPECT_EQ(calls[2].occurrence, 1U);
    EXPECT_EQ(calls[2].said, "");
}

TEST(VcsToolCalls, TheScopeOfAnAttributeIsAChange) {
    const std::vector<ClusterCall> calls = ReadToolCalls(
        R"({"tool":"hares","arguments":["-local","EVS1-IP","MACAddress"],"exit":0,"output":""}
{"tool":"hares","arguments":["-global","EVS1-IP","MACAddress","00-11"],"exit":0,"output":""}
)");
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_TRUE(calls[0].changes);
    EXPECT_TRUE(calls[1].changes);
}

TEST(VcsToolCalls, AnEncryptionChangesNothingAndARunThatHangsHasNoCode) {
    const std::vector<ClusterCall> calls =
        ReadToolCalls("{\"tool\":\"vcsencrypt\",\"arguments\":[\"-agent\",\"***\"],\"exit\":"
                      "0,\"output\":\"***\"}\n{\"tool\":\"haconf\",\"arguments\":["
                      "\"-makerw\"],\"exit\":null,\"output\":\"\"}\n\n");
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_FALSE(calls[0].changes);
    EXPECT_TRUE(calls[1].changes);
    EXPECT_NE(calls[1].code, 0U);
}

TEST(ClusterCalls, FaultsThatMatchedTooFewCallsAreNamed) {
    const std::vector<std::size_t> matched = ReadFaultCounts("2\n0\n1\n98\n");
    EXPECT_EQ(matched, (std::vector<std::size_t>{2, 0, 1, 98}));
    EXPECT_EQ(
        FaultsNotMet({"OpenClusterNode#2=5", "OpenClusterGroup@NoSuch=5", "hares@-link *#2+=1", "OpenCluster#99=5"},
                     matched),
        (std::vector<std::string>{
            "the failure \"OpenClusterGroup@NoSuch=5\" did not come about: the command made 0 such calls",
            "the failure \"hares@-link *#2+=1\" did not come about: the command made 1 such call",
            "the failure \"OpenCluster#99=5\" did not come about: the command made 98 such calls"}));
    EXPECT_EQ(FaultsNotMet({"hares=1"}, {}).size(), 1U); // no tool ran
}
