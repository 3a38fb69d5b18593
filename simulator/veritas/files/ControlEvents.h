// What a fault can let happen to a simulated VCS cluster: the commands of the control tool that change it.
#ifndef VCSSIM_CONTROLEVENTS_H
#define VCSSIM_CONTROLEVENTS_H

#include <algorithm>
#include <iterator>
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
    static const char* const commands[] = {"system-down", "system-exit", "system-up",   "fault",       "recover",
                                           "move",        "wait",        "engine-stop", "engine-start"};
    const std::vector<std::string> words = WordsOfEvent(event);
    return !words.empty() && std::find(std::begin(commands), std::end(commands), words.front()) != std::end(commands);
}

} // namespace vcssim

#endif
