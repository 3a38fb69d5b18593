// Where in a JSON text something stands.
#ifndef COMMON_JSONPLACES_H
#define COMMON_JSONPLACES_H

#include <cstddef>
#include <string>

namespace common {

struct TextPlace {
    std::size_t line = 0; // from 1 on; 0: nowhere
    std::size_t column = 0;
};

// Where the value of a place such as "groups[1].owner" begins in a well-formed text, as JsonError names places; of a
// member that is not there, where its object begins. Names of members may hold dots and brackets.
TextPlace FindJsonPlace(const std::string& text, const std::string& place);

} // namespace common

#endif
