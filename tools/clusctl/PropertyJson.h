// Property lists and disk information, as the cluster gives them, in the form of the simulator's model file.
#ifndef CLUSCTL_PROPERTYJSON_H
#define CLUSCTL_PROPERTYJSON_H

#include "Report.h"

#include <cstddef>
#include <vector>

// An object with one member per property. Throws Failure when the list is malformed.
Json PropertiesJson(const std::vector<unsigned char>& propertyList);

// Replaces the values of the properties whose names say password, secret, key or token, in any letter case; an empty
// value stays. How many were replaced. `properties` may be null.
size_t MaskSecretProperties(Json& properties);

// The value list of CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO. Throws Failure when it is malformed.
Json DiskJson(const std::vector<unsigned char>& valueList);

// Whether CLUSCTL_RESOURCE_GET_FLAGS says that a resource is one of the cluster's own.
bool IsCore(const std::vector<unsigned char>& flags);

// Marks it in a model then. Of these a disk counts as what holds the quorum. Whether it is one.
bool MarkCore(Json& resource, const std::vector<unsigned char>& flags);

#endif
