// The binary lists that a cluster gives, looked at by a probe. Needs no platform header.
#ifndef CLUSCTL_PROBELISTS_H
#define CLUSCTL_PROBELISTS_H

#include "Probe.h"

#include <string>
#include <vector>

// A property list with at least one property: "property-list".
void LookAtPropertyList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers);

// The information about a disk: "disk-list" and "disk-partition".
void LookAtDiskList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers);

#endif
