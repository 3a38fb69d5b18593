// What a model looks like, read from its file: no simulated cluster is asked.
#ifndef CLUSCTL_MODELPICTURE_H
#define CLUSCTL_MODELPICTURE_H

#include "Json.h"

#include "picture/ClusterPicture.h"

#include <string>

// Lists are of records, in the file's order.
struct ModelPicture {
    picture::ClusterPicture cluster;
    Json model = Json::object();            // what is said of the cluster as a whole
    Json groupDependencies = Json::array(); // of VCS: group, requires, relationship
    Json disks = Json::array();             // resource, number, id, partitions
    Json settings = Json::array();          // name, value
    Json unread = Json::array();            // object, part, code: what the snapshot could not read
};

// Throws Failure when the file cannot be read, or is not in order.
ModelPicture PictureOfModel(const std::wstring& model);

#endif
