// The binary lists that a cluster gives, looked at by a probe. Needs no platform header.
#ifndef CLUSCTL_PROBELISTS_H
#define CLUSCTL_PROBELISTS_H

#include "Probe.h"

#include <string>
#include <vector>

// A property list with at least one property: "property-list" and "expand-text".
void LookAtPropertyList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers);

// The information about a disk: "disk-list" and "disk-partition".
void LookAtDiskList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers);

// The value of a text property, by its exact name. Empty when it is not in the list.
std::wstring TextProperty(const std::vector<unsigned char>& list, const std::wstring& name);

// The first property with letters in its name that is a text or a number.
bool FirstSimpleProperty(const std::vector<unsigned char>& list, std::wstring& name, bool& isText);

// The same name with small letters for large ones, and large ones for small ones.
std::wstring InOtherCase(std::wstring text);

#endif
