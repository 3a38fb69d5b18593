// The binary forms of the cluster API: property lists and value lists. Little-endian, entries padded to 4 bytes.
#ifndef CLUSSIM_PROPERTYLISTS_H
#define CLUSSIM_PROPERTYLISTS_H

#include "Model.h"

namespace clussim {

typedef std::vector<unsigned char> Bytes;

Bytes PropertyList(const PropertySet& properties);
Bytes NameList(const PropertySet& properties);                        // a multi-text of the names
Bytes RequiredDependencies(const std::vector<const wchar_t*>& types); // a value list
Bytes DiskInformation(const Disk& disk);
Bytes TextBytes(const std::wstring& text); // UTF-16 with its terminator

// Reads a list sent by a caller; never past `cb`. 0, 13 (malformed) or 122 (longer than `cb`).
Code ParsePropertyList(const void* data, std::size_t cb, PropertySet& properties);

// Looks one property up in a list, the same way; of several values it gives the first. 0, 2 (not in the list) or 13.
Code FindListedProperty(const void* data, std::size_t cb, const std::wstring& name, PropertyValue& value);

} // namespace clussim

#endif
