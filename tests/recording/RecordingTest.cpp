// The format of recordings: what is written is read, a cut one is read to where it is cut, anything else is refused.
#include "CallLine.h"
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
    call.in = R"({"cluster":1,"name":"EVS1"})";
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
    EXPECT_EQ(recording.calls[0].in, R"({"cluster":1,"name":"EVS1"})");
    EXPECT_EQ(recording.calls[0].lastError, 5013u);
    EXPECT_EQ(LineOf(recording.calls[0]), LineOf(SomeCall()));
    ASSERT_EQ(recording.tools.size(), 1u);
    EXPECT_EQ(LineOf(recording.tools[0]), LineOf(tool));
}

TEST(Recordings, NameTheFunctionsWhoseCallsTheyLack) {
    Header header = SomeHeader();
    EXPECT_EQ(LineOf(header).find("unseen"), std::string::npos);
    header.unseen = {"ClusterRegOpenKey"};
    EXPECT_EQ(ReadRecording(LineOf(header)).header.unseen, header.unseen);
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

// The quick way of reading takes what the recorder writes, and the long way gives the same for it.
TEST(Recordings, HaveCallsThatAreReadInTwoWays) {
    const std::string plain[] = {
        R"({"call":"A","in":{},"result":0,"thread":0,"time":0.0,"took":0.001})",
        R"({"call":"A","in":{"a":null,"b":false},"result":-1,"lastError":5013,"thread":1,"time":12.34,"took":1.001})",
        R"({"call":"A","in":{"a":7},"result":0,"out":{"n":["x",3],"m":""},"thread":0,"time":1.5,"took":0.25})",
        R"({"call":"A","in":{"a":"E:\\\"b\""},"result":5,"refused":true,"thread":0,"time":1.0,"took":0.0})"};
    for (const std::string& line : plain) {
        RecordedCall call;
        ASSERT_TRUE(ReadPlainCall(line, call)) << line;
        EXPECT_EQ(LineOf(call), line + "\n");
        const Recording slowly = ReadRecording(LineOf(SomeHeader()) + " " + line + "\n");
        ASSERT_EQ(slowly.calls.size(), 1u);
        EXPECT_EQ(LineOf(slowly.calls[0]), line + "\n");
    }
}

TEST(Recordings, HaveLinesThatAreReadInTheLongWayOnly) {
    const std::string lines[] = {
        "",
        "{}",
        R"({"call":"A"})",
        R"({"call":"A","in":{},"result":0,"thread":0,"time":0.0,"took":0.0)",
        R"({"call":"A","in":{},"result":0,"thread":0,"time":0.0,"took":0.0} )",
        R"({"call":"A","in":{},"result":00,"thread":0,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{},"result":0,"thread":0,"time":0,"took":0.0})",
        R"({"call":"A","in":{},"result":0,"thread":0,"time":0.0001,"took":0.0})",
        R"({"call":"A","in":{},"result":0,"lastError":4294967296,"thread":0,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{},"result":0,"thread":4294967296,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{},"result":0,"thread":0,"time":4294967296.0,"took":0.0})",
        R"({"call":"A","in":{"a":1,"a":2},"result":0,"thread":0,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{"a":1,},"result":0,"thread":0,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{"a":{}},"result":0,"thread":0,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{"a":1234567890123456789},"result":0,"thread":0,"time":0.0,"took":0.0})",
        R"({"call":"A","in":{"a":"\/"},"result":0,"thread":0,"time":0.0,"took":0.0})",
        "{\"call\":\"A\",\"in\":{\"a\":\"\xC3\xBC\"},\"result\":0,\"thread\":0,\"time\":0.0,\"took\":0.0}"};
    for (const std::string& line : lines) {
        RecordedCall call;
        EXPECT_FALSE(ReadPlainCall(line, call)) << line;
    }
}

// Each call has a name and an object that a text made by hand may write in any way: they are the same question.
TEST(Recordings, KeepInputsAsTheyAreAsked) {
    const Recording recording = ReadRecording(
        LineOf(SomeHeader()) + "{ \"took\": 1, \"time\": 0, \"thread\": 0, \"result\": 0, \"call\": \"A\", "
                               "\"in\": {\"a\": \"\\/\\u00fc\", \"b\": 1}}\n");
    ASSERT_EQ(recording.calls.size(), 1u);
    EXPECT_EQ(recording.calls[0].in, "{\"a\":\"/\xC3\xBC\",\"b\":1}");
    EXPECT_EQ(recording.calls[0].out, "{}");
}

TEST(Recordings, AreKnownByTheirBeginning) {
    EXPECT_TRUE(IsRecording(LineOf(SomeHeader())));
    EXPECT_FALSE(IsRecording("{\"cluster\": {}}"));
    EXPECT_FALSE(IsRecording(""));
}
