// Comparing names: the wide mapping for whole names, the narrow one for host names.
#include "core/ServerName.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cwctype>
#include <string>

namespace {

using clus::StartsLikeHostName;
using clus::UpperFirstLabel;
using clus::WideUpper;

TEST(ServerName, WideUpperMapsEveryCharacter) {
    EXPECT_EQ(WideUpper(L""), L"");
    EXPECT_EQ(WideUpper(L"node-a.Exchange_01.local"), L"NODE-A.EXCHANGE_01.LOCAL");
    EXPECT_EQ(WideUpper(L"192.168.1.10"), L"192.168.1.10");
}

TEST(ServerName, WideUpperFollowsTheRuntime) {
    for (unsigned c = 1; c <= 0xFFFF; ++c) {
        const wchar_t text[] = {static_cast<wchar_t>(c), L'\0'};
        ASSERT_EQ(WideUpper(text), std::wstring(1, static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)))))
            << c;
    }
}

TEST(ServerName, HostNameStartsWithALetter) {
    for (unsigned c = 1; c < 0x80; ++c) {
        const wchar_t text[] = {static_cast<wchar_t>(c), L'\0'};
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        EXPECT_EQ(StartsLikeHostName(text), letter) << c;
    }
}

TEST(ServerName, OnlyTheFirstCharacterTellsAHostName) {
    EXPECT_TRUE(StartsLikeHostName(L"a1.2.3"));
    EXPECT_FALSE(StartsLikeHostName(L"1a.b.c"));
    EXPECT_FALSE(StartsLikeHostName(L".a"));
    EXPECT_FALSE(StartsLikeHostName(L""));
}

TEST(ServerName, CharactersBeyondOneByteStartNoHostName) {
    for (unsigned c = 0x100; c <= 0xFFFF; ++c) {
        const wchar_t text[] = {static_cast<wchar_t>(c), L'a', L'\0'};
        ASSERT_FALSE(StartsLikeHostName(text)) << c;
    }
}

TEST(ServerName, HighSingleBytesFollowTheNarrowClassification) {
    for (unsigned c = 0x80; c <= 0xFF; ++c) {
        const wchar_t text[] = {static_cast<wchar_t>(c), L'a', L'\0'};
        EXPECT_EQ(StartsLikeHostName(text), std::isalpha(static_cast<int>(c)) != 0) << c;
        EXPECT_EQ(UpperFirstLabel(text)[0], static_cast<wchar_t>(std::toupper(static_cast<int>(c)))) << c;
    }
}

TEST(ServerName, FirstLabelEndsBeforeTheFirstDot) {
    EXPECT_EQ(UpperFirstLabel(L"node-a.example.com"), L"NODE-A");
    EXPECT_EQ(UpperFirstLabel(L"node-a."), L"NODE-A");
    EXPECT_EQ(UpperFirstLabel(L"node-a"), L"NODE-A");
    EXPECT_EQ(UpperFirstLabel(L"a..b"), L"A");
    EXPECT_EQ(UpperFirstLabel(L".com"), L"");
    EXPECT_EQ(UpperFirstLabel(L""), L"");
}

TEST(ServerName, FirstLabelLeavesCharactersBeyondOneByte) {
    EXPECT_EQ(UpperFirstLabel(L"a\u0101\u03b1\u0444.b"), L"A\u0101\u03b1\u0444");
    // Cut down to one byte these would be letters.
    EXPECT_EQ(UpperFirstLabel(L"a\u0161\u0162"), L"A\u0161\u0162");
}

} // namespace
