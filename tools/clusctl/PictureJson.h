// Pictures of a cluster as JSON.
#ifndef CLUSCTL_PICTUREJSON_H
#define CLUSCTL_PICTUREJSON_H

#include "Json.h"

#include "picture/ClusterPicture.h"

#include <string>
#include <vector>

// kind ("failover", "vcs" or "none"), name.
Json ClusterJson(const picture::ClusterPicture& cluster);

// name, state, up.
Json NodeRecords(const picture::ClusterPicture& cluster);

// name, state, node, states (of VCS: of each system).
Json GroupRecord(const picture::Group& group);

// name, type, group, state, node, states, part ("product", "product-base" or null), dependsOn (null: not known).
Json ResourceRecords(const picture::ClusterPicture& cluster, const std::vector<const picture::Resource*>& resources);

// Null for an empty text.
Json TextOrNull(const std::string& text);

#endif
