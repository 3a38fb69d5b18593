// Device names of cluster disks, as the partition records of a disk's information give them. Pure functions.
#ifndef CLUS_CORE_DISKDEVICENAME_H
#define CLUS_CORE_DISKDEVICENAME_H

#include <string>

namespace clus {

// The name with a backslash at its end; an empty name stays empty.
std::wstring WithTrailingBackslash(const std::wstring& deviceName);

// Whether the name, backslash included, is "Disk<d>Partition<p>\\" with one decimal digit each, in exactly this letter
// case and with nothing behind it; gives the two digits then.
bool IsDiskPartitionName(const std::wstring& deviceName, wchar_t& diskDigit, wchar_t& partitionDigit);

} // namespace clus

#endif
