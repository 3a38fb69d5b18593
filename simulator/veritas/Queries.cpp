#include "Queries.h"

#include <utility>

namespace vcssim {

std::vector<Condition> TakeConditions(Arguments& arguments) {
    std::string cluster;
    arguments.TakeFlag("-localclus");
    arguments.TakeValue("-clus", cluster);
    std::vector<Condition> conditions;
    while (!arguments.IsEmpty()) {
        Condition condition;
        if (arguments.StartsWithOption() || !ParseCondition(arguments.Next(), condition)) {
            throw UsageError();
        }
        conditions.push_back(condition);
    }
    return conditions;
}

void NoMatch(Output& output, const char* what) {
    if (output.Switches().warnsOfNoMatch) {
        output.Simulated("99010", std::string("No ") + what + " matches");
    }
}

DisplayRequest TakeDisplayRequest(Arguments& arguments) {
    DisplayRequest request;
    arguments.TakeFlag("-localclus");
    while (!arguments.IsEmpty() && !arguments.StartsWithOption()) {
        request.names.push_back(arguments.Next());
    }
    if (request.names == std::vector<std::string>{"all"} || request.names == std::vector<std::string>{"-all"}) {
        request.names.clear();
    }
    if (arguments.TakeFlag("-attribute")) {
        do {
            request.attributes.push_back(arguments.Next());
        } while (!arguments.IsEmpty());
    }
    arguments.NeedEnd();
    return request;
}

void Display(Output& output, const std::string& kind, const std::vector<Displayed>& objects,
             const std::vector<std::string>& attributes) {
    std::vector<DisplayRow> rows;
    for (const Displayed& object : objects) {
        for (const std::string& attribute : attributes.empty() ? object.attributes : attributes) {
            for (AttributeRow& row : object.lookUp(attribute)) {
                rows.push_back({object.name, attribute, row.system, std::move(row.parts)});
            }
        }
    }
    if (rows.empty() && !attributes.empty()) {
        output.Simulated("99011", "Attribute " + attributes.front() + " does not exist");
        return;
    }
    PrintDisplay(output, kind, rows);
}

} // namespace vcssim
