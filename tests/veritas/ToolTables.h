// The tables that VCS tools print.
#ifndef TOOLTABLES_H
#define TOOLTABLES_H

#include "Texts.h"

#include <string>
#include <utility>
#include <vector>

namespace harness {

// What "hares -list" and "hagrp -list" print.
inline std::string Listed(const Texts& names) {
    std::string text;
    for (const std::string& name : names) {
        text += name + "   NODE1\r\n";
    }
    return text;
}

// What "hares -dep" prints: of each pair the first depends on the second.
inline std::string Dependencies(const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::string text = "#Group   Parent   Child\r\n";
    for (const auto& pair : pairs) {
        text += "EVS1   " + pair.first + "   " + pair.second + "\r\n";
    }
    return text;
}

// What "hares -display ... -attribute ..." prints.
inline std::string Shown(const std::string& resource, const std::string& attribute, const std::string& value) {
    return "#Resource   Attribute   System   Value\r\n" + resource + "   " + attribute + "   global   " + value +
           "\r\n";
}

// What "hagrp -state" prints: systems and states.
inline std::string States(const std::string& group, const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::string text = "#Group   Attribute   System   Value\r\n";
    for (const auto& pair : pairs) {
        text += group + "   State   " + pair.first + "   " + pair.second + "\r\n";
    }
    return text;
}

} // namespace harness

#endif
