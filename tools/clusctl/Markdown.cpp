#include "Markdown.h"

#include "Text.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <vector>

namespace {

struct Block {
    enum class Kind {
        Paragraph,
        Item, // of a list
        Row,  // of a table, the heading as well
        Code
    };
    Kind kind;
    std::vector<std::string> texts; // a row has one for each cell, everything else has one
};

const char Fence[] = "```";

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// "| a | b |" has the cells "a" and "b".
std::vector<std::string> CellsOf(const std::string& line) {
    std::vector<std::string> cells;
    for (size_t bar = 0, next = line.find('|', 1); next != std::string::npos; next = line.find('|', bar + 1)) {
        cells.push_back(Trimmed(line.substr(bar + 1, next - bar - 1)));
        bar = next;
    }
    return cells;
}

std::vector<Block> BlocksOf(const std::string& markdown) {
    std::vector<Block> blocks;
    std::istringstream lines(markdown);
    bool isOpen = false; // the next line of text belongs to the last block
    for (std::string line; std::getline(lines, line);) {
        if (StartsWith(line, Fence)) {
            Block code = {Block::Kind::Code, {std::string()}};
            while (std::getline(lines, line) && !StartsWith(line, Fence)) {
                code.texts[0] += line + "\n";
            }
            blocks.push_back(code);
            isOpen = false;
        } else if (StartsWith(line, "|")) {
            if (!StartsWith(line, "|-")) {
                blocks.push_back({Block::Kind::Row, CellsOf(line)});
            }
            isOpen = false;
        } else if (StartsWith(line, "- ")) {
            blocks.push_back({Block::Kind::Item, {line.substr(2)}});
            isOpen = true;
        } else if (line.empty()) {
            isOpen = false;
        } else if (isOpen) {
            blocks.back().texts[0] += " " + Trimmed(line);
        } else {
            blocks.push_back({Block::Kind::Paragraph, {line}});
            isOpen = true;
        }
    }
    return blocks;
}

// "[text](target)" as the text, with the name of another file behind it. A section of the same manual is named by
// `sectionName` if there is one.
std::string WithoutLinks(const std::string& text, std::string (*sectionName)(const std::string& anchor)) {
    std::string result;
    size_t at = 0;
    for (size_t middle = text.find("]("); middle != std::string::npos; middle = text.find("](", at)) {
        const size_t begin = text.rfind('[', middle);
        const size_t end = text.find(')', middle);
        const std::string title = text.substr(begin + 1, middle - begin - 1);
        const std::string target = text.substr(middle + 2, end - middle - 2);
        const bool isSection = StartsWith(target, "#");
        result += text.substr(at, begin - at);
        result += isSection && sectionName != nullptr ? sectionName(target.substr(1)) : title;
        result += isSection ? "" : " (" + target + ")";
        at = end + 1;
    }
    return result + text.substr(at);
}

std::string HelpOnTopic(const std::string& anchor) {
    return "'clusctl help " + anchor + "'";
}

std::string Indented(const std::string& lines, const std::string& indent) {
    std::string result;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        result += (line.empty() ? line : indent + line) + "\n";
    }
    return result;
}

const size_t RowIndent = 6; // behind a first cell that has a line of its own

// The first cell as a head, the others below each other beside it. `headWidth` is that of the widest head; wide heads
// have lines of their own.
std::string PlainRow(const std::vector<std::string>& cells, size_t headWidth) {
    std::string text = "  " + PlainLine(cells.front());
    const bool isBeside = headWidth < 2 * RowIndent;
    const size_t column = isBeside ? headWidth + 4 : RowIndent;
    text += isBeside ? std::string(column - text.size(), ' ') : "\n" + std::string(column, ' ');
    std::string rest;
    for (size_t i = 1; i < cells.size(); ++i) {
        if (!cells[i].empty()) {
            rest += (rest.empty() ? "" : "\n" + std::string(column, ' ')) +
                    Wrapped(PlainLine(cells[i]), TerminalWidth, column, column);
        }
    }
    return text + rest + "\n";
}

// Of the table whose first row is given.
size_t HeadWidth(std::vector<Block>::const_iterator row, std::vector<Block>::const_iterator end) {
    size_t width = 0;
    for (; row != end && row->kind == Block::Kind::Row; ++row) {
        width = std::max(width, CharacterCount(PlainLine(row->texts.front())));
    }
    return width;
}

// Whether code would not stand out among words: several words, or no word at all.
bool NeedsQuotes(const std::string& code) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return std::none_of(code.begin(), code.end(), isLetter) ||
           (isLetter(code.front()) && code.find(' ') != std::string::npos);
}

std::string RoffEscaped(const std::string& text, bool isCode) {
    std::string result;
    for (const char c : text) {
        result += c == '\\' ? "\\e" : c == '-' && isCode ? "\\-" : c == '\'' ? "\\(aq" : std::string(1, c);
    }
    return result;
}

const std::string Paragraph = ".PP\n";

// Lines of a text; what would be taken for a request is made one no longer.
std::string RoffLines(const std::string& text) {
    std::string result;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        result += (StartsWith(line, ".") ? "\\&" : "") + line + "\n";
    }
    return result;
}

std::string RoffBlock(const Block& block) {
    const std::string& text = block.texts.front();
    const auto filled = [](const std::string& markdown) {
        return RoffLines(Wrapped(RoffLine(markdown), TerminalWidth - 2, 0, 0));
    };
    switch (block.kind) {
    case Block::Kind::Item:
        return ".IP \\(bu 2\n" + filled(text);
    case Block::Kind::Code:
        return Paragraph + ".RS 4\n.nf\n" + RoffLines(RoffEscaped(text, true)) + ".fi\n.RE\n";
    case Block::Kind::Row: {
        std::string row = ".TP\n" + filled(text);
        for (size_t i = 1; i < block.texts.size(); ++i) {
            row += block.texts[i].empty() ? "" : (i == 1 ? "" : ".br\n") + filled(block.texts[i]);
        }
        return row;
    }
    default:
        return Paragraph + filled(text);
    }
}

} // namespace

std::string Wrapped(const std::string& text, size_t width, size_t first, size_t indent) {
    std::string result;
    size_t column = first;
    bool isLineStart = true;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const size_t length = CharacterCount(word);
        if (!isLineStart && column + 1 + length >= width) {
            result += "\n" + std::string(indent, ' ');
            column = indent;
            isLineStart = true;
        }
        result += (isLineStart ? "" : " ") + word;
        column += length + (isLineStart ? 0 : 1);
        isLineStart = false;
    }
    return result;
}

std::string PlainLine(const std::string& markdown) {
    std::string result;
    bool isCode = false;
    std::istringstream parts(WithoutLinks(markdown, HelpOnTopic));
    for (std::string part; std::getline(parts, part, '`'); isCode = !isCode) {
        result += isCode && NeedsQuotes(part) ? "'" + part + "'" : part;
    }
    return result;
}

std::string PlainText(const std::string& markdown) {
    const std::vector<Block> blocks = BlocksOf(markdown);
    std::string text;
    size_t headWidth = 0;
    for (auto block = blocks.begin(); block != blocks.end(); ++block) {
        const bool continues = block != blocks.begin() && std::prev(block)->kind == block->kind &&
                               (block->kind == Block::Kind::Item || block->kind == Block::Kind::Row);
        text += text.empty() || continues ? "" : "\n";
        switch (block->kind) {
        case Block::Kind::Item:
            text += "  - " + Wrapped(PlainLine(block->texts[0]), TerminalWidth, 4, 4) + "\n";
            break;
        case Block::Kind::Code:
            text += Indented(block->texts[0], "  ");
            break;
        case Block::Kind::Row:
            headWidth = continues ? headWidth : HeadWidth(block, blocks.end());
            text += PlainRow(block->texts, headWidth);
            break;
        default:
            text += Wrapped(PlainLine(block->texts[0]), TerminalWidth, 0, 0) + "\n";
        }
    }
    return text;
}

std::string RoffLine(const std::string& markdown) {
    std::string result;
    bool isCode = false;
    std::istringstream parts(WithoutLinks(markdown, nullptr));
    for (std::string part; std::getline(parts, part, '`'); isCode = !isCode) {
        result += isCode ? "\\fB" + RoffEscaped(part, true) + "\\fR" : RoffEscaped(part, false);
    }
    return result;
}

std::string RoffText(const std::string& markdown) {
    std::string text;
    for (const Block& block : BlocksOf(markdown)) {
        text += RoffBlock(block);
    }
    return StartsWith(text, Paragraph) ? text.substr(Paragraph.size()) : text; // there is one after a heading anyway
}
