// Which node a group may go to, and what its properties say of it.
#ifndef CLUSSIM_FAILOVERRULES_H
#define CLUSSIM_FAILOVERRULES_H

#include "Model.h"

namespace clussim {

const std::uint32_t Never = 0xFFFFFFFF; // of periods and hours
const std::int64_t MsPerHour = 3600000;

std::uint32_t NumberOf(const PropertySet& properties, const wchar_t* name, std::uint32_t otherwise);

bool IsUp(const Node& node);

// Whether all that shall be online in the group can be so on the node.
bool MayHost(const Group& group, const Node& node);

// In the order of the group's preferred owners, then that of the other nodes: the next behind the owner, from the end
// to the beginning, that is up and may host the group; or null.
Node* NextNode(Model& model, const Group& group);

// Where a group goes whose node is lost: the first in that order that may host it, else any that is up, else one that
// is paused; null when all are down.
Node* Refuge(Model& model, const Group& group);

} // namespace clussim

#endif
