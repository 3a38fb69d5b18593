// The Markdown that the manual is written in, shown as plain text and as a manual page. It knows paragraphs, lists,
// tables and blocks of code, and in a line code and links; no code in a table may hold a vertical bar.
#ifndef CLUSCTL_MARKDOWN_H
#define CLUSCTL_MARKDOWN_H

#include <cstddef>
#include <string>

const size_t TerminalWidth = 80; // columns that a text may take

// The words of a text in lines that end before the column `width`. The first line starts in the column `first`, without
// its indentation; the others are indented by `indent`. No line end behind the last.
std::string Wrapped(const std::string& text, size_t width, size_t first, size_t indent);

// Of a text in a line, without marks.
std::string PlainLine(const std::string& markdown);

// Of whole blocks, for a terminal.
std::string PlainText(const std::string& markdown);

// The same in the language of manual pages (roff, macros "man").
std::string RoffLine(const std::string& markdown);
std::string RoffText(const std::string& markdown);

#endif
