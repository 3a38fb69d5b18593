// How the lines of a settings file become a table.
#include "core/SettingsFile.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

using clus::ParseSettings;
using clus::SettingsTable;

namespace {

typedef std::vector<std::string> Lines;

// The limit, written out: a test that shared the library's constant could not see it change.
const std::size_t TotalCharacters = 10240;

SettingsTable Table(std::initializer_list<std::pair<const std::wstring, std::wstring>> entries) {
    return SettingsTable(entries);
}

} // namespace

TEST(SettingsFile, NoLinesDefineNothing) {
    EXPECT_TRUE(ParseSettings({}).empty());
}

TEST(SettingsFile, AKeyATabAndAValueAreAnEntry) {
    EXPECT_EQ(ParseSettings({"Key\tValue\n"}), Table({{L"Key", L"Value"}}));
}

TEST(SettingsFile, TheLastLineNeedsNoLineFeed) {
    EXPECT_EQ(ParseSettings({"Key\tValue"}), Table({{L"Key", L"Value"}}));
}

TEST(SettingsFile, SeveralTabsSeparateLikeOne) {
    EXPECT_EQ(ParseSettings({"\t\tKey\t\t\tValue\t\n"}), Table({{L"Key", L"Value"}}));
}

TEST(SettingsFile, SpacesAreOrdinaryCharacters) {
    EXPECT_EQ(ParseSettings({" My Key \t A Value \n"}), Table({{L" My Key ", L" A Value "}}));
    EXPECT_TRUE(ParseSettings({"Key Value\n"}).empty());
}

TEST(SettingsFile, AFirstFieldThatBeginsWithAHashIsAComment) {
    EXPECT_TRUE(ParseSettings({"#Key\tValue\n"}).empty());
    EXPECT_TRUE(ParseSettings({"\t# Key\tValue\n"}).empty());
    EXPECT_EQ(ParseSettings({"Key\t#Value\n"}), Table({{L"Key", L"#Value"}}));
}

TEST(SettingsFile, AnEntryBehindACommentTakesEffect) {
    EXPECT_EQ(ParseSettings({"# comment\n", "Key\tValue\n"}), Table({{L"Key", L"Value"}}));
    EXPECT_EQ(ParseSettings({"# comment\twith a tab\n", "Key\tValue\n"}), Table({{L"Key", L"Value"}}));
}

TEST(SettingsFile, QuotesAroundAValueGo) {
    EXPECT_EQ(ParseSettings({"Key\t\"SOFTWARE\\Some Key\"\n"}), Table({{L"Key", L"SOFTWARE\\Some Key"}}));
    EXPECT_EQ(ParseSettings({"Key\t\"open\n"}), Table({{L"Key", L"open"}}));
    EXPECT_EQ(ParseSettings({"Key\tclosed\"\n"}), Table({{L"Key", L"closed\""}}));
    EXPECT_EQ(ParseSettings({"Key\t\"a\"b\"\n"}), Table({{L"Key", L"a\"b"}}));
}

TEST(SettingsFile, AValueOfQuotesAloneDefinesNothing) {
    EXPECT_TRUE(ParseSettings({"Key\t\"\n"}).empty());
    EXPECT_TRUE(ParseSettings({"Key\t\"\"\n"}).empty());
    EXPECT_EQ(ParseSettings({"Key\t\"\"\"\n"}), Table({{L"Key", L"\""}}));
}

TEST(SettingsFile, ATabEndsAValueInsideQuotesToo) {
    EXPECT_EQ(ParseSettings({"Key\t\"one\ttwo\"\n"}), Table({{L"Key", L"one"}}));
}

TEST(SettingsFile, AQuotedValueKeeps1024Characters) {
    const std::string text(1025, 'x');
    EXPECT_EQ(ParseSettings({"Key\t\"" + text + "\"\n"}), Table({{L"Key", std::wstring(1024, L'x')}}));
    EXPECT_EQ(ParseSettings({"Key\t\"" + text.substr(1) + "\"\n"}), Table({{L"Key", std::wstring(1024, L'x')}}));
    EXPECT_EQ(ParseSettings({"Key\t" + text + "\n"}), Table({{L"Key", std::wstring(1025, L'x')}}));
}

TEST(SettingsFile, FieldsBehindTheValueAreIgnored) {
    EXPECT_EQ(ParseSettings({"Key\tValue\tmore\tand more\n"}), Table({{L"Key", L"Value"}}));
}

TEST(SettingsFile, AKeyFollowedByTabsOnlyDefinesNothing) {
    EXPECT_TRUE(ParseSettings({"Key\t\t\t\n"}).empty());
    EXPECT_TRUE(ParseSettings({"Key\n"}).empty());
}

TEST(SettingsFile, OfEntriesInARowEveryOtherTakesEffect) {
    EXPECT_EQ(ParseSettings({"A\t1\n", "B\t2\n", "C\t3\n", "D\t4\n", "E\t5\n"}),
              Table({{L"A", L"1"}, {L"C", L"3"}, {L"E", L"5"}}));
}

TEST(SettingsFile, ACommentBetweenEntriesStartsTheCountAnew) {
    EXPECT_EQ(ParseSettings({"A\t1\n", "# x\n", "B\t2\n"}), Table({{L"A", L"1"}, {L"B", L"2"}}));
}

TEST(SettingsFile, AThirdFieldSparesTheNextLine) {
    EXPECT_EQ(ParseSettings({"A\t1\tignored\n", "B\t2\n"}), Table({{L"A", L"1"}, {L"B", L"2"}}));
}

TEST(SettingsFile, AKeyAloneTakesTheNextLinesFirstField) {
    EXPECT_EQ(ParseSettings({"A\n", "B\t2\n", "C\t3\n"}), Table({{L"A", L"B"}, {L"C", L"3"}}));
}

TEST(SettingsFile, AnEmptyLineReadsOnIntoTheNext) {
    // The empty line's scan takes the entry; the line itself is then cut short.
    EXPECT_EQ(ParseSettings({"\n", "A\t1\n", "B\t2\n"}), Table({{L"A", L"1"}}));
}

TEST(SettingsFile, TheLastOfRepeatedKeysWins) {
    EXPECT_EQ(ParseSettings({"A\t1\n", "#\n", "A\t2\n"}), Table({{L"A", L"2"}}));
    EXPECT_EQ(ParseSettings({"A\t1\n", "A\t2\n"}), Table({{L"A", L"1"}})) << "the second has lost its value";
}

TEST(SettingsFile, KeysDifferByCase) {
    EXPECT_EQ(ParseSettings({"key\t1\n", "#\n", "KEY\t2\n"}), Table({{L"key", L"1"}, {L"KEY", L"2"}}));
}

TEST(SettingsFile, EachByteBecomesOneCharacter) {
    EXPECT_EQ(ParseSettings({"K\xe4y\t\xff\x80\r\n"}), Table({{L"K\u00e4y", L"\u00ff\u0080\r"}}));
}

TEST(SettingsFile, LinesCountUpToTheTotalAndNotBeyond) {
    // Each line counts with one character more.
    const std::string filler = "#" + std::string(5000, 'x') + "\n"; // 5,002
    const std::string entry = "Key\tValue\n";                       // 10
    const std::size_t left = TotalCharacters - (filler.size() + 1) - (entry.size() + 1);
    const std::string fits = "#" + std::string(left - 3, 'y') + "\n";
    EXPECT_EQ(ParseSettings({filler, fits, entry}), Table({{L"Key", L"Value"}}));
    EXPECT_TRUE(ParseSettings({filler, "#" + fits, entry}).empty());
}

TEST(SettingsFile, NothingBehindTheLineThatPassesTheTotalCounts) {
    const std::string tooLong = "#" + std::string(TotalCharacters, 'x') + "\n";
    EXPECT_TRUE(ParseSettings({tooLong, "Key\tValue\n"}).empty());
    EXPECT_EQ(ParseSettings({"Key\tValue\n", "#\n", tooLong, "Other\tValue\n"}), Table({{L"Key", L"Value"}}));
}

TEST(SettingsFile, TheTotalIsExact) {
    // Empty lines count two characters each, the entry five.
    Lines lines((TotalCharacters - 1 - 5) / 2, "\n");
    lines.push_back("A\t1\n");
    EXPECT_EQ(ParseSettings(lines), Table({{L"A", L"1"}})) << "one less";
    lines.front() = "\t\n";
    EXPECT_EQ(ParseSettings(lines), Table({{L"A", L"1"}})) << "all of them";
    lines.front() = "\t\t\n";
    EXPECT_TRUE(ParseSettings(lines).empty()) << "one more";
}

TEST(SettingsFile, AnIgnoredLineGivesNoValueToTheKeyBeforeIt) {
    Lines lines((TotalCharacters - 1 - 3) / 2, "\n");
    lines.push_back("A\n"); // one is left
    lines.push_back("B\n");
    EXPECT_TRUE(ParseSettings(lines).empty());
}

TEST(SettingsFile, APieceWithoutLineFeedRunsIntoTheNext) {
    const std::string value(clus::SettingsPieceCharacters - 2, 'v');
    EXPECT_EQ(ParseSettings({"A\t" + value, "ww\textra\n", "B\t2\n"}),
              Table({{L"A", std::wstring(value.begin(), value.end()) + L"ww"}, {L"B", L"2"}}));
}

TEST(SettingsFile, ALongCommentCutsTheLineThatGoesOnFromIt) {
    const std::string piece = "#" + std::string(clus::SettingsPieceCharacters - 1, 'x');
    EXPECT_TRUE(ParseSettings({piece, "Key\tValue\n"}).empty()) << "the comment's field ends behind the key";
    EXPECT_EQ(ParseSettings({piece, "xx\n", "Key\tValue\n"}), Table({{L"Key", L"Value"}}))
        << "and at the line's end here";
}

TEST(SettingsFile, ACommentMarkNeedsToComeFirst) {
    EXPECT_EQ(ParseSettings({" #Key\tValue\n"}), Table({{L" #Key", L"Value"}}));
}

TEST(SettingsFile, KeysAlonePairUp) {
    // A takes B and cuts C off; the lines of B and C end there; D is whole.
    EXPECT_EQ(ParseSettings({"A\n", "B\n", "C\n", "D\tx\n"}), Table({{L"A", L"B"}, {L"D", L"x"}}));
}

TEST(SettingsFile, AKeyAloneTakesACommentAsItsValue) {
    EXPECT_EQ(ParseSettings({"A\n", "#note\n", "#note\n", "B\t2\n"}), Table({{L"A", L"#note"}, {L"B", L"2"}}));
}

TEST(SettingsFile, AnEmptyLineBehindAnEntryShieldsNothing) {
    EXPECT_EQ(ParseSettings({"A\t1\n", "\n", "B\t2\n", "C\t3\n"}), Table({{L"A", L"1"}, {L"C", L"3"}}));
}

TEST(SettingsFile, AnEmptyLineBeforeACommentIsAComment) {
    EXPECT_EQ(ParseSettings({"\n", "#note\n", "A\t1\n"}), Table({{L"A", L"1"}}));
}

TEST(SettingsFile, ARepeatedKeyThatHasNoEffectLeavesTheEarlierValue) {
    EXPECT_EQ(ParseSettings({"A\t1\n", "A\t2\n", "A\t3\n"}), Table({{L"A", L"3"}}));
    EXPECT_EQ(ParseSettings({"A\t1\n", "#\n", "A\t\"\"\n"}), Table({{L"A", L"1"}}));
    EXPECT_EQ(ParseSettings({"A\t1\n", "#\n", "A\t\n"}), Table({{L"A", L"1"}}));
}

TEST(SettingsFile, QuotesOfAKeyStay) {
    EXPECT_EQ(ParseSettings({"\"A\"\t1\n"}), Table({{L"\"A\"", L"1"}}));
}

TEST(SettingsFile, ACarriageReturnBehindTheClosingQuoteKeepsIt) {
    EXPECT_EQ(ParseSettings({"A\t\"a\"\r\n"}), Table({{L"A", L"a\"\r"}}));
}

TEST(SettingsFile, ANulEndsTheScanOfItsLine) {
    EXPECT_EQ(ParseSettings({std::string("A\t1\0more\n", 9), "B\t2\n"}), Table({{L"A", L"1"}, {L"B", L"2"}}));
    EXPECT_TRUE(ParseSettings({std::string("A\0\t1\n", 6)}).empty());
}

TEST(SettingsFile, ControlZIsAnOrdinaryCharacterHere) {
    EXPECT_EQ(ParseSettings({"A\x1a\t\x1a\n"}), Table({{L"A\x1a", L"\x1a"}}));
}

TEST(SettingsFile, AnUnquotedValueHasNoLimitOfItsOwn) {
    const std::string value(8000, 'v');
    EXPECT_EQ(ParseSettings({"A\t" + value + "\n"}), Table({{L"A", std::wstring(8000, L'v')}}));
}
