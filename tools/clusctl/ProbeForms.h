// What a probe asks of every list and every name that a cluster hands out.
#ifndef CLUSCTL_PROBEFORMS_H
#define CLUSCTL_PROBEFORMS_H

#include "ClusterApi.h"
#include "Probe.h"

#include <functional>
#include <string>

const DWORD ProbeRoom = 1024;         // characters; no name is longer
const DWORD MostProbedItems = 100000; // of a list: one that goes on has no end

// One item of an open enumeration, as ClusterGroupEnum gives it.
typedef std::function<DWORD(DWORD index, wchar_t* name, DWORD* count)> AskItem;

// The whole list: the count behind each name, the end, and too small a room for the first.
void LookAtList(const char* rule, const AskItem& ask, const std::wstring& object, ProbeAnswers& answers);

// A group's lists: "group-enum" and "group-enum-mask".
void LookAtGroupLists(HGROUP group, const std::wstring& name, ProbeAnswers& answers);

// A resource's lists: "resource-enum-mask", "resource-enum-length", "possible-owners" and, where it is to be read
// whole, "resource-enum".
void LookAtResourceLists(HRESOURCE resource, const std::wstring& name, bool isWhole, ProbeAnswers& answers);

// The cluster's own name and version: "cluster-name", "version-short".
void LookAtInformation(HCLUSTER cluster, ProbeAnswers& answers);

#endif
