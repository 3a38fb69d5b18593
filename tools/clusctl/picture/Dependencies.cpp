#include "Dependencies.h"

#include <algorithm>

namespace picture {

bool Needs(const Resource& resource, Role role, const PictureIndex& all) {
    return !resource.hasDependenciesRead ||
           std::any_of(resource.dependsOn.begin(), resource.dependsOn.end(), [role, &all](const std::string& name) {
               const Resource* const found = all.ResourceNamed(name);
               return found == nullptr || found->role == role || found->type.empty();
           });
}

// The first network name counts. One before it that cannot be read may be it.
bool NeedsAddress(const Resource& product, const PictureIndex& all) {
    for (const std::string& name : product.dependsOn) {
        const Resource* const found = all.ResourceNamed(name);
        if (found == nullptr || found->type.empty()) {
            return true;
        }
        if (found->role == Role::NetworkName) {
            return Needs(*found, Role::Address, all);
        }
    }
    return true; // there is no network name, which is told
}

bool RestsOn(Role role, const Members& members, const std::set<std::string>& base) {
    bool isOneThere = false;
    bool isOneNeeded = false;
    for (const Resource* const member : members) {
        isOneThere = isOneThere || member->role == role;
        isOneNeeded = isOneNeeded || (member->role == role && base.count(member->name) != 0);
    }
    return isOneNeeded || !isOneThere;
}

bool IsInOrderOnVcs(const PictureIndex& all, const Members& members) {
    std::set<std::string> base;
    for (const Resource* const member : members) {
        if (member->role == Role::Product) {
            base.merge(all.BaseOf(*member));
        }
    }
    return RestsOn(Role::NetworkName, members, base) && RestsOn(Role::Store, members, base);
}

} // namespace picture
