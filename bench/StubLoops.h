// What the enumerations are measured against: written by hand for them alone, as fast as can be.
#ifndef STUBLOOPS_H
#define STUBLOOPS_H

#include "platform/ClusterApi.h"

#include <cstddef>
#include <functional>
#include <list>
#include <string>

namespace bench {

// The calls of EnumServersOnCurrentNode and EnumResourceNamesByType: nothing is kept or logged.
void CallsOfEnumServers(std::size_t resources);
void CallsOfNamesByType(std::size_t resources);

// The same calls, with the work that has to be done between them and the lines that the library logs. `found` is called
// for the resource of each server on this node, with whether it is online. They do as well on the simulator.
typedef std::function<void(HRESOURCE, bool)> FoundServer;
std::size_t BestEnumServers(const FoundServer& found);
std::list<std::wstring> BestNamesByType(const wchar_t* type);

} // namespace bench

#endif
