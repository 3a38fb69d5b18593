// Lines with a style, and how they are drawn on a terminal again and again.
#ifndef CLUSCTL_PICTURE_TERMINALPAGE_H
#define CLUSCTL_PICTURE_TERMINALPAGE_H

#include <cstddef>
#include <set>
#include <string>
#include <vector>

// What a text may hold to change how the following is shown on a console. Elsewhere they are written as they are: a
// text for a file has none.
namespace Styles {
const char Plain[] = "\x1B[0m";
const char Bold[] = "\x1B[1m";
const char Reverse[] = "\x1B[7m";
const char Red[] = "\x1B[31m";
const char Green[] = "\x1B[32m";
const char Yellow[] = "\x1B[33m";
} // namespace Styles

namespace picture {

struct StyledLine {
    std::string text;
    std::string style; // of the line: one of Styles, or empty
};

// The lines as one text, without the last line end; without their styles unless it is to be coloured.
std::string PageText(const std::vector<StyledLine>& lines, bool isColoured);

// A page that is drawn over what was drawn of it before.
class TerminalPage {
public:
    // What to write from the top of a window of so many cells and lines, of which the last stays free for the cursor.
    // Each line but the heading that was not there the last time is highlighted. Lines that are too long lose their
    // middle, those that do not fit are counted in the last one, and what else was drawn before is blanked.
    std::string Draw(const std::string& heading, std::vector<StyledLine> lines, std::size_t width, std::size_t height,
                     bool isColoured);

private:
    void Highlight(std::vector<StyledLine>& lines);

    std::set<std::string> m_shown;
    std::size_t m_height = 0; // of what was drawn last
};

} // namespace picture

#endif
