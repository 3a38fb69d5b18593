// What a failover cluster says of groups and resources, as parts of a picture.
#ifndef CLUSCTL_FAILOVERPICTURE_H
#define CLUSCTL_FAILOVERPICTURE_H

#include "ClusterApi.h"

#include "picture/ClusterPicture.h"

#include <string>

// The word and what it means.
void SetGroupState(picture::Group& group, CLUSTER_GROUP_STATE state);
void SetResourceState(picture::Resource& resource, CLUSTER_RESOURCE_STATE state);

picture::Role RoleOfType(const std::wstring& type);

#endif
