// What rehearsals show, as people read it.
#ifndef CLUSCTL_REHEARSALTEXT_H
#define CLUSCTL_REHEARSALTEXT_H

#include "ClusterCalls.h"
#include "Json.h"

#include <string>
#include <vector>

// A title with the lines below it, or with `whenEmpty`. Tabs stay.
std::string TitledBlock(const std::string& title, const Json& lines, const char* whenEmpty);

// The lines of a text; without an empty one at its end.
Json LinesOf(const std::string& text);

// Records of a time line as lines: "    12.500  group EVS1 is on NODE2".
Json TimelineLines(const Json& timeline);

// An entry of its own in the time line: an event, or how a command begins and ends.
Json TimelineEntry(double at, const char* kind, const std::string& name, const std::string& what);

// A command as people write it: words with blanks in quotes.
std::string LineOf(const std::vector<std::wstring>& command);

// The calls as records: "call", "text", "code", "changes".
Json CallRecords(const std::vector<ClusterCall>& calls);

// The calls that change something, and those that failed doing so, as lines; then how many only asked.
Json CallLines(const std::vector<ClusterCall>& calls);

#endif
