// hares -modify.
#ifndef VCSSIM_MODIFY_H
#define VCSSIM_MODIFY_H

#include "Tools.h"

#include <string>
#include <vector>

namespace vcssim {

struct ModifyRequest {
    enum Action {
        Set,
        Add,
        Update,
        Delete,
        DeleteAll
    };

    std::string resource;
    std::string attribute;
    Action action = Set;
    std::vector<std::string> values;
    std::string system; // empty: all
};

ModifyRequest TakeModifyRequest(Arguments& arguments);
void Modify(Context& context, const ModifyRequest& request);

} // namespace vcssim

#endif
