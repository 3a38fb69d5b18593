// Room for answers of a cluster that may tell any size.
#include "common/AnswerRoom.h"

#include <gtest/gtest.h>

using common::GrowForName;
using common::GrowRoom;
using common::NameIn;

namespace {

TEST(AnswerRoom, GrowsToWhatIsNeeded) {
    std::vector<unsigned char> room(100);
    EXPECT_TRUE(GrowRoom(room, 1000, 5000));
    EXPECT_EQ(room.size(), 1000u);
    EXPECT_TRUE(GrowRoom(room, 5000, 5000));
    EXPECT_EQ(room.size(), 5000u);
}

TEST(AnswerRoom, DoublesAtLeastAndEndsAtTheMost) {
    std::vector<unsigned char> room(100);
    EXPECT_TRUE(GrowRoom(room, 101, 300));
    EXPECT_EQ(room.size(), 200u);
    EXPECT_TRUE(GrowRoom(room, 201, 300));
    EXPECT_EQ(room.size(), 300u);
    EXPECT_FALSE(GrowRoom(room, 301, 300));
    EXPECT_EQ(room.size(), 300u);
}

TEST(AnswerRoom, DoesNotGrowForWhatHasRoom) {
    std::vector<unsigned char> room(100);
    EXPECT_FALSE(GrowRoom(room, 100, 300));
    EXPECT_FALSE(GrowRoom(room, 0, 300));
    EXPECT_EQ(room.size(), 100u);
}

TEST(AnswerRoom, OneMoreCharacterEachTimeComesToAnEnd) {
    std::vector<wchar_t> room(64);
    int asked = 1;
    while (GrowForName(room, room.size())) {
        ++asked;
    }
    EXPECT_EQ(asked, 10);
    EXPECT_EQ(room.size(), common::LongestName);
}

TEST(AnswerRoom, ALengthOfAllOnesDoesNotWrapAround) {
    std::vector<wchar_t> room(64);
    EXPECT_FALSE(GrowForName(room, 0xFFFFFFFF));
    EXPECT_EQ(room.size(), 64u);
}

TEST(AnswerRoom, ANameNeedsRoomForItsTerminator) {
    std::vector<wchar_t> room(64);
    EXPECT_FALSE(GrowForName(room, 63));
    EXPECT_TRUE(GrowForName(room, 64));
}

TEST(AnswerRoom, ANameEndsAtItsTerminatorOrWithTheRoom) {
    EXPECT_EQ(NameIn({L'a', L'b', 0, L'c'}), L"ab");
    EXPECT_EQ(NameIn({L'a', L'b'}), L"ab");
    EXPECT_EQ(NameIn({0}), L"");
    EXPECT_EQ(NameIn({}), L"");
}

} // namespace
