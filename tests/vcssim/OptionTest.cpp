// The switches, usage errors and the engine.
#include "ToolTest.h"

#include "ToolFaults.h"

#include <stdexcept>

using ::testing::HasSubstr;
using ::testing::StartsWith;

using ToolOptions = ToolTest;

TEST_F(ToolOptions, AreReadFromAList) {
    const vcssim::Options standard = vcssim::ParseOptions("");
    EXPECT_FALSE(standard.warnsOfNoMatch || standard.blanksInLists || standard.bareEmptyValues ||
                 standard.encryptPrompts);
    EXPECT_EQ(standard.lineEnd, "\r\n");
    EXPECT_TRUE(standard.engineIsUp);
    const vcssim::Options options =
        vcssim::ParseOptions("no-match=warning,separator=blanks,empty=bare,encrypt=prompt,lineend=cr,engine=down");
    EXPECT_TRUE(options.warnsOfNoMatch && options.blanksInLists && options.bareEmptyValues && options.encryptPrompts);
    EXPECT_EQ(options.lineEnd, "\r");
    EXPECT_FALSE(options.engineIsUp);
    EXPECT_EQ(vcssim::ParseOptions("lineend=cr,lineend=lf,engine=down,engine=up").lineEnd, "\n");
    EXPECT_FALSE(standard.shortSummary || standard.bareClusterState);
    EXPECT_TRUE(standard.actsOnUnfreeze && standard.faultsSlowOffline);
    const vcssim::Options others =
        vcssim::ParseOptions("summary=known,cluster-state=bare,unfreeze=waits,slow-offline=stuck");
    EXPECT_TRUE(others.shortSummary && others.bareClusterState);
    EXPECT_FALSE(others.actsOnUnfreeze || others.faultsSlowOffline);
    EXPECT_FALSE(standard.keepsScope || standard.refusesRegistration);
    EXPECT_TRUE(vcssim::ParseOptions("scope=keeps").keepsScope);
    EXPECT_TRUE(vcssim::ParseOptions("registration=refused").refusesRegistration);
    EXPECT_FALSE(vcssim::ParseOptions("registration=refused,registration=accepted").refusesRegistration);
    EXPECT_THROW(vcssim::ParseOptions("colour=red"), std::invalid_argument);
}

TEST_F(ToolOptions, EndLinesAsAsked) {
    m_environment.options.lineEnd = "\r\n";
    EXPECT_EQ(Run("hasys", "-list"), "NODE1\r\nNODE2\r\n");
    m_environment.options.lineEnd = "\r";
    EXPECT_EQ(Run("hasys", "-list"), "NODE1\rNODE2\r");
}

TEST_F(ToolOptions, TakeTheEngineDownForEveryTool) {
    m_environment.options.engineIsUp = false;
    const std::vector<std::pair<const char*, const char*>> runs = {
        {"haconf", "-makerw"}, {"hasys", "-list"},   {"hagrp", "-list"},         {"hares", "-list"},
        {"haclus", "-state"},  {"hastatus", "-sum"}, {"vcsencrypt", "-agent x"}, {"haagent", "-display IP"}};
    for (const auto& run : runs) {
        const bool ofStatus = std::string(run.first) == "hastatus";
        EXPECT_EQ(Run(run.first, run.second),
                  std::string("VCS ERROR V-16-1-10600 Cannot connect to VCS engine\n") +
                      (ofStatus
                           ? "VCS WARNING V-16-1-11046 (simulated) The state of the local system is not available\n"
                           : ""));
        EXPECT_EQ(m_exitCode, 1);
        EXPECT_FALSE(m_pieces[0].toErrors);
        EXPECT_EQ(m_pieces.size(), ofStatus ? 2u : 1u);
    }
}

TEST_F(ToolOptions, LetTheEngineStartForEveryTool) {
    m_environment.options = vcssim::ParseOptions("engine=starting,lineend=lf");
    const std::vector<std::pair<const char*, const char*>> runs = {
        {"haconf", "-makerw"}, {"hasys", "-list"},   {"hagrp", "-list"},        {"hares", "-list"},
        {"haclus", "-state"},  {"hastatus", "-sum"}, {"vcsencrypt", "-agent x"}};
    for (const auto& run : runs) {
        EXPECT_EQ(Run(run.first, run.second), "VCS WARNING V-16-1-11030 HAD not ready (simulated)\n");
        EXPECT_EQ(m_exitCode, 1);
        EXPECT_TRUE(m_pieces[0].toErrors);
    }
    m_environment.options = vcssim::ParseOptions("engine=starting,engine=up,lineend=lf");
    EXPECT_EQ(Run("hasys", "-list"), "NODE1\nNODE2\n");
}

TEST_F(ToolOptions, LetTheNodeRejectOperationsInItsState) {
    for (const std::string state : {"LEAVING", "REMOTE_BUILD", "ADMIN_WAIT"}) {
        m_environment.options = vcssim::ParseOptions("lineend=lf,node=" + state);
        for (const std::string operation : {"haconf -makerw", "haconf -dump", "haconf -dump -makero",
                                            "hasys -freeze NODE1", "hasys -unfreeze -persistent NODE1"}) {
            const std::size_t blank = operation.find(' ');
            EXPECT_EQ(Run(operation.substr(0, blank), operation.substr(blank + 1)),
                      "VCS WARNING V-16-1-50129 Operation '" + operation + "' rejected as the node is in " + state +
                          " state\n");
            EXPECT_EQ(m_exitCode, 1);
        }
        EXPECT_EQ(Run("hasys", "-list"), "NODE1\nNODE2\n");
        EXPECT_EQ(Run("hares", "-modify G-Mount VolumeName Vol"), "");
    }
    m_environment.options = vcssim::ParseOptions("node=LEAVING,node=RUNNING,lineend=lf");
    EXPECT_EQ(Run("haconf", "-dump"), "");
    EXPECT_THROW(vcssim::ParseOptions("node=UP"), std::invalid_argument);
}

TEST_F(ToolOptions, AnswerWrongUseWithOneLine) {
    const std::vector<std::pair<const char*, const char*>> runs = {
        {"haconf", "-other"},     {"hasys", ""},           {"hasys", "-other"}, {"hasys", "-list x"},
        {"hagrp", "-online G"},   {"hagrp", "-state a b"}, {"hares", "-add a"}, {"hares", "-display -attribute"},
        {"hares", "-link a"},     {"hares", "-value a"},   {"hares", "-other"}, {"hares", "-list -x"},
        {"vcsencrypt", "-other"}, {"vcsencrypt", ""}};
    for (const auto& run : runs) {
        const std::string output = Run(run.first, run.second);
        EXPECT_THAT(output, StartsWith("usage: " + std::string(run.first) + " -")) << run.second;
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1);
        EXPECT_EQ(m_exitCode, 2);
        EXPECT_TRUE(m_pieces[0].toErrors);
    }
    EXPECT_THAT(Run("hares", "-help"), StartsWith("usage: hares -list"));
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(ReadFile(L""), Sample);
}

TEST(ToolFaults, HitByToolArgumentsAndCount) {
    vcssim::ToolFaults faults(R"([{"tool": "hares", "arguments": "-add *", "nth": 2, "output": "x"},
                                  {"tool": "hasys", "exit": 7}])");
    EXPECT_EQ(faults.Hit("hares", {"-add", "a"}), nullptr);
    EXPECT_EQ(faults.Hit("hares", {"-list"}), nullptr);
    EXPECT_EQ(faults.Hit("hagrp", {"-add", "b"}), nullptr);
    vcssim::ToolFaults later(R"([{"tool": "hares", "arguments": "-add *", "nth": 2, "output": "x"}])");
    later.SetCounts(faults.Counts());
    ASSERT_NE(later.Hit("hares", {"-add", "c"}), nullptr);
    EXPECT_EQ(later.Hit("hares", {"-add", "d"}), nullptr);
    ASSERT_NE(faults.Hit("hasys", {}), nullptr);
    EXPECT_EQ(faults.Hit("hasys", {"-list"})->code, 7);
}

TEST(ToolFaults, PrintTextsAndRandomBytesRepeatedly) {
    const auto printed = [](const char* fault) { return vcssim::PrintedBy(common::ParseFault(fault)); };
    EXPECT_EQ(printed("hares=5"), "");
    EXPECT_EQ(printed("hares=output:\"ab\",repeat:3"), "ababab");
    EXPECT_EQ(printed("hares=output:\"ab\",repeat:0"), "ab");
    const std::string bytes = printed("hares=output:\"ab\",random:100,repeat:2");
    ASSERT_EQ(bytes.size(), 204u);
    EXPECT_EQ(bytes.substr(0, 102), bytes.substr(102));
    EXPECT_EQ(bytes.substr(0, 2), "ab");
    for (const char* fault : {"hares=5", "hares=output:\"\"", "hares=random:1"}) {
        EXPECT_TRUE(vcssim::TakesItsPlace(common::ParseFault(fault))) << fault;
    }
    for (const char* fault : {"hares=kill:1", "hares=delay_ms:1", "hares=hang"}) {
        EXPECT_FALSE(vcssim::TakesItsPlace(common::ParseFault(fault))) << fault;
    }
}

TEST(ToolFaults, RefuseWhatTheyDoNotKnow) {
    const auto messageOf = [](const char* json) {
        try {
            vcssim::ToolFaults faults(json);
        } catch (const std::invalid_argument& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(messageOf("{}"), "is no list");
    EXPECT_EQ(messageOf("[1]"), "fault 0: is no object");
    EXPECT_EQ(messageOf(R"([{}, {"colour": 1}])"), "fault 1: there is no member 'colour'");
    EXPECT_EQ(messageOf(R"([{"nth": "x"}])"), "fault 0: nth is no number");
    EXPECT_EQ(messageOf(R"([{"output": 1}])"), "fault 0: output is no text");
    EXPECT_EQ(messageOf(R"([{"exit": "x"}])"), "fault 0: exit is no number");
    EXPECT_EQ(messageOf(R"([{"stream": "both"}])"), "fault 0: stream is neither \"out\" nor \"errors\"");
    EXPECT_THAT(messageOf("["), HasSubstr("parse error"));
    EXPECT_EQ(messageOf("*#2=event:\"system-down A\",event:\"wait 1\""), "line 1: event: the effect stands twice");
    for (const char* event : {"service-stop", "clock 5", "state", ""}) {
        EXPECT_EQ(messageOf(("hasys=event:\"" + std::string(event) + "\"").c_str()),
                  "event: vcssim has no command '" + std::string(event) + "' that changes the cluster");
    }
    EXPECT_EQ(messageOf("*#2=event:\" system-down  A\""), "");
}

TEST(ToolFaults, MatchPatterns) {
    EXPECT_TRUE(vcssim::MatchesPattern("*", ""));
    EXPECT_TRUE(vcssim::MatchesPattern("-add *", "-add a b"));
    EXPECT_TRUE(vcssim::MatchesPattern("*b*d", "abcbd"));
    EXPECT_TRUE(vcssim::MatchesPattern("a?c", "abc"));
    EXPECT_FALSE(vcssim::MatchesPattern("a?c", "ac"));
    EXPECT_FALSE(vcssim::MatchesPattern("-add", "-add a"));
    EXPECT_FALSE(vcssim::MatchesPattern("*b", "abc"));
}
