// Conversion between UTF-8 and UTF-16, letter case.
#include "common/Text.h"

#include <gtest/gtest.h>

using common::Folded;
using common::HexDigits;
using common::IsSameName;
using common::IsUtf8;
using common::ToUtf16;
using common::ToUtf8;

TEST(Text, IsConvertedBothWays) {
    const std::wstring wide = L"a\u00e4\u4e2d\U0001f600";
    const std::string utf8 = "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80";
    EXPECT_EQ(ToUtf8(wide), utf8);
    EXPECT_EQ(ToUtf16(utf8), wide);
    EXPECT_TRUE(IsUtf8(utf8));
}

TEST(Text, MayBeEmptyOrHoldNullCharacters) {
    EXPECT_EQ(ToUtf8(L""), "");
    EXPECT_EQ(ToUtf16(""), L"");
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_EQ(ToUtf8(std::wstring(L"a\0b\0", 4)), std::string("a\0b\0", 4));
    EXPECT_EQ(ToUtf16(std::string("a\0b\0", 4)), std::wstring(L"a\0b\0", 4));
}

TEST(Text, LoneSurrogatesBecomeTheReplacementCharacter) {
    EXPECT_EQ(ToUtf8(std::wstring(L"a") + wchar_t(0xD83D)), "a\xEF\xBF\xBD");
    EXPECT_EQ(ToUtf8(std::wstring(1, wchar_t(0xDE00)) + L"b"), "\xEF\xBF\xBD"
                                                               "b");
    EXPECT_EQ(ToUtf8({wchar_t(0xDE00), wchar_t(0xD83D), L'!'}), "\xEF\xBF\xBD\xEF\xBF\xBD!") << "in the wrong order";
}

TEST(Text, BrokenUtf8BecomesTheReplacementCharacter) {
    const struct {
        const char* name;
        const char* utf8;
        const wchar_t* text;
    } cases[] = {
        {"a byte that never occurs",
         "a\xFF"
         "b",
         L"a\xFFFD"
         L"b"},
        {"a continuation without a start",
         "a\x80"
         "b",
         L"a\xFFFD"
         L"b"},
        {"a start without a continuation", "a\xC3", L"a\xFFFD"},
    };
    for (const auto& broken : cases) {
        EXPECT_EQ(ToUtf16(broken.utf8), broken.text) << broken.name;
        EXPECT_FALSE(IsUtf8(broken.utf8)) << broken.name;
    }
    // How many stand for longer ones is the platform's affair.
    for (const char* utf8 : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE4\xB8"}) {
        const std::wstring text = ToUtf16(utf8);
        EXPECT_NE(text, L"");
        EXPECT_EQ(text.find_first_not_of(L'\xFFFD'), std::wstring::npos);
        EXPECT_FALSE(IsUtf8(utf8));
    }
}

TEST(Text, IsFoldedForComparing) {
    EXPECT_EQ(Folded(L""), L"");
    EXPECT_EQ(Folded(L"Evs1 disk-Z_[~"), L"EVS1 DISK-Z_[~");
    EXPECT_EQ(Folded(L"B\u00fcro \u00e9t\u00e9"), Folded(L"b\u00dcRO \u00c9T\u00c9"));
    EXPECT_NE(Folded(L"b\u00fcro"), Folded(L"buro"));
    EXPECT_EQ(Folded(std::wstring(L"a\0b", 3)), std::wstring(L"A\0B", 3));
}

TEST(Text, NamesAreTheSameInAnyLetterCase) {
    EXPECT_TRUE(IsSameName(L"B\u00fcro 1", L"b\u00dcRO 1"));
    EXPECT_FALSE(IsSameName(L"B\u00fcro 1", L"B\u00fcro 11"));
    EXPECT_TRUE(IsSameName("B\xC3\xBCro 1", "b\xC3\x9CRO 1"));
    EXPECT_FALSE(IsSameName("B\xC3\xBCro", "Buro"));
}

TEST(Text, BytesAreShownInDigits) {
    EXPECT_EQ(HexDigits(nullptr, 0), "");
    EXPECT_EQ(HexDigits("\x00\x7F\xAB\xFF", 4), "007fabff");
}
