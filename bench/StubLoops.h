// What the enumerations are measured against on the stubs: written by hand for them alone, as fast as can be.
#ifndef STUBLOOPS_H
#define STUBLOOPS_H

#include <cstddef>
#include <list>
#include <string>

namespace bench {

// The calls of EnumServersOnCurrentNode and EnumResourceNamesByType: nothing is kept or logged.
void CallsOfEnumServers(std::size_t resources);
void CallsOfNamesByType(std::size_t resources);

// The same calls, with the work that has to be done between them and the lines that the library logs.
std::size_t BestEnumServers();
std::list<std::wstring> BestNamesByType(const wchar_t* type);

} // namespace bench

#endif
