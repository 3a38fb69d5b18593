#include "ModelNodes.h"

#include "common/Text.h"

#include <functional>

namespace {

void VisitTexts(Json& value, const std::function<void(Json&)>& visit) {
    if (value.is_string()) {
        visit(value);
    } else if (value.is_array()) {
        for (Json& item : value) {
            VisitTexts(item, visit);
        }
    }
}

// All that name a node.
void VisitNodes(Json& model, const std::function<void(Json&)>& visit) {
    static const struct {
        const char* list;
        const char* member;
    } places[] = {{"nodes", "name"},
                  {"groups", "owner"},
                  {"groups", "preferredOwners"},
                  {"resources", "possibleOwners"},
                  {"networkInterfaces", "node"}};
    for (const auto& place : places) {
        if (!model.contains(place.list)) {
            continue;
        }
        for (Json& object : model[place.list]) {
            if (object.contains(place.member)) {
                VisitTexts(object[place.member], visit);
            }
        }
    }
}

} // namespace

void NameThisComputer(Json& model, const std::string& thisComputer) {
    const std::wstring folded = common::Folded(common::ToUtf16(thisComputer));
    bool isSpelledOtherwise = false;
    VisitNodes(model, [&](Json& name) {
        const auto text = name.get<std::string>();
        isSpelledOtherwise =
            isSpelledOtherwise || (text != thisComputer && common::Folded(common::ToUtf16(text)) == folded);
    });
    if (isSpelledOtherwise) {
        return;
    }
    VisitNodes(model, [&thisComputer](Json& name) {
        if (name == thisComputer) {
            name = ".";
        }
    });
}
