// A main.cf made of what the VCS tools show, and the secrets of one.
#ifndef CLUSCTL_MAINCFTEXT_H
#define CLUSCTL_MAINCFTEXT_H

#include "ShownValues.h"

#include <TypeTable.h>

#include <cstddef>
#include <string>
#include <vector>

// The answers of haclus, hasys, hagrp and hares to -display and -dep.
struct ShownConfiguration {
    std::vector<ShownValue> cluster;
    std::vector<ShownValue> systems;
    std::vector<ShownValue> groups;
    std::vector<ShownValue> resources;
    std::vector<std::vector<std::string>> groupLinks;    // parent, child, the words of the relationship
    std::vector<std::vector<std::string>> resourceLinks; // group, parent, child; the one made last first
};

struct MainCf {
    std::string text;                // in the form of a dump
    std::vector<std::string> doubts; // sentences: what the tables do not tell, and what was made of it
};

// Attributes whose value is the default, and those that VCS keeps for itself, are left out. The table tells which
// attributes of a resource are lists; where it does not, the values do.
MainCf MakeMainCf(const ShownConfiguration& shown, const vcssim::TypeTable& types);

// Of rows "object ... attribute ... value": what an object has for an attribute, on all systems or the first one shown.
// Empty when there is none.
std::string ShownValueOf(const std::vector<ShownValue>& rows, const std::string& object, const std::string& attribute);

// The names of the objects, in the order of the rows.
std::vector<std::string> ObjectsIn(const std::vector<ShownValue>& rows);

// Replaces the values of secret attributes, and the passwords of users, by "***"; empty ones stay. `count` is how
// many. Throws vcssim::CfError when the text is no main.cf.
std::string MaskedMainCf(const std::string& text, std::size_t& count);

#endif
