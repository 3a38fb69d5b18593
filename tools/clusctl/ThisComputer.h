// The computer that this runs on.
#ifndef CLUSCTL_THISCOMPUTER_H
#define CLUSCTL_THISCOMPUTER_H

#include <string>

// Its NetBIOS name, which is its node's name in a cluster. Throws Failure when the system does not tell it.
std::wstring ComputerName();

// Whether a node or system has that name, in any letter case.
bool IsThisComputer(const std::wstring& name);

#endif
