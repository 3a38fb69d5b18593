// Names appended once, in order, beside what the list held before.
#include "core/UniqueNames.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using clus::UniqueNames;

typedef std::vector<std::wstring> Names;

Names Appended(Names names, const Names& more) {
    UniqueNames unique(names);
    for (const std::wstring& name : more) {
        unique.Append(std::wstring(name));
    }
    return names;
}

TEST(UniqueNames, EachNameIsAppendedOnceInOrder) {
    EXPECT_EQ(Appended({}, {L"b", L"a", L"b", L"c", L"a"}), (Names{L"b", L"a", L"c"}));
}

TEST(UniqueNames, NamesAlreadyThereStayAndCount) {
    EXPECT_EQ(Appended({L"x", L"a"}, {L"a", L"b", L"x"}), (Names{L"x", L"a", L"b"}));
}

TEST(UniqueNames, DuplicatesAlreadyThereStay) {
    EXPECT_EQ(Appended({L"a", L"a"}, {L"a", L"b"}), (Names{L"a", L"a", L"b"}));
}

TEST(UniqueNames, LetterCaseCounts) {
    EXPECT_EQ(Appended({L"EVS1"}, {L"evs1", L"EVS1", L"Evs1"}), (Names{L"EVS1", L"evs1", L"Evs1"}));
}

TEST(UniqueNames, TheEmptyNameIsAName) {
    EXPECT_EQ(Appended({}, {L"", L"", L"a"}), (Names{L"", L"a"}));
}

TEST(UniqueNames, APartOfALongerTextIsANameLikeAnother) {
    Names names = {L"a"};
    UniqueNames unique(names);
    const std::wstring row = L"b a b ab";
    for (const std::size_t at : {0u, 2u, 4u}) {
        unique.Append(std::wstring_view(row).substr(at, 1));
    }
    unique.Append(std::wstring_view(row).substr(6, 2));
    unique.Append(std::wstring(L"b"));
    EXPECT_EQ(names, (Names{L"a", L"b", L"ab"}));
}

TEST(UniqueNames, GrowthOfTheListLosesNothing) {
    Names expected;
    Names twice;
    for (int i = 0; i < 20000; ++i) {
        const std::wstring name = L"a resource name of some length " + std::to_wstring(i);
        expected.push_back(name);
        twice.push_back(name);
        twice.push_back(name);
    }
    EXPECT_EQ(Appended({}, twice), expected);
}

TEST(UniqueNames, ManyNamesAreFoundAgainHoweverFarApart) {
    Names names;
    Names held;
    for (int i = 0; i < 20000; ++i) {
        names.push_back(L"name" + std::to_wstring(i));
        if (i % 20 == 0) {
            held.push_back(names.back());
        }
    }
    Names twice = names;
    twice.insert(twice.end(), names.begin(), names.end());
    EXPECT_EQ(Appended({}, twice), names);

    Names rest = held;
    for (int i = 0; i < 20000; ++i) {
        if (i % 20 != 0) {
            rest.push_back(names[static_cast<std::size_t>(i)]);
        }
    }
    EXPECT_EQ(Appended(held, twice), rest);
}

} // namespace
