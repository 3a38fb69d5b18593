#include "picture/Printable.h"
#include "picture/TextWidth.h"
#include "picture/Xml.h"

#include <gtest/gtest.h>

using namespace picture;

TEST(TextWidth, WideCharactersTakeTwoCellsAndMarksNone) {
    EXPECT_EQ(CellsOf("EVS1"), 4U);
    EXPECT_EQ(CellsOf("名前"), 4U);
    EXPECT_EQ(CellsOf("Ä"), 1U);
    EXPECT_EQ(CellsOf("A\xCC\x88"), 1U); // A with a diaeresis of its own
    EXPECT_EQ(CellsOf("\xF0\x9F\x98\x80"), 2U);
}

TEST(TextWidth, BytesThatAreNoUtf8AreACharacterEach) {
    for (const char* const text : {"\xFF\x80", "\xC3(", "\xE2\x82", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
        std::size_t position = 0;
        EXPECT_EQ(NextCharacter(text, position), U'\xFFFD') << text;
        EXPECT_EQ(position, 1U);
    }
}

TEST(TextWidth, TheMiddleOfALongTextIsLeftOut) {
    EXPECT_EQ(ShortenedToCells("0123456789", 10), "0123456789");
    EXPECT_EQ(ShortenedToCells("0123456789", 9), "012...789");
    EXPECT_EQ(ShortenedToCells("0123456789", 8), "012...89");
    EXPECT_EQ(ShortenedToCells("名名名名名", 8), "名...名"); // half a character is none
}

TEST(TextWidth, PaddingCountsCells) {
    EXPECT_EQ(PaddedToCells("名", 4), "名  ");
    EXPECT_EQ(PaddedToCells("long", 2), "long");
}

TEST(Xml, MarkupIsShownAndControlCharactersAreVisible) {
    EXPECT_EQ(EscapedXml("<script>\"&'"), "&lt;script&gt;&quot;&amp;&#39;");
    EXPECT_EQ(EscapedXml("a\tb\x01\x7F\xC2\x85"), "a\\x09b\\x01\\x7F\\x85");
    EXPECT_EQ(EscapedXml("名前"), "名前");
}

TEST(Xml, WhatXmlDoesNotTakeIsReplaced) {
    EXPECT_EQ(EscapedXml("\xFF"), "\xEF\xBF\xBD");
    EXPECT_EQ(EscapedXml("\xEF\xBF\xBF"), "\xEF\xBF\xBD"); // U+FFFF
    EXPECT_EQ(EscapedXml("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}
