#include "TerminalPage.h"

#include "TextWidth.h"

#include <algorithm>

namespace picture {

namespace {

// On a smaller window the page is drawn as on one of this size.
const std::size_t LeastWidth = 20;
const std::size_t LeastHeight = 5;

void LeaveOut(std::vector<StyledLine>& lines, std::size_t height) {
    if (lines.size() > height) {
        const std::size_t left = lines.size() - height + 1;
        lines.resize(height);
        lines.back() = {"... and " + std::to_string(left) + " more lines", ""};
    }
}

} // namespace

std::string PageText(const std::vector<StyledLine>& lines, bool isColoured) {
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool isStyled = !lines[i].style.empty() && (isColoured || lines[i].style == Styles::Reverse);
        text += i == 0 ? "" : "\n";
        text += isStyled ? lines[i].style + lines[i].text + Styles::Plain : lines[i].text;
    }
    return text;
}

void TerminalPage::Highlight(std::vector<StyledLine>& lines) {
    std::set<std::string> shown;
    for (StyledLine& line : lines) {
        shown.insert(line.text);
        if (!m_shown.empty() && m_shown.count(line.text) == 0) {
            line.style = Styles::Reverse;
        }
    }
    m_shown.swap(shown);
}

std::string TerminalPage::Draw(const std::string& heading, std::vector<StyledLine> lines, std::size_t width,
                               std::size_t height, bool isColoured) {
    const std::size_t cells = std::max(LeastWidth, width) - 1; // in the last one a terminal may begin a new line
    const std::size_t rows = std::max(LeastHeight, height) - 1;
    Highlight(lines);
    lines.insert(lines.begin(), {heading, ""});
    LeaveOut(lines, rows);
    const std::size_t used = lines.size();
    lines.resize(std::min(std::max(m_height, used), rows));
    for (StyledLine& line : lines) {
        line.text = PaddedToCells(ShortenedToCells(line.text, cells), cells);
    }
    m_height = used;
    return PageText(lines, isColoured) + "\n";
}

} // namespace picture
