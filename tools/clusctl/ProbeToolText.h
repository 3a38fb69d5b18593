// What a probe reads in the output of a VCS tool.
#ifndef CLUSCTL_PROBETOOLTEXT_H
#define CLUSCTL_PROBETOOLTEXT_H

#include "VcsToolProcess.h"

#include <set>
#include <string>
#include <vector>

namespace probe {

extern const char NoMessage[];

typedef std::vector<std::string> Texts;
typedef std::set<std::string> Names;

Texts LinesOf(const std::string& text);
Texts WordsOf(const std::string& line);

// The number of the message that a tool gave in place of an answer, or NoMessage.
std::string MessageOf(const ToolOutput& answer);

// The lines of an answer; none where a message stands in its place.
Texts AnswerOf(const ToolOutput& answer);

// The first word of each line.
Names FirstWords(const Texts& lines);

} // namespace probe

#endif
