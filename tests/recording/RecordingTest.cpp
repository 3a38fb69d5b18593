// The format of recordings: what is written is read, a cut one is read to where it is cut, anything else is refused.
#include "Recording.h"

#include <gtest/gtest.h>

#include <string>

using common::Json;
using namespace recording;

namespace {

Header SomeHeader() {
    Header header;
    header.program = "test 1.0";
    header.begun = "2026-01-02T03:04:05Z";
    header.command = Json::array({"servers"});
    header.cluster = "failover";
    header.computer = "NODE1";
    return header;
}

RecordedCall SomeCall() {
    RecordedCall call;
    call.name = "OpenClusterGroup";
    call.in["cluster"] = 1;
    call.in["name"] = "EVS1";
    call.lastError = 5013;
    call.time = 1.5;
    return call;
}

std::string Refusal(const std::string& text) {
    try {
        ReadRecording(text);
        return "taken";
    } catch (const common::JsonError& error) {
        return error.what();
    }
}

} // namespace

TEST(Recordings, AreReadAsTheyWereWritten) {
    RecordedTool tool;
    tool.commandLine = "hagrp -list ";
    tool.output = {{false, "EVS1\r\n"}, {true, "VCS \xC3\xBC\r\n"}};
    tool.exitCode = 1;
    const std::string text = LineOf(SomeHeader()) + LineOf(SomeCall()) + LineOf(tool) + EndLine(1, 1, 0);
    const Recording recording = ReadRecording(text);
    EXPECT_FALSE(recording.isCut);
    EXPECT_EQ(recording.header.computer, "NODE1");
    ASSERT_EQ(recording.calls.size(), 1u);
    EXPECT_EQ(recording.calls[0].in.dump(), R"({"cluster":1,"name":"EVS1"})");
    EXPECT_EQ(recording.calls[0].lastError, 5013u);
    EXPECT_EQ(LineOf(recording.calls[0]), LineOf(SomeCall()));
    ASSERT_EQ(recording.tools.size(), 1u);
    EXPECT_EQ(LineOf(recording.tools[0]), LineOf(tool));
}

TEST(Recordings, OfProgramsThatWereEndedByForceAreReadToTheirLastWholeLine) {
    const std::string text = LineOf(SomeHeader()) + LineOf(SomeCall()) + LineOf(SomeCall()).substr(0, 30);
    const Recording recording = ReadRecording(text);
    EXPECT_TRUE(recording.isCut);
    EXPECT_EQ(recording.calls.size(), 1u);
}

TEST(Recordings, WithLinesMissingOrBehindTheEndAreRefused) {
    const std::string head = LineOf(SomeHeader());
    EXPECT_EQ(Refusal(head + EndLine(1, 0, 0)), "line 2: lines are missing");
    EXPECT_EQ(Refusal(head + EndLine(0, 0, 0) + LineOf(SomeCall())), "line 3: something follows the end");
    EXPECT_EQ(Refusal("{}\n"), "line 1: the first line of a recording is expected");
    EXPECT_EQ(Refusal("{\"recording\":2}\n"), "line 1: a recording of version 1 is expected");
    EXPECT_EQ(Refusal(head + "{\"call\":\"X\"}\n"), "line 2.result: a whole number is expected");
    EXPECT_EQ(Refusal(head + "[]\n"), "line 2: a call, a tool or the end is expected");
}

TEST(Recordings, AreKnownByTheirBeginning) {
    EXPECT_TRUE(IsRecording(LineOf(SomeHeader())));
    EXPECT_FALSE(IsRecording("{\"cluster\": {}}"));
    EXPECT_FALSE(IsRecording(""));
}
