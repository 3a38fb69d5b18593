// Tool output split into tokens, the two error rules, conditions and attribute values.
#include "core/ToolOutput.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <utility>
#include <vector>

namespace {

using clus::Conditions;
using clus::IsErrorList;
using clus::IsErrorText;
using clus::ShownAttributeValue;
using clus::SplitOutput;

typedef std::vector<std::wstring> Tokens;

Tokens Split(const std::wstring& text) {
    Tokens tokens;
    SplitOutput(text, tokens);
    return tokens;
}

std::wstring ValueOr(const std::wstring& text, const std::wstring& otherwise) {
    std::wstring value = otherwise;
    if (!ShownAttributeValue(text, value)) {
        EXPECT_EQ(value, otherwise) << "a failure must not touch the value";
        return L"(none)";
    }
    return value;
}

std::wstring Value(const std::wstring& text) {
    return ValueOr(text, L"untouched");
}

// All texts of up to `length` characters of the alphabet.
std::vector<std::wstring> AllTexts(const std::wstring& alphabet, size_t length) {
    std::vector<std::wstring> texts = {L""};
    size_t first = 0;
    for (size_t n = 0; n < length; ++n) {
        const size_t last = texts.size();
        for (; first < last; ++first) {
            for (const wchar_t character : alphabet) {
                texts.push_back(texts[first] + character);
            }
        }
    }
    return texts;
}

// Splitting ------------------------------------------------------------------------------------------------------

TEST(ToolOutput, NothingGivesNoTokens) {
    EXPECT_EQ(Split(L""), Tokens());
    EXPECT_EQ(Split(L"\n"), Tokens());
    EXPECT_EQ(Split(L" \t \n\n\t\n "), Tokens());
}

TEST(ToolOutput, RowsAreFlattenedInOrder) {
    EXPECT_EQ(Split(L"EVS1  \t\tNODE1\nEVS1\t\tNODE2\n"), (Tokens{L"EVS1", L"NODE1", L"EVS1", L"NODE2"}));
}

TEST(ToolOutput, TokensAreAppended) {
    Tokens tokens = {L"first"};
    SplitOutput(L"second third", tokens);
    EXPECT_EQ(tokens, (Tokens{L"first", L"second", L"third"}));
}

TEST(ToolOutput, LastLineNeedsNoEnd) {
    EXPECT_EQ(Split(L"a\nb"), Split(L"a\nb\n"));
}

TEST(ToolOutput, OnlyBlankTabAndLineFeedSeparate) {
    for (unsigned c = 1; c <= 0xFFFF; ++c) {
        const std::wstring text = L"a" + std::wstring(1, static_cast<wchar_t>(c)) + L"b";
        const bool separates = c == L' ' || c == L'\t' || c == L'\n';
        ASSERT_EQ(Split(text), separates ? (Tokens{L"a", L"b"}) : Tokens{text}) << c;
    }
}

TEST(ToolOutput, QuotesHoldNothingTogether) {
    EXPECT_EQ(Split(L"\"Zyntra Gate\""), (Tokens{L"\"Zyntra", L"Gate\""}));
}

TEST(ToolOutput, NullCharacterEndsItsLineOnly) {
    EXPECT_EQ(Split(std::wstring(L"a b\0 c\nd", 9)), (Tokens{L"a", L"b", L"d"}));
}

TEST(ToolOutput, EveryShortTextIsSplitLikeItsDefinition) {
    for (const std::wstring& text : AllTexts(L"ab \t\n\r", 6)) {
        Tokens expected;
        std::wstring token;
        for (const wchar_t character : text + L"\n") {
            if (character != L' ' && character != L'\t' && character != L'\n') {
                token += character;
            } else if (!token.empty()) {
                expected.push_back(token);
                token.clear();
            }
        }
        ASSERT_EQ(Split(text), expected) << ::testing::PrintToString(text);
    }
}

TEST(ToolOutput, LineIsSplitUpToItsLimit) {
    for (const size_t length : {509u, 510u, 511u, 512u, 513u, 600u, 100000u}) {
        const std::wstring line(length, L'x');
        EXPECT_EQ(Split(line), Tokens{line.substr(0, 511)}) << length;
        EXPECT_EQ(Split(line + L"\nnext\n"), (Tokens{line.substr(0, 511), L"next"})) << length;
    }
}

TEST(ToolOutput, TokenAcrossTheLimitIsCut) {
    EXPECT_EQ(Split(std::wstring(508, L' ') + L"abcdef ghi"), Tokens{L"abc"});
}

TEST(ToolOutput, TokensBehindTheLimitAreLost) {
    EXPECT_EQ(Split(L"first" + std::wstring(506, L' ') + L"second\nthird"), (Tokens{L"first", L"third"}));
    EXPECT_EQ(Split(L"first" + std::wstring(505, L' ') + L"second\nthird"), (Tokens{L"first", L"s", L"third"}));
}

TEST(ToolOutput, LongLineLeavesNothingBehindForAShortOne) {
    EXPECT_EQ(Split(std::wstring(600, L'x') + L"\nab\n"), (Tokens{std::wstring(511, L'x'), L"ab"}));
}

// Error rules ----------------------------------------------------------------------------------------------------

TEST(ToolOutput, TextIsAnErrorByItsFirstWords) {
    EXPECT_TRUE(IsErrorText(L"VCS WARNING V-16-1-40131 Group X does not exist in the local cluster"));
    EXPECT_TRUE(IsErrorText(L"VCS ERROR V-16-1-10600 Cannot connect to VCS engine"));
    EXPECT_TRUE(IsErrorText(L"VCS WARNING"));
    EXPECT_TRUE(IsErrorText(L"VCS ERRORS"));
    EXPECT_FALSE(IsErrorText(L"VCS NOTICE V-16-1-10242 Resource added"));
    EXPECT_FALSE(IsErrorText(L""));
    EXPECT_FALSE(IsErrorText(L"VCS"));
    EXPECT_FALSE(IsErrorText(L"VCS WARNIN"));
    EXPECT_FALSE(IsErrorText(L"VCS  WARNING"));
    EXPECT_FALSE(IsErrorText(L"VCS\tERROR"));
}

TEST(ToolOutput, TextIsAnErrorInAnyLetterCase) {
    for (const std::wstring words : {L"vcs warning", L"vcs error"}) {
        for (unsigned pattern = 0; pattern < 1u << words.size(); ++pattern) {
            std::wstring text = words;
            for (size_t i = 0; i < text.size(); ++i) {
                if ((pattern >> i & 1u) != 0 && text[i] != L' ') {
                    text[i] = static_cast<wchar_t>(text[i] - 0x20);
                }
            }
            ASSERT_TRUE(IsErrorText((text + L" more").c_str())) << ::testing::PrintToString(text);
        }
    }
}

TEST(ToolOutput, ErrorWordsFurtherBackDoNotCount) {
    EXPECT_FALSE(IsErrorText(L" VCS ERROR"));
    EXPECT_FALSE(IsErrorText(L"\nVCS ERROR"));
    EXPECT_FALSE(IsErrorText(L"EVS1 VCS WARNING"));
}

TEST(ToolOutput, OtherCharactersAreNotTakenForLetters) {
    for (unsigned c = 1; c <= 0xFFFF; ++c) {
        const std::wstring text = L"VC" + std::wstring(1, static_cast<wchar_t>(c)) + L" ERROR";
        ASSERT_EQ(IsErrorText(text.c_str()), c == L'S' || c == L's') << c;
    }
}

TEST(ToolOutput, ListIsAnErrorByItsSecondToken) {
    EXPECT_TRUE(IsErrorList({L"EVS1", L"ERROR"}));
    EXPECT_TRUE(IsErrorList({L"EVS1", L"WARNING", L"more"}));
    EXPECT_TRUE(IsErrorList({L"ERROR", L"warning"}));
    EXPECT_TRUE(IsErrorList({L"evs1", L"eRRoR"}));
    EXPECT_FALSE(IsErrorList({L"EVS1", L"NOTICE"}));
    EXPECT_FALSE(IsErrorList({L"EVS1", L"ERRORS"}));
    EXPECT_FALSE(IsErrorList({L"EVS1", L"NODE1", L"ERROR"}));
}

TEST(ToolOutput, ListOfFewerThanTwoTokensIsNoError) {
    EXPECT_FALSE(IsErrorList({}));
    EXPECT_FALSE(IsErrorList({L"ERROR"}));
}

TEST(ToolOutput, MessageOfVcsIsNoErrorInAList) {
    EXPECT_FALSE(IsErrorList({L"VCS", L"ERROR", L"V-16-1-10600"}));
    EXPECT_FALSE(IsErrorList({L"vcs", L"WARNING"}));
    EXPECT_FALSE(IsErrorList({L"Vcs", L"error"}));
    EXPECT_TRUE(IsErrorList({L"VCS1", L"ERROR"}));
}

// Conditions -----------------------------------------------------------------------------------------------------

TEST(ToolOutput, NoPairsGiveNoConditions) {
    EXPECT_EQ(Conditions({}), L"");
}

TEST(ToolOutput, EachConditionStandsBetweenBlanks) {
    EXPECT_EQ(Conditions({{L"Type", L"Lanman"}}), L" Type=Lanman ");
    EXPECT_EQ(Conditions({{L"Type", L"Lanman"}, {L"Group", L"G1"}}), L" Type=Lanman  Group=G1 ");
}

TEST(ToolOutput, ConditionsAreNeitherQuotedNorMerged) {
    EXPECT_EQ(Conditions({{L"A", L"x y"}, {L"A", L"\"z\""}, {L"", L""}}), L" A=x y  A=\"z\"  = ");
}

// Attribute values -----------------------------------------------------------------------------------------------

const std::wstring Header = L"#Resource   Attribute             System     Value\n";

TEST(ToolOutput, ValueIsTheFourthColumnOfTheFirstRow) {
    EXPECT_EQ(Value(Header + L"EVS1-Lanman Group                 global     EVS1\n"), L"EVS1");
    EXPECT_EQ(Value(Header + L"EVS1-Lanman Group\tglobal\tEVS1"), L"EVS1");
}

TEST(ToolOutput, ValueKeepsInnerBlanksAndLosesThoseBehind) {
    EXPECT_EQ(Value(Header + L"R Path global F:\\Data Store\t\\ x \t \r\v\f\n"), L"F:\\Data Store\t\\ x");
    EXPECT_EQ(Value(Header + L"R Keys global HKLM\\SOFTWARE\\A B\t\n"), L"HKLM\\SOFTWARE\\A B");
}

TEST(ToolOutput, ValueOfOtherWhiteSpaceAloneIsEmpty) {
    EXPECT_EQ(Value(Header + L"R A global \r\n"), L"");
    EXPECT_EQ(Value(Header + L"R A global \v\f \r"), L"");
}

TEST(ToolOutput, ValueOfTheFirstSystemIsTaken) {
    EXPECT_EQ(Value(Header + L"R MAC NODE1 one\nR MAC NODE2 two\n"), L"one");
}

TEST(ToolOutput, HeaderIsSkippedWhateverItHolds) {
    EXPECT_EQ(Value(L"\na b c d\n"), L"d");
    EXPECT_EQ(Value(L"a b c no\na b c d\n"), L"d");
}

TEST(ToolOutput, NoValueWithoutARow) {
    EXPECT_EQ(Value(L""), L"(none)");
    EXPECT_EQ(Value(Header), L"(none)");
    EXPECT_EQ(Value(L"R Group global EVS1"), L"(none)");
    EXPECT_EQ(Value(Header + L"\nR Group global EVS1\n"), L"(none)");
}

TEST(ToolOutput, NoValueWithoutAFourthColumn) {
    EXPECT_EQ(Value(Header + L"R AdministratorGroups global     \n"), L"(none)");
    EXPECT_EQ(Value(Header + L"R\n"), L"(none)");
    EXPECT_EQ(Value(Header + L"   \n"), L"(none)");
}

TEST(ToolOutput, ValueIsReadFromTheWholeLine) {
    const std::wstring value(100000, L'v');
    EXPECT_EQ(Value(Header + L"R A global " + value + L" end \n"), value + L" end");
}

TEST(ToolOutput, ValueThatBeginsBehindTheLimitIsNotFound) {
    const std::wstring columns = L"R A global";
    EXPECT_EQ(Value(Header + columns + std::wstring(510 - columns.size(), L' ') + L"value\n"), L"value");
    EXPECT_EQ(Value(Header + columns + std::wstring(511 - columns.size(), L' ') + L"value\n"), L"(none)");
}

TEST(ToolOutput, NullCharacterInAValueIsKept) {
    EXPECT_EQ(Value(Header + std::wstring(L"R A global x\0y \n", 16)), std::wstring(L"x\0y", 3));
}

TEST(ToolOutput, ValueReplacesWhatWasThere) {
    EXPECT_EQ(ValueOr(Header + L"R A global new\n", L"a longer old text"), L"new");
}

} // namespace
