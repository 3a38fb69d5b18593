// The cluster calls that an enumeration needs, and nothing around them: no names kept, no owners, no log. What the
// library is measured against.
#ifndef BARECALLS_H
#define BARECALLS_H

#include "clus_VirtualServerUtil.h"

#include <cstddef>

namespace bench {

// Fills at most `capacity` records of the virtual servers on this node; their number. Throws std::runtime_error when a
// call fails.
std::size_t BareEnumServers(CClusterVirtualServerInfo* records, std::size_t capacity);

// The number of resources of one type.
std::size_t BareCountResourcesOfType(const wchar_t* type);

} // namespace bench

#endif
