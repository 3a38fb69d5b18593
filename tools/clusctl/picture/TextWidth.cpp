#include "TextWidth.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace picture {

namespace {

const char32_t NoCharacter = 0xFFFD;
const char Ellipsis[] = "...";

struct Range {
    char32_t first;
    char32_t last;
};

bool IsIn(const Range* begin, const Range* end, char32_t character) {
    const Range* const found = std::lower_bound(
        begin, end, character, [](const Range& range, char32_t wanted) { return range.last < wanted; });
    return found != end && found->first <= character;
}

// East Asian Wide and Fullwidth, in blocks: what lies between them is rare in names.
const Range Wide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},   {0x2E80, 0x303E},
    {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0xA4C6},   {0xA960, 0xA97C},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6B},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x16FE0, 0x18CFF}, {0x1AFF0, 0x1B2FF}, {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF},
    {0x20000, 0x3FFFD},
};

// Combining marks, joiners and directions: they take no room of their own.
const Range Attached[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A}, {0x064B, 0x065F},   {0x0E34, 0x0E3A},
    {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x202A, 0x202E},   {0x2060, 0x206F},
    {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
};

} // namespace

char32_t NextCharacter(const std::string& text, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(text[position++]);
    if (lead < 0x80) {
        return lead;
    }
    const std::size_t more = lead >= 0xF0 && lead < 0xF5 ? 3 : lead >= 0xE0 && lead < 0xF0 ? 2 : lead >= 0xC2 ? 1 : 0;
    if (more == 0 || lead >= 0xF5 || text.size() - position < more) {
        return NoCharacter;
    }
    char32_t character = lead & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i) {
        const auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xC0U) != 0x80) {
            return NoCharacter;
        }
        character = character << 6 | (byte & 0x3FU);
    }
    const bool isOverlong = (more == 2 && character < 0x800) || (more == 3 && character < 0x10000);
    if (isOverlong || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) {
        return NoCharacter;
    }
    position += more;
    return character;
}

std::size_t CellsOf(char32_t character) {
    return IsIn(std::begin(Attached), std::end(Attached), character) ? 0
           : IsIn(std::begin(Wide), std::end(Wide), character)       ? 2
                                                                     : 1;
}

std::size_t CellsOf(const std::string& text) {
    std::size_t cells = 0;
    for (std::size_t position = 0; position < text.size();) {
        cells += CellsOf(NextCharacter(text, position));
    }
    return cells;
}

std::string PaddedToCells(const std::string& text, std::size_t cells) {
    const std::size_t taken = CellsOf(text);
    return taken < cells ? text + std::string(cells - taken, ' ') : text;
}

std::string ShortenedToCells(const std::string& text, std::size_t cells) {
    const std::size_t all = CellsOf(text);
    if (all <= cells) {
        return text;
    }
    // Names of one kind often differ at their end only: both ends stay, the beginning a little longer.
    const std::size_t room = cells - (sizeof(Ellipsis) - 1);
    const std::size_t behind = room / 2;
    const std::size_t before = room - behind;
    std::string head;
    std::string tail;
    std::size_t taken = 0;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t begin = position;
        const std::size_t width = CellsOf(NextCharacter(text, position));
        const std::string piece = text.substr(begin, position - begin);
        if (taken + width <= before) {
            head += piece;
        } else if (taken >= all - behind) {
            tail += piece;
        }
        taken += width;
    }
    return head + Ellipsis + tail;
}

} // namespace picture
