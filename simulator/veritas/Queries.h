// What -list, -display and -state of systems, groups and resources have in common.
#ifndef VCSSIM_QUERIES_H
#define VCSSIM_QUERIES_H

#include "Conditions.h"
#include "Tools.h"

#include <functional>
#include <string>
#include <vector>

namespace vcssim {

std::vector<Condition> TakeConditions(Arguments& arguments);
void NoMatch(Output& output, const char* what);

// One thing that is displayed.
struct Displayed {
    std::string name;
    std::vector<std::string> attributes; // all it has
    std::function<std::vector<AttributeRow>(const std::string&)> lookUp;
};

// The names in front of -attribute and the attributes behind it; "all" stands for every name.
struct DisplayRequest {
    std::vector<std::string> names;
    std::vector<std::string> attributes;
};
DisplayRequest TakeDisplayRequest(Arguments& arguments);

// `kind` as for PrintDisplay. An attribute that none of them has is answered with a warning.
void Display(Output& output, const std::string& kind, const std::vector<Displayed>& objects,
             const std::vector<std::string>& attributes);

} // namespace vcssim

#endif
