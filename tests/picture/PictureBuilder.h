// Pictures of made-up clusters.
#ifndef TESTS_PICTURE_PICTUREBUILDER_H
#define TESTS_PICTURE_PICTUREBUILDER_H

#include "picture/ClusterPicture.h"

#include <string>
#include <utility>
#include <vector>

// A cluster with one group "G", online on "N".
class PictureBuilder {
public:
    PictureBuilder() {
        m_cluster.kind = picture::Kind::Failover;
        AddGroup("G");
    }

    PictureBuilder& AddGroup(const std::string& name) {
        m_cluster.groups.push_back({name, "online", picture::Condition::Online, "N", {}});
        return *this;
    }

    // In the group that was added last.
    PictureBuilder& Add(const std::string& name, std::vector<std::string> dependsOn = {},
                        picture::Role role = picture::Role::Other) {
        picture::Resource resource;
        resource.name = name;
        resource.type = "Type";
        resource.group = m_cluster.groups.back().name;
        resource.state = "online";
        resource.condition = picture::Condition::Online;
        resource.node = "N";
        resource.role = role;
        resource.dependsOn = std::move(dependsOn);
        m_cluster.resources.push_back(resource);
        return *this;
    }

    picture::ClusterPicture& Cluster() {
        return m_cluster;
    }

private:
    picture::ClusterPicture m_cluster;
};

#endif
