// JSON with the place of what is wrong.
#include "ErrorOf.h"

#include "common/Json.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;

using common::Json;
using common::JsonError;
using common::ObjectReader;
using common::ParseJson;

namespace {

std::string ParseErrorOf(const std::string& text) {
    return ErrorOf<JsonError>([&text] { ParseJson(text); });
}

} // namespace

TEST(JsonText, KeepsTheOrderOfItsMembers) {
    EXPECT_EQ(common::DumpJsonLine(ParseJson(R"({"b": [1, null], "a": "x"})")), R"({"b":[1,null],"a":"x"})");
    EXPECT_EQ(common::DumpJson(ParseJson(R"({"b": [1], "a": {}})")), "{\n  \"b\": [\n    1\n  ],\n  \"a\": {}\n}\n");
}

TEST(JsonText, SaysWhereItIsMalformed) {
    EXPECT_THAT(ParseErrorOf("{\n \"a\": ,"), HasSubstr("line 2, column 7"));
    EXPECT_THAT(ParseErrorOf(""), HasSubstr("line 1, column 1"));
    EXPECT_THAT(ParseErrorOf("[1] 2"), HasSubstr("line 1, column 5"));
    EXPECT_THAT(ParseErrorOf("[\"\xFF\"]"), HasSubstr("line 1, column 3"));
}

TEST(JsonText, RefusesMembersThatStandTwice) {
    EXPECT_EQ(ParseErrorOf(R"({"a": 1, "a": 2})"), "a: the member stands twice");
    EXPECT_EQ(ParseErrorOf(R"({"list": [0, [], {"b": {"c": 1}, "b": 2}]})"), "list[2].b: the member stands twice");
    EXPECT_EQ(ParseErrorOf(R"([{"a": 1}, {"a": 2}])"), "none") << "of different objects";
}

TEST(JsonText, IsWrittenAsUtf8WhateverTheBytes) {
    EXPECT_EQ(common::DumpJsonLine(Json("a\xFF\xC3\xA4")), "\"a\xEF\xBF\xBD\xC3\xA4\"");
    EXPECT_EQ(common::DumpJson(Json("\xFF")), "\"\xEF\xBF\xBD\"\n");
}

TEST(JsonText, OfAnItem) {
    EXPECT_EQ(common::TextItem(Json("a"), "list[0]"), "a");
    EXPECT_EQ(ErrorOf<JsonError>([] { common::TextItem(Json(1), "list[0]"); }), "list[0]: a text is expected");
}

TEST(JsonObjectReader, ReadsWhatIsThere) {
    const Json json = ParseJson(R"({"text": "x", "number": 4294967295, "flag": true, "list": ["a", "b"]})");
    ObjectReader reader(json, "");
    EXPECT_EQ(reader.Text("text"), "x");
    EXPECT_EQ(reader.TextOr("text", "y"), "x");
    EXPECT_EQ(reader.NumberOr("number", 7, 0xFFFFFFFF), 0xFFFFFFFFu);
    EXPECT_TRUE(reader.FlagOr("flag", false));
    std::vector<std::string> items;
    reader.Each("list", [&items](const Json& item, const std::string& place) {
        items.push_back(place + "=" + item.get<std::string>());
    });
    EXPECT_THAT(items, ElementsAre("list[0]=a", "list[1]=b"));
    EXPECT_NO_THROW(reader.Done());
}

TEST(JsonObjectReader, WhatIsAbsentHasItsFallback) {
    const Json json = Json::object();
    ObjectReader reader(json, "");
    EXPECT_EQ(reader.TextOr("text", "y"), "y");
    EXPECT_EQ(reader.NumberOr("number", 7, 8), 7u);
    EXPECT_TRUE(reader.FlagOr("flag", true));
    EXPECT_EQ(reader.Member("x"), nullptr);
    reader.Each("list", [](const Json&, const std::string&) { ADD_FAILURE(); });
}

TEST(JsonObjectReader, SaysWhatIsWrongAndWhere) {
    const Json json = ParseJson(R"({"text": 1, "big": 9, "minus": -1, "half": 1.5, "flag": 0, "list": {}})");
    ObjectReader reader(json, "groups[1]");
    EXPECT_EQ(ErrorOf<JsonError>([&] { reader.Text("absent"); }), "groups[1].absent: a text is expected");
    EXPECT_EQ(ErrorOf<JsonError>([&] { reader.TextOr("text", ""); }), "groups[1].text: a text is expected");
    for (const char* name : {"big", "minus", "half", "text"}) {
        const std::string message =
            ErrorOf<JsonError>([&] { reader.NumberOr(name, 0, name == std::string("text") ? 0 : 8); });
        EXPECT_THAT(message, HasSubstr(std::string("groups[1].") + name + ": a whole number from 0 to "));
    }
    EXPECT_EQ(ErrorOf<JsonError>([&] { reader.FlagOr("flag", true); }), "groups[1].flag: true or false is expected");
    EXPECT_EQ(ErrorOf<JsonError>([&] { reader.Each("list", [](const Json&, const std::string&) {}); }),
              "groups[1].list: a list is expected");
    EXPECT_EQ(ErrorOf<JsonError>([] { ObjectReader(Json::array(), "x"); }), "x: an object is expected");
}

TEST(JsonObjectReader, RefusesMembersThatNobodyAskedFor) {
    const Json json = ParseJson(R"({"known": 1, "colour": 2})");
    ObjectReader outermost(json, "");
    outermost.Member("known");
    EXPECT_EQ(ErrorOf<JsonError>([&] { outermost.Done(); }), "colour: unknown member");
    ObjectReader inner(json, "nodes[0]");
    inner.Member("known");
    EXPECT_EQ(ErrorOf<JsonError>([&] { inner.Done(); }), "nodes[0].colour: unknown member");
}
