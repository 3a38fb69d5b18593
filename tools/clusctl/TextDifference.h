// The difference of two texts, in the unified form that people know from diff.
#ifndef CLUSCTL_TEXTDIFFERENCE_H
#define CLUSCTL_TEXTDIFFERENCE_H

#include <string>
#include <vector>

// Lines without their line ends.
std::vector<std::string> SplitLines(const std::string& text);

// Empty when they are the same. Hunks with three lines of context, without the head that names the files.
std::vector<std::string> UnifiedDifference(const std::vector<std::string>& before,
                                           const std::vector<std::string>& after);

#endif
