// The first of two columns, line by line, held against splitting the whole text.
#include "core/NameColumn.h"
#include "core/ToolOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using clus::NameColumn;

typedef std::vector<std::wstring> Names;

void AddLines(NameColumn& column, const std::wstring& text) {
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        column.AddLine(std::wstring_view(text).substr(start, end - start));
        start = end + 1;
    }
}

Names Found(const std::wstring& text, Names names = Names()) {
    NameColumn column;
    AddLines(column, text);
    EXPECT_FALSE(column.IsError());
    column.MoveTo(names);
    return names;
}

bool IsError(const std::wstring& text) {
    NameColumn column;
    AddLines(column, text);
    return column.IsError();
}

TEST(NameColumn, IsTheFirstOfTwoTokens) {
    EXPECT_EQ(Found(L"A NODE1\nB\tNODE1\n"), (Names{L"A", L"B"}));
    EXPECT_EQ(Found(L"A\nB\nC D E\n\nF"), (Names{L"A", L"C", L"E"}));
}

TEST(NameColumn, HoldsEachNameOnceInTheOrderOfItsFirstRow) {
    EXPECT_EQ(Found(L"B N\nA N\nB M\nA M\nb N\n"), (Names{L"B", L"A", L"b"}));
}

TEST(NameColumn, AddsToAListWhatIsNotThereYet) {
    EXPECT_EQ(Found(L"C N\nA N\nB N\nA M\n", {L"A", L"A", L"x"}), (Names{L"A", L"A", L"x", L"C", L"B"}));
    EXPECT_EQ(Found(L"", {L"A", L"A"}), (Names{L"A", L"A"}));
}

TEST(NameColumn, CutsALineWhereItsSplittingEnds) {
    const std::wstring longName(600, L'n');
    EXPECT_EQ(Found(longName + L" N\nN\nB N\n"), (Names{longName.substr(0, 511), L"B"}));
    EXPECT_EQ(Found(std::wstring(L"A N\0C D\nB N\n", 12)), (Names{L"A", L"B"}));
}

TEST(NameColumn, IsAnErrorByTheSecondTokenAsAListIs) {
    for (const wchar_t* text : {L"", L"A", L"A ERROR", L"A\nwarning\n", L"VCS ERROR x", L"vcs warning", L"A ERRORS",
                                L"ERROR A", L"A B\nC ERROR\n"}) {
        Names tokens;
        clus::SplitOutput(text, tokens);
        EXPECT_EQ(IsError(text), clus::IsErrorList(tokens)) << ::testing::PrintToString(text);
    }
    EXPECT_TRUE(IsError(L"A Error B C"));
    EXPECT_FALSE(IsError(L"VCS Error B C"));
}

} // namespace
