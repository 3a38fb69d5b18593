// What belongs together in a picture of a cluster, found without looking through all of it.
#ifndef CLUSCTL_PICTURE_PICTUREINDEX_H
#define CLUSCTL_PICTURE_PICTUREINDEX_H

#include "ClusterPicture.h"

#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace picture {

// The picture has to outlive it, with the same groups and resources. Letter case counts.
class PictureIndex {
public:
    explicit PictureIndex(const ClusterPicture& cluster);

    const ClusterPicture& Cluster() const {
        return m_cluster;
    }

    // Null when there is none.
    const Group* GroupNamed(const std::string& name) const;
    const Resource* ResourceNamed(const std::string& name) const;

    // The resources of a group, in the cluster's order.
    const std::vector<const Resource*>& MembersOf(const std::string& group) const;

    // The names of those that depend on it directly, in the cluster's order.
    const std::vector<std::string>& Dependants(const std::string& resource) const;

    // The names of all that a resource depends on, directly or not, its own left out.
    std::set<std::string> BaseOf(const Resource& resource) const;

    // The same of all product resources together, the product's own left out: what the product rests on.
    const std::set<std::string>& BaseOfProduct() const {
        return m_productBase;
    }

private:
    std::set<std::string> Reached(std::vector<const Resource*> open) const;

    const ClusterPicture& m_cluster;
    std::unordered_map<std::string, const Group*> m_groups;
    std::unordered_map<std::string, const Resource*> m_resources;
    std::unordered_map<std::string, std::vector<const Resource*>> m_members;
    std::unordered_map<std::string, std::vector<std::string>> m_dependants;
    std::set<std::string> m_productBase;
};

} // namespace picture

#endif
