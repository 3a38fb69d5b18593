// Room for an answer whose size is told by the one who answers, and is not trusted.
#ifndef COMMON_ANSWERROOM_H
#define COMMON_ANSWERROOM_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace common {

const std::size_t LongestName = 32768;      // in characters, with the terminator
const std::size_t LongestAnswer = 16777216; // in bytes: 16 MB

// After an answer that did not fit: more room, for as much as is `needed` at least. False when to ask again is of no
// use, since that much was there, or is more than the `most` that any answer takes. The room doubles, so that one who
// asks for more each time does not do so for ever.
template <typename Unit> bool GrowRoom(std::vector<Unit>& room, std::size_t needed, std::size_t most) {
    if (needed <= room.size() || needed > most) {
        return false;
    }
    room.resize(std::max(needed, std::min(most, 2 * room.size())));
    return true;
}

// The same for a name, of whose length the API tells the characters without the terminator.
inline bool GrowForName(std::vector<wchar_t>& room, std::size_t length) {
    return GrowRoom(room, length + 1, LongestName);
}

// The name in it, which ends with the room at the latest.
inline std::wstring NameIn(const std::vector<wchar_t>& room) {
    return std::wstring(room.begin(), std::find(room.begin(), room.end(), L'\0'));
}

} // namespace common

#endif
