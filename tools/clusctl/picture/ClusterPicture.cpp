#include "ClusterPicture.h"

#include <algorithm>
#include <map>

namespace picture {

namespace {

template <typename Object> const Object* FindNamed(const std::vector<Object>& objects, const std::string& name) {
    const auto found =
        std::find_if(objects.begin(), objects.end(), [&name](const Object& object) { return object.name == name; });
    return found == objects.end() ? nullptr : &*found;
}

// All that is reached from some resources by their dependencies, those themselves only if one leads to them.
std::set<std::string> Reached(const ClusterPicture& cluster, std::vector<const Resource*> open) {
    std::map<std::string, const Resource*> byName;
    for (const Resource& resource : cluster.resources) {
        byName.emplace(resource.name, &resource);
    }
    std::set<std::string> reached;
    while (!open.empty()) {
        const Resource& resource = *open.back();
        open.pop_back();
        for (const std::string& name : resource.dependsOn) {
            const auto found = byName.find(name);
            if (reached.insert(name).second && found != byName.end()) {
                open.push_back(found->second);
            }
        }
    }
    return reached;
}

} // namespace

const Group* GroupNamed(const ClusterPicture& cluster, const std::string& name) {
    return FindNamed(cluster.groups, name);
}

const Resource* ResourceNamed(const ClusterPicture& cluster, const std::string& name) {
    return FindNamed(cluster.resources, name);
}

std::vector<const Resource*> MembersOf(const ClusterPicture& cluster, const std::string& group) {
    std::vector<const Resource*> members;
    for (const Resource& resource : cluster.resources) {
        if (resource.group == group) {
            members.push_back(&resource);
        }
    }
    return members;
}

std::set<std::string> BaseOf(const ClusterPicture& cluster, const Resource& resource) {
    std::set<std::string> base = Reached(cluster, {&resource});
    base.erase(resource.name);
    return base;
}

std::set<std::string> BaseOfProduct(const ClusterPicture& cluster) {
    std::vector<const Resource*> products;
    for (const Resource& resource : cluster.resources) {
        if (resource.role == Role::Product) {
            products.push_back(&resource);
        }
    }
    std::set<std::string> base = Reached(cluster, products);
    for (const Resource* const product : products) {
        base.erase(product->name);
    }
    return base;
}

} // namespace picture
