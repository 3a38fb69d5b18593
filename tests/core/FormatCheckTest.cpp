// The check of formats against their arguments, which otherwise shows only when something does not compile.
#include "core/FormatCheck.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace {

template <typename... Types> constexpr bool Takes(const wchar_t* format, Types...) {
    return clus::FormatTakes(format, clus::FormatArguments<Types...>());
}

const wchar_t* const text = L"text";

TEST(FormatCheck, AFormatWithoutConversionsTakesNothing) {
    EXPECT_TRUE(Takes(L""));
    EXPECT_TRUE(Takes(L"100%% done"));
    EXPECT_FALSE(Takes(L"", 1));
    EXPECT_FALSE(Takes(L"100%% done", 1));
}

TEST(FormatCheck, EachConversionTakesItsKindAndNoOther) {
    EXPECT_TRUE(Takes(L"%s", text));
    EXPECT_TRUE(Takes(L"%c", L'x'));
    EXPECT_TRUE(Takes(L"%d %u %x", -1, 1u, 1u));
    EXPECT_TRUE(Takes(L"%08x", 1));
    EXPECT_TRUE(Takes(L"%d", true));

    EXPECT_FALSE(Takes(L"%s", 1));
    EXPECT_FALSE(Takes(L"%s", "narrow"));
    EXPECT_FALSE(Takes(L"%s", std::wstring(L"object")));
    EXPECT_FALSE(Takes(L"%c", text));
    EXPECT_FALSE(Takes(L"%c", 1));
    EXPECT_FALSE(Takes(L"%d", text));
    EXPECT_FALSE(Takes(L"%d", 1.0));
    EXPECT_FALSE(Takes(L"%d", nullptr));
}

TEST(FormatCheck, NumbersHaveAtMost32Bits) {
    EXPECT_TRUE(Takes(L"%u", static_cast<unsigned short>(1)));
    EXPECT_FALSE(Takes(L"%d", 1LL));
    EXPECT_FALSE(Takes(L"%u", static_cast<unsigned long long>(1)));
}

TEST(FormatCheck, TheNumberOfArgumentsIsThatOfTheConversions) {
    EXPECT_TRUE(Takes(L"%s, %s and %d", text, text, 3));
    EXPECT_FALSE(Takes(L"%s, %s and %d", text, text));
    EXPECT_FALSE(Takes(L"%s, %s and %d", text, text, 3, 4));
    EXPECT_FALSE(Takes(L"%s, %s and %d", text, 3, text));
}

TEST(FormatCheck, WhatTheLibraryDoesNotUseIsRefused) {
    const wchar_t* const formats[] = {L"%",    L"%i",   L"%ld", L"%lu", L"%S", L"%p",
                                      L"%-4d", L"%.2d", L"%*d", L"%5s", L"%n"};
    for (std::size_t i = 0; i < std::size(formats); ++i) {
        EXPECT_FALSE(Takes(formats[i], 1)) << "format " << i;
        EXPECT_FALSE(Takes(formats[i], text)) << "format " << i;
    }
}

} // namespace
