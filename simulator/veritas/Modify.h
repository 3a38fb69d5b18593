// hares -modify, -local and -global.
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
        DeleteAll,
        MakeLocal, // one value for each system, the same at first
        MakeGlobal // sets what was local
    };

    std::string resource;
    std::string attribute;
    Action action = Set;
    std::vector<std::string> values;
    std::string system; // empty: all
};

ModifyRequest TakeModifyRequest(Arguments& arguments);
// Of -local or -global.
ModifyRequest TakeScopeRequest(const std::string& command, Arguments& arguments);
void Modify(Context& context, const ModifyRequest& request);

} // namespace vcssim

#endif
