#include "PictureIndex.h"

#include <utility>

namespace picture {

namespace {

template <typename Map, typename Value>
const Value& FoundOr(const Map& map, const std::string& name, const Value& otherwise) {
    const auto found = map.find(name);
    return found == map.end() ? otherwise : found->second;
}

} // namespace

PictureIndex::PictureIndex(const ClusterPicture& cluster) : m_cluster(cluster) {
    for (const Group& group : cluster.groups) {
        m_groups.emplace(group.name, &group);
    }
    std::vector<const Resource*> products;
    for (const Resource& resource : cluster.resources) {
        m_resources.emplace(resource.name, &resource);
        m_members[resource.group].push_back(&resource);
        for (const std::string& name : resource.dependsOn) {
            m_dependants[name].push_back(resource.name);
        }
        if (resource.role == Role::Product) {
            products.push_back(&resource);
        }
    }
    m_productBase = Reached(products);
    for (const Resource* const product : products) {
        m_productBase.erase(product->name);
    }
}

const Group* PictureIndex::GroupNamed(const std::string& name) const {
    const Group* const none = nullptr;
    return FoundOr(m_groups, name, none);
}

const Resource* PictureIndex::ResourceNamed(const std::string& name) const {
    const Resource* const none = nullptr;
    return FoundOr(m_resources, name, none);
}

const std::vector<const Resource*>& PictureIndex::MembersOf(const std::string& group) const {
    static const std::vector<const Resource*> none;
    return FoundOr(m_members, group, none);
}

const std::vector<std::string>& PictureIndex::Dependants(const std::string& resource) const {
    static const std::vector<std::string> none;
    return FoundOr(m_dependants, resource, none);
}

std::set<std::string> PictureIndex::BaseOf(const Resource& resource) const {
    std::set<std::string> base = Reached({&resource});
    base.erase(resource.name);
    return base;
}

// All that is reached from some resources by their dependencies, those themselves only if one leads to them.
std::set<std::string> PictureIndex::Reached(std::vector<const Resource*> open) const {
    std::set<std::string> reached;
    while (!open.empty()) {
        const Resource& resource = *open.back();
        open.pop_back();
        for (const std::string& name : resource.dependsOn) {
            const Resource* const found = ResourceNamed(name);
            if (reached.insert(name).second && found != nullptr) {
                open.push_back(found);
            }
        }
    }
    return reached;
}

} // namespace picture
