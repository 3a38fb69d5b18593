// Values that the VCS commands share: names as JSON, attribute values without secrets.
#ifndef CLUSCTL_VCSVALUES_H
#define CLUSCTL_VCSVALUES_H

#include "Report.h"

#include "core/UniqueNames.h"

#include <clus_VeritasCluster.h>

#include <string>
#include <vector>

typedef std::vector<std::wstring> VcsNames;

// A list of records with one member.
Json NameRecords(const VcsNames& names);

// "A, B", printable.
std::string ListText(const VcsNames& names);

using clus::Contains;

// The value, or the mask when the attribute holds a password. Null when VCS tells no value.
Json ReadVcsAttribute(const std::wstring& resource, const std::wstring& attribute);

#endif
