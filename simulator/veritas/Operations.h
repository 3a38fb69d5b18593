// Bringing resources online.
#ifndef VCSSIM_OPERATIONS_H
#define VCSSIM_OPERATIONS_H

#include "Tools.h"

#include <set>
#include <string>

namespace vcssim {

// Checks that hold for a group and its resources alike. False after a message; `ofResource` chooses which one tells
// that the group is online on another system.
bool CheckSystem(Context& context, const CfGroup& group, const std::string& system);
bool CheckNotOnlineElsewhere(Context& context, const CfGroup& group, const std::string& system, bool ofResource);

// What the resource requires goes first. What is faulted gives a notice, and what requires it is left alone. `seen`
// holds the resources that have been looked at.
bool BringOnline(Context& context, const CfGroup& group, const CfBlock& resource, const std::string& system,
                 std::set<std::string>& seen);

bool IsOnline(const Cluster& cluster, const CfBlock& resource, const std::string& system);
bool IsFaulted(const Cluster& cluster, const CfBlock& resource, const std::string& system);

} // namespace vcssim

#endif
