// What is drawn on a terminal, line by line, each ending in "|".
#include "picture/TerminalPage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace picture;

namespace {

const std::size_t Wide = 21; // of which 20 cells are drawn
const std::size_t High = 7;  // of which 6 lines are drawn

std::vector<StyledLine> Lines(const std::vector<std::string>& texts) {
    std::vector<StyledLine> lines;
    lines.reserve(texts.size());
    for (const std::string& text : texts) {
        lines.push_back({text, ""});
    }
    return lines;
}

std::string Padded(const std::string& text, std::size_t blanks) {
    return text + std::string(blanks, ' ');
}

std::string Reversed(const std::string& text) {
    return "\x1B[7m" + text + "\x1B[0m";
}

} // namespace

TEST(TerminalPage, IsDrawnOverTheWholeWidth) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("12:00", Lines({"EVS1 online"}), Wide, High, true),
              Padded("12:00", 15) + "\n" + Padded("EVS1 online", 9) + "\n");
}

TEST(TerminalPage, HighlightsWhatWasNotThereTheLastTime) {
    TerminalPage page;
    page.Draw("12:00", Lines({"EVS1 online", "EVS2 online"}), Wide, High, true);
    EXPECT_EQ(page.Draw("12:05", Lines({"EVS1 failed", "EVS2 online"}), Wide, High, true),
              Padded("12:05", 15) + "\n" + Reversed(Padded("EVS1 failed", 9)) + "\n" + Padded("EVS2 online", 9) + "\n");
    EXPECT_EQ(page.Draw("12:10", Lines({"EVS2 online", "EVS1 failed"}), Wide, High, true),
              Padded("12:10", 15) + "\n" + Padded("EVS2 online", 9) + "\n" + Padded("EVS1 failed", 9) + "\n");
}

TEST(TerminalPage, HasTheLinesStylesUnlessTheyChanged) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("1", {{"bad", Styles::Red}}, Wide, High, true),
              Padded("1", 19) + "\n\x1B[31m" + Padded("bad", 17) + "\x1B[0m\n");
    EXPECT_EQ(page.Draw("2", {{"worse", Styles::Red}}, Wide, High, true),
              Padded("2", 19) + "\n" + Reversed(Padded("worse", 15)) + "\n");
}

TEST(TerminalPage, HighlightsWithoutColours) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("1", {{"bad", Styles::Red}}, Wide, High, false),
              Padded("1", 19) + "\n" + Padded("bad", 17) + "\n");
    EXPECT_EQ(page.Draw("2", {{"worse", Styles::Red}}, Wide, High, false),
              Padded("2", 19) + "\n" + Reversed(Padded("worse", 15)) + "\n");
}

TEST(TerminalPage, BlanksLinesThatAreGone) {
    TerminalPage page;
    page.Draw("1", Lines({"a", "b", "c"}), Wide, High, true);
    const std::string blank(20, ' ');
    EXPECT_EQ(page.Draw("2", Lines({"a"}), Wide, High, true),
              Padded("2", 19) + "\n" + Padded("a", 19) + "\n" + blank + "\n" + blank + "\n");
    EXPECT_EQ(page.Draw("3", Lines({"a"}), Wide, High, true), Padded("3", 19) + "\n" + Padded("a", 19) + "\n");
}

TEST(TerminalPage, CountsLinesThatDoNotFit) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("1", Lines({"a", "b", "c", "d", "e"}), Wide, High, true),
              Padded("1", 19) + "\n" + Padded("a", 19) + "\n" + Padded("b", 19) + "\n" + Padded("c", 19) + "\n" +
                  Padded("d", 19) + "\n" + Padded("e", 19) + "\n");
    EXPECT_EQ(page.Draw("2", Lines({"a", "b", "c", "d", "e", "f"}), Wide, High, true),
              Padded("2", 19) + "\n" + Padded("a", 19) + "\n" + Padded("b", 19) + "\n" + Padded("c", 19) + "\n" +
                  Padded("d", 19) + "\n" + Padded("... and 2 more lines", 0) + "\n");
}

// A line that was there, but below the window, has not changed when it comes into sight.
TEST(TerminalPage, KnowsLinesThatDidNotFit) {
    TerminalPage page;
    page.Draw("1", Lines({"a", "b", "c", "d", "e", "f"}), Wide, High, true);
    EXPECT_EQ(page.Draw("2", Lines({"f"}), Wide, High, true).find('\x1B'), std::string::npos);
}

TEST(TerminalPage, NeverLeavesAWindowThatBecameSmaller) {
    TerminalPage page;
    page.Draw("1", Lines({"a", "b", "c", "d", "e"}), Wide, High, true);
    const std::string drawn = page.Draw("2", Lines({"a"}), Wide, 5, true);
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), '\n'), 4);
}

TEST(TerminalPage, LeavesOutTheMiddleOfLongLines) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("1", Lines({"Zyntra Gate (EXVS-MAIL1)  online"}), Wide, High, true),
              Padded("1", 19) + "\nZyntra Ga...  online\n");
}

TEST(TerminalPage, CountsWideCharactersTwice) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("1", Lines({"名前名前", "名前名前名前名前名前名前"}), Wide, High, true),
              Padded("1", 19) + "\n" + Padded("名前名前", 12) + "\n名前名前...名前名前 \n");
}

TEST(TerminalPage, TakesATinyWindowForALargerOne) {
    TerminalPage page;
    EXPECT_EQ(page.Draw("1", Lines({"a"}), 0, 0, true), Padded("1", 18) + "\n" + Padded("a", 18) + "\n");
}
