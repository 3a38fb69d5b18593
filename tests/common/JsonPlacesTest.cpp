#include "common/JsonPlaces.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const char* const Text = "{\n"
                         "  \"cluster\": {\"name\": \"a \\\" ] }\"},\n"
                         "  \"groups\": [\n"
                         "    {\"name\": \"A\"},\n"
                         "    {\"name\": \"B\", \"owner\": [1, [2, 3]], \"dotted.name\": {\"x\": 5}, \"last\": true}\n"
                         "  ]\n"
                         "}\n";

std::string Place(const std::string& place) {
    const common::TextPlace found = common::FindJsonPlace(Text, place);
    return std::to_string(found.line) + ":" + std::to_string(found.column);
}

} // namespace

TEST(JsonPlaces, ValuesAreFoundByTheirPlace) {
    EXPECT_EQ(Place(""), "1:1");
    EXPECT_EQ(Place("cluster"), "2:14");
    EXPECT_EQ(Place("cluster.name"), "2:23");
    EXPECT_EQ(Place("groups"), "3:13");
    EXPECT_EQ(Place("groups[0]"), "4:5");
    EXPECT_EQ(Place("groups[1].owner"), "5:28");
    EXPECT_EQ(Place("groups[1].owner[1][1]"), "5:36");
    EXPECT_EQ(Place("groups[1].last"), "5:74");
}

TEST(JsonPlaces, NamesMayHoldDots) {
    EXPECT_EQ(Place("groups[1].dotted.name.x"), "5:62");
}

TEST(JsonPlaces, WhatIsNotThereIsSoughtInItsObject) {
    EXPECT_EQ(Place("colour"), "1:1");
    EXPECT_EQ(Place("groups[0].owner"), "4:5");
    EXPECT_EQ(Place("groups[7]"), "3:13");
    EXPECT_EQ(Place("groups.name"), "3:13");
    EXPECT_EQ(Place("cluster.name.x"), "2:23");
}
