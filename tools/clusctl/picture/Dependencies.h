// What the product's resources have to depend on.
#ifndef CLUSCTL_PICTURE_DEPENDENCIES_H
#define CLUSCTL_PICTURE_DEPENDENCIES_H

#include "PictureIndex.h"

#include <set>
#include <string>
#include <vector>

namespace picture {

typedef std::vector<const Resource*> Members; // of a group

// Whether it depends on one of the role by itself, as the library looks for it. One that cannot be read may be it.
bool Needs(const Resource& resource, Role role, const PictureIndex& all);

// Whether the network name that it depends on does so on an IP address.
bool NeedsAddress(const Resource& product, const PictureIndex& all);

// Whether one of the role is in the base, if there is one at all.
bool RestsOn(Role role, const Members& members, const std::set<std::string>& base);

// Whether the product rests on network name and store. It is enough that one of the services does.
bool IsInOrderOnVcs(const PictureIndex& all, const Members& members);

} // namespace picture

#endif
