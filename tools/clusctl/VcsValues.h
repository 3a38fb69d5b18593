// Values that the VCS commands share: names as JSON, attribute values without secrets, NAME=VALUE pairs.
#ifndef CLUSCTL_VCSVALUES_H
#define CLUSCTL_VCSVALUES_H

#include "Report.h"

#include <clus_VeritasCluster.h>

#include <string>
#include <vector>

typedef std::vector<std::wstring> VcsNames;

// The text, or null when it is empty.
Json TextOrNull(const std::wstring& text);

// A list of names; a list of records with one member.
Json NamesJson(const VcsNames& names);
Json NameRecords(const VcsNames& names);

NameValuePairList Pairs(const std::vector<std::string>& texts);

bool Contains(const VcsNames& names, const std::wstring& name);

// The value, or the mask when the attribute holds a password. Null when VCS tells no value.
Json ReadVcsAttribute(const std::wstring& resource, const std::string& attribute);

#endif
