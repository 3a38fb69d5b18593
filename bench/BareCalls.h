// The cluster calls that an operation needs, and what any caller of them has to do besides: names are kept before they
// are opened, replies read into a buffer. No owners, no log. What the library is measured against. Throw
// std::runtime_error when a call fails.
#ifndef BARECALLS_H
#define BARECALLS_H

#include "clus_VirtualServerUtil.h"

#include <winsock2.h>
#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>

namespace bench {

// Fills a record of each virtual server on this node, which `next` hands out; their number.
typedef std::function<CClusterVirtualServerInfo&()> NextRecord;
std::size_t BareEnumServers(const NextRecord& next);

// What a record of a server takes, but for whether it is online, when its resource has been found.
void BareFillRecord(HRESOURCE resource, CClusterVirtualServerInfo& record);

// Collects the names of the resources of one type; their number.
std::size_t BareNamesOfType(const wchar_t* type);

// The path of a disk whose device name is a drive.
std::wstring BareDiskPath(HRESOURCE disk);

// Brings a resource offline, whatever the time that takes, so that it can be deleted.
void TakeOffline(const wchar_t* name);

// Deletes the product resource, offline and on this node, of a virtual server.
void BareDeleteProductResource(const wchar_t* server);

// Creates it anew: single copy, with the given disk resource.
void BareCreateProductResource(const wchar_t* server, const wchar_t* name, const wchar_t* dataPath,
                               const wchar_t* disk);

} // namespace bench

#endif
