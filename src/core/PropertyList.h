// Cluster property lists that hold one property, as the cluster's SET_*_PROPERTIES controls take them. Little-endian;
// every entry is padded with zeros to a multiple of 4 bytes, the padding is not part of its length. Pure functions.
#ifndef CLUS_CORE_PROPERTYLIST_H
#define CLUS_CORE_PROPERTYLIST_H

#include <cstddef>
#include <cstdint>

namespace clus {

// Bytes of a list with one DWORD property; `cchName` without terminator.
std::size_t DwordPropertyListSize(std::size_t cchName);

// Writes that list into `block`, zero-filled and of the size above.
void WriteDwordPropertyList(unsigned char* block, const wchar_t* name, std::size_t cchName, std::uint32_t value);

// The same for one text property.
std::size_t TextPropertyListSize(std::size_t cchName, std::size_t cchValue);
void WriteTextPropertyList(unsigned char* block, const wchar_t* name, std::size_t cchName, const wchar_t* value,
                           std::size_t cchValue);

} // namespace clus

#endif
