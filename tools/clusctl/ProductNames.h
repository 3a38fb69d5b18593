// What the clusters and the product call things. The library goes by the same names and does not hand them out.
#ifndef CLUSCTL_PRODUCTNAMES_H
#define CLUSCTL_PRODUCTNAMES_H

// A resource type of a Microsoft cluster.
const wchar_t NetworkNameType[] = L"Network Name";

// The product's Windows services, each a resource on VCS.
const wchar_t HostService[] = L"OXAHostService";
const wchar_t AttendantService[] = L"OXASAService";
const wchar_t QuarantineService[] = L"QAV_Monitor";
const wchar_t RemoteConfigService[] = L"OXA_RemoteConfig";

// Attributes of a VCS resource.
const wchar_t TypeAttribute[] = L"Type";
const wchar_t GroupAttribute[] = L"Group";
const wchar_t VirtualNameAttribute[] = L"VirtualName"; // of a Lanman resource

#endif
