// Names that VCS, Exchange and the product give to services, agents and attributes.
#ifndef CLUS_CORE_VERITASNAMES_H
#define CLUS_CORE_VERITASNAMES_H

namespace clus::veritas {

// The product's services and the Exchange services that mark a virtual server.
const wchar_t HostService[] = L"OXAHostService";
const wchar_t SAService[] = L"OXASAService";
const wchar_t QAVMonitorService[] = L"QAV_Monitor";
const wchar_t RemoteConfigService[] = L"OXA_RemoteConfig";
const wchar_t InformationStoreService[] = L"MSExchangeIS";
const wchar_t SystemAttendantService[] = L"MSExchangeSA";

// VCS agents and attributes.
const wchar_t ExchServiceType[] = L"ExchService";
const wchar_t GenericServiceType[] = L"GenericService";
const wchar_t LanmanType[] = L"Lanman";
const wchar_t MountVType[] = L"MountV";
const wchar_t RegRepType[] = L"RegRep";
const wchar_t TypeAttribute[] = L"Type";
const wchar_t GroupAttribute[] = L"Group";
const wchar_t ServiceAttribute[] = L"Service";
const wchar_t ServiceNameAttribute[] = L"ServiceName";
const wchar_t VirtualNameAttribute[] = L"VirtualName";
const wchar_t KeysAttribute[] = L"Keys";
const wchar_t ReplicationDirectoryAttribute[] = L"ReplicationDirectory";

} // namespace clus::veritas

#endif
