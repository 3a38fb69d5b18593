// Requests to the engine, and what the tools check before them.
#ifndef VCSSIM_OPERATIONS_H
#define VCSSIM_OPERATIONS_H

#include "Tools.h"

#include <set>
#include <string>
#include <vector>

namespace vcssim {

// Checks that hold for a group and its resources alike. False after a message; `ofResource` chooses which one tells
// that the group is online on another system.
bool CheckSystem(Context& context, const CfGroup& group, const std::string& system);
bool CheckNotOnlineElsewhere(Context& context, const CfGroup& group, const std::string& system, bool ofResource);

// Which resources the resource needs to go online, in their order, itself included: appended to `wanted`. What is
// faulted gives a notice, and what requires it is left out; the answer is whether the resource will be online. `seen`
// holds the resources that have been looked at.
bool CollectOnline(Context& context, const CfGroup& group, const CfBlock& resource, const std::string& system,
                   std::set<std::string>& seen, std::vector<std::string>& wanted);

// True: `why` is empty. Else prints it with the number; it is a sentence of the engine.
bool CheckAllowed(Context& context, const std::string& why, const char* number = "99060");

// Whether the engine can say what the group does.
bool CheckSimulated(Context& context, const CfGroup& group);

bool IsOnline(const Cluster& cluster, const CfBlock& resource, const std::string& system);
bool IsFaulted(const Cluster& cluster, const CfBlock& resource, const std::string& system);

} // namespace vcssim

#endif
