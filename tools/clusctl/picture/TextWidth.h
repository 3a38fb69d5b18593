// How much room a text takes on a terminal or in a picture with letters of one width.
#ifndef CLUSCTL_PICTURE_TEXTWIDTH_H
#define CLUSCTL_PICTURE_TEXTWIDTH_H

#include <cstddef>
#include <string>

namespace picture {

// The character that begins at `position`, which moves behind it. U+FFFD for bytes that are no UTF-8.
char32_t NextCharacter(const std::string& text, std::size_t& position);

// Cells: two of each wide character (East Asian ones, most pictographs), none of what is put on the character before.
std::size_t CellsOf(char32_t character);
std::size_t CellsOf(const std::string& text);

// The text with blanks behind it, up to a number of cells.
std::string PaddedToCells(const std::string& text, std::size_t cells);

// The text, its middle left out for "..." when it takes more cells; at least 5 of them.
std::string ShortenedToCells(const std::string& text, std::size_t cells);

} // namespace picture

#endif
