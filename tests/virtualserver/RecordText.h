// The text members of a server record, seen byte for byte.
#ifndef RECORDTEXT_H
#define RECORDTEXT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace harness {

// The text; that it is terminated within its member is checked.
template <std::size_t Size> std::wstring Text(const wchar_t (&member)[Size]) {
    EXPECT_NE(std::find(member, member + Size, L'\0'), member + Size) << "not terminated";
    return std::wstring(member, std::find(member, member + Size, L'\0'));
}

// Whether everything behind the text is zero.
template <std::size_t Size> bool TailIsZero(const wchar_t (&member)[Size]) {
    return std::all_of(std::find(member, member + Size, L'\0'), member + Size, [](wchar_t c) { return c == L'\0'; });
}

} // namespace harness

#endif
