// The words of a line.
#ifndef HARNESS_WORDS_H
#define HARNESS_WORDS_H

#include <sstream>
#include <string>
#include <vector>

namespace harness {

// Whatever blanks stand between them.
inline std::vector<std::string> Words(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

} // namespace harness

#endif
