// The group of the cluster's own resources, which every cluster has.
#ifndef CLUSSIM_COREGROUP_H
#define CLUSSIM_COREGROUP_H

#include "Model.h"

namespace clussim {

// Whether the model lists no core resource, and nothing that has the name of the group or of one of its resources.
bool LacksCoreGroup(const Model& model);

// Adds "Cluster Group", with the cluster's name, its address and what holds its quorum, to a model that lacks it.
void AddCoreGroup(Model& model);

} // namespace clussim

#endif
