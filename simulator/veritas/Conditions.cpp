#include "Conditions.h"

#include <algorithm>

namespace vcssim {

namespace {

bool PartHolds(const Condition& condition, const std::string& part) {
    return condition.kind == Condition::Prefix ? part.compare(0, condition.value.size(), condition.value) == 0
                                               : part == condition.value;
}

// A list holds when one of its members or keys does; an empty one is like an empty text.
bool Holds(const Condition& condition, const AttributeRow& row) {
    const bool holds = row.parts.empty()
                           ? PartHolds(condition, "")
                           : std::any_of(row.parts.begin(), row.parts.end(),
                                         [&](const std::string& part) { return PartHolds(condition, part); });
    return condition.kind == Condition::NotEqual ? !holds : holds;
}

} // namespace

bool ParseCondition(const std::string& text, Condition& condition) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return false;
    }
    std::size_t end = equals;
    std::size_t value = equals + 1;
    if (end != 0 && text[end - 1] == '!') {
        condition.kind = Condition::NotEqual;
        --end;
    } else if (value < text.size() && text[value] == '~') {
        condition.kind = Condition::Prefix;
        ++value;
    } else {
        condition.kind = Condition::Equal;
    }
    condition.attribute = text.substr(0, end);
    condition.value = text.substr(value);
    return end != 0;
}

std::vector<std::string> MatchingSystems(const std::vector<Condition>& conditions,
                                         const std::vector<std::string>& systems,
                                         const std::function<std::vector<AttributeRow>(const std::string&)>& lookUp) {
    std::vector<std::string> matching = systems;
    for (const Condition& condition : conditions) {
        const std::vector<AttributeRow> rows = lookUp(condition.attribute);
        matching.erase(std::remove_if(matching.begin(), matching.end(),
                                      [&](const std::string& system) {
                                          return std::none_of(rows.begin(), rows.end(), [&](const AttributeRow& row) {
                                              return (row.system == "global" || row.system == system) &&
                                                     Holds(condition, row);
                                          });
                                      }),
                       matching.end());
        if (matching.empty()) {
            break;
        }
    }
    return matching;
}

} // namespace vcssim
