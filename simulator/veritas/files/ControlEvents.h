// What a fault can let happen to a simulated VCS cluster: the commands of the control tool that change it.
#ifndef VCSSIM_CONTROLEVENTS_H
#define VCSSIM_CONTROLEVENTS_H

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace vcssim {

inline std::vector<std::string> WordsOfEvent(const std::string& event) {
    std::istringstream stream(event);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

// Whether the control tool has the command; of its names nothing is known here.
inline bool IsControlEvent(const std::string& event) {
    static const char* const commands[] = {"system-down", "system-exit", "system-up",   "fault",
                                           "recover",     "move",        "vanish",      "appear",
                                           "wait",        "engine-stop", "engine-start"};
    const std::vector<std::string> words = WordsOfEvent(event);
    return !words.empty() && std::find(std::begin(commands), std::end(commands), words.front()) != std::end(commands);
}

// So many seconds, up to some thirty years; nothing when the text is no such number.
inline std::optional<std::int64_t> SecondsIn(const std::string& text) {
    const std::int64_t most = 1000000000;
    std::int64_t seconds = 0;
    for (const char c : text) {
        if (c < '0' || c > '9' || seconds > most) {
            return std::nullopt;
        }
        seconds = seconds * 10 + (c - '0');
    }
    return text.empty() || seconds > most ? std::nullopt : std::optional<std::int64_t>(seconds);
}

} // namespace vcssim

#endif
