// The members of the state file that hold what the engine remembers.
#ifndef VCSSIM_PROGRESSJSON_H
#define VCSSIM_PROGRESSJSON_H

#include "Progress.h"

#include "common/Json.h"

namespace vcssim {

// False: the member is none of these. Throws common::JsonError.
bool ReadProgressMember(const std::string& name, const common::Json& value, Progress& progress);

// Adds those that hold something.
void WriteProgress(const Progress& progress, common::Json& root);

} // namespace vcssim

#endif
