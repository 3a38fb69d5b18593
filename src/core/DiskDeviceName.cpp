#include "core/DiskDeviceName.h"

#include <regex>

namespace clus {

std::wstring WithTrailingBackslash(const std::wstring& deviceName) {
    if (deviceName.empty() || deviceName.back() == L'\\') {
        return deviceName;
    }
    return deviceName + L'\\';
}

bool IsDiskPartitionName(const std::wstring& deviceName, wchar_t& diskDigit, wchar_t& partitionDigit) {
    try {
        const std::wregex pattern(L"Disk[0-9]Partition[0-9]\\\\");
        if (!std::regex_match(deviceName, pattern)) {
            return false;
        }
    } catch (const std::regex_error&) {
        return false;
    }
    diskDigit = deviceName[4];
    partitionDigit = deviceName[14];
    return true;
}

} // namespace clus
