// The conditions of -list: Attribute=Value, Attribute!=Value, Attribute=~Prefix.
#ifndef VCSSIM_CONDITIONS_H
#define VCSSIM_CONDITIONS_H

#include "Cluster.h"

#include <functional>
#include <string>
#include <vector>

namespace vcssim {

struct Condition {
    enum Kind {
        Equal,
        NotEqual,
        Prefix
    };

    std::string attribute;
    Kind kind = Equal;
    std::string value;
};

bool ParseCondition(const std::string& text, Condition& condition);

// The systems, of those given, for which all conditions hold. An attribute that the object does not have holds none.
std::vector<std::string> MatchingSystems(const std::vector<Condition>& conditions,
                                         const std::vector<std::string>& systems,
                                         const std::function<std::vector<AttributeRow>(const std::string&)>& lookUp);

} // namespace vcssim

#endif
