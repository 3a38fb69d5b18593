// Goes from a log line's tag and number back to the statement in the library's sources that logged it.
#ifndef LOGGEDPLACE_H
#define LOGGEDPLACE_H

#include "LogRecorder.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace harness {

class LoggedPlaces {
public:
    // Reads the sources below `folder`, and which file owns which thousand of which tag's numbers.
    explicit LoggedPlaces(const std::string& folder);

    // Empty when the line's tag and number lead to a statement that logs with a format that makes the line's text.
    std::string Misled(const LogLine& line);

    // The files that log, and those among them that a line has led to.
    std::set<std::string> Files() const;
    const std::set<std::string>& Reached() const {
        return m_reached;
    }

private:
    struct Source {
        std::string name;
        std::vector<std::string> lines;
    };

    std::map<std::pair<std::string, int>, Source> m_sources; // by tag and thousand
    std::set<std::string> m_reached;
};

// Whether a printf-style format, as it is written in a source, can make this text.
bool CanMake(const std::string& format, const std::string& text);

} // namespace harness

#endif
