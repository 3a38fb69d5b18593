// Another computer's name as that of this one.
#ifndef CLUSCTL_OTHERCOMPUTER_H
#define CLUSCTL_OTHERCOMPUTER_H

#include <string>

// From now on this process takes that for its computer's name, and so do the library and the simulator of failover
// clusters, which have to be loaded by then.
void BearComputerName(const std::wstring& name);

#endif
