// The tables that the VCS tools print: an object, an attribute, a system and a value in each line.
#ifndef CLUSCTL_VCSTABLE_H
#define CLUSCTL_VCSTABLE_H

#include <string>
#include <vector>

struct VcsRow {
    std::wstring object;
    std::wstring attribute;
    std::wstring system; // "global" of what holds on all
    std::wstring value;  // without the blanks and bars around it, inner blanks kept
};

// All rows but the header, which begins with '#'. Lines of fewer than three words are none.
std::vector<VcsRow> ReadVcsTable(const std::wstring& output);

// Whether a row shows its attribute with a value as it stood on the command line of a tool. Of a secret it counts only
// whether there is one. Words count whatever is between them and in which order: what a list becomes is VCS' own
// affair. Of what is put together, or written in characters that the tools show in others, any value will do.
bool ShowsGiven(const VcsRow& row, const std::wstring& given);

#endif
