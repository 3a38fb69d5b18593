// The tables of the VCS tools with values as they are shown, so that a configuration can be made of them again.
#ifndef CLUSCTL_SHOWNVALUES_H
#define CLUSCTL_SHOWNVALUES_H

#include <cstddef>
#include <string>
#include <vector>

// A row of -display. What the form of the table lacks is empty.
struct ShownValue {
    std::string object;
    std::string attribute;
    std::string system; // "global", or the system whose value it is
    std::string value;  // parts of lists are separated by tabs, as they are shown

    std::vector<std::string> Parts() const;
};

enum class TableForm {
    ObjectSystemValue, // hagrp, hares: "#Group Attribute System Value"
    ObjectValue,       // hasys: "#System Attribute Value"
    Value              // haclus: "#Attribute Value"
};

// In the order of the lines. Headers, messages and lines with too few words are passed over.
std::vector<ShownValue> ReadShownValues(const std::string& table, TableForm form);

// The words of each line that has at least `fewest` of them; headers and messages are passed over. For -dep and -list.
std::vector<std::vector<std::string>> ReadRows(const std::string& table, std::size_t fewest);

#endif
