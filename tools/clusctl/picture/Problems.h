// What each problem that a status tells of means.
#ifndef CLUSCTL_PICTURE_PROBLEMS_H
#define CLUSCTL_PICTURE_PROBLEMS_H

#include "Health.h"

#include <string>

namespace picture {

// Of a problem's code, which has to be one of the table.
Level LevelOf(const std::string& code);

} // namespace picture

#endif
