// A run of a VCS tool of a recording, taken apart.
#ifndef CLUSCTL_HEARDTOOL_H
#define CLUSCTL_HEARDTOOL_H

#include "ShownValues.h"

#include <Recording.h>

#include <string>
#include <vector>

class HeardTool {
public:
    explicit HeardTool(const recording::RecordedTool& run);

    std::string tool; // "hares"
    std::string verb; // "-display": the first of the options
    std::vector<std::string> options;
    std::vector<std::string> names;      // of objects, and what else stands between the options
    std::vector<std::string> attributes; // behind -attribute
    std::string system;                  // behind -sys
    bool isElsewhere = false;            // another cluster was asked
    bool isQuestion = false;
    bool hasWorked = false; // nothing was refused
    bool isWhole = false;   // the answer holds all that was asked for, which may be nothing

    bool Is(const char* aTool, const char* aVerb) const {
        return tool == aTool && verb == aVerb;
    }

    // The rows of a table; none when its titles are missing.
    std::vector<ShownValue> Values(TableForm form) const;
    std::vector<std::vector<std::string>> Rows(std::size_t fewest) const;

    // The words of each line of a list, which has no titles.
    std::vector<std::vector<std::string>> Lines() const;

    // What was printed in place of a table: the value or state that was asked for. False when there is none.
    bool Value(std::string& value) const;

private:
    void TakeWords(const std::vector<std::string>& words);

    bool m_hasTitles = false;
    std::string m_output; // without carriage returns; empty when the run tells nothing
};

#endif
