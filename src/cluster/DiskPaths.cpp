// The paths of a cluster disk: partition device names, volumes, mount points.
#include "clus_Cluster.h"

#include "core/DiskDeviceName.h"
#include "core/ValueList.h"
#include "platform/FormatText.h"
#include "platform/LocalBuffer.h"
#include "platform/Log.h"
#include "platform/Owner.h"

#include "CommonUtil.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <new>

CLUS_LOG_PLACE(GetClusterDiskPaths, 1);

using clus::LongestAnswer;
using clus::ModuleOwner;

namespace {

typedef BOOL(WINAPI* GetVolumePathNamesFunction)(LPCWSTR volumeName, LPWCH pathNames, DWORD cch, PDWORD cchReturned);

// The disk information of a Physical Disk resource. The first request, without a buffer, only asks for its size;
// one beyond the longest answer is not asked for.
DWORD ReadDiskInfo(HRESOURCE resource, std::vector<unsigned char>& info) {
    DWORD cb = 0;
    DWORD code =
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, nullptr, 0, nullptr, 0, &cb);
    if (code != ERROR_MORE_DATA) {
        LOG_WARNING(L"ClusterResourceControl, ERROR_MORE_DATA, but got %d", code);
        return code;
    }
    if (cb > LongestAnswer) {
        return code;
    }
    info.resize(cb);
    code = ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, nullptr, 0, info.data(),
                                  static_cast<DWORD>(info.size()), &cb);
    info.resize(std::min<std::size_t>(cb, info.size()));
    return code;
}

// The first mount path of a volume. `buffer` holds the volume's name on entry and is overwritten with its paths.
bool FirstPathOfVolume(wchar_t* buffer, DWORD cchBuffer, std::wstring& path) {
    const ModuleOwner kernel(LoadLibraryW(L"kernel32.dll"));
    if (!kernel) {
        LOG_WARNING(L"Load kernel32.dll failed.");
        return false;
    }
    // Looked up at run time, so that the library loads on systems without it.
    const auto getVolumePathNames = reinterpret_cast<GetVolumePathNamesFunction>(
        reinterpret_cast<void*>(GetProcAddress(kernel.get(), "GetVolumePathNamesForVolumeNameW")));
    if (!getVolumePathNames) {
        LOG_WARNING(
            L"GetProcAddress GetVolumePathNamesForVolumeNameW failed. The system doesn't support this function");
        return false;
    }
    DWORD cchReturned = 0;
    if (!getVolumePathNames(buffer, buffer, cchBuffer, &cchReturned)) {
        LOG_WARNING(L"GetVolumePathNamesForVolumeName Error, code:%d", GetLastError());
        return false;
    }
    buffer[cchBuffer - 1] = L'\0';
    if (!CheckPathFormat(buffer, std::wcslen(buffer))) {
        LOG_WARNING(L"CheckPathFormat for path %s fail, return false.", buffer);
        return false;
    }
    path = buffer;
    return true;
}

bool TranslateDeviceNameToDiskPaths_(const std::wstring& deviceName, std::wstring& path) {
    LOG_ENTER_AND_LEAVE(L"TranslateDeviceNameToDiskPaths_");
    const std::wstring name = clus::WithTrailingBackslash(deviceName);
    if (CheckPathFormat(name.c_str(), name.length())) {
        LOG_INFO(L"sDeviceName %s is a valid path, skip translation.", name.c_str());
        path = name;
        return true;
    }
    LOG_INFO(L"Translating device name %s.", name.c_str());
    wchar_t diskDigit = L'\0';
    wchar_t partitionDigit = L'\0';
    if (!clus::IsDiskPartitionName(name, diskDigit, partitionDigit)) {
        return false;
    }
    LOG_INFO(L"device name %s is Disk?Partition? format.", name.c_str());
    const DWORD cchBuffer = 256;
    wchar_t buffer[cchBuffer] = {};
    CLUS_FORMAT_TEXT(buffer, L"\\\\?\\GLOBALROOT\\device\\Harddisk%c\\Partition%c\\", diskDigit, partitionDigit);
    if (!GetVolumeNameForVolumeMountPointW(buffer, buffer, cchBuffer)) {
        return false;
    }
    buffer[cchBuffer - 1] = L'\0';
    LOG_INFO(L"VolumeName: %s", buffer);
    return FirstPathOfVolume(buffer, cchBuffer, path);
}

void ParseDeviceNamefromPartitionInfo_(const std::vector<unsigned char>& info, std::vector<std::wstring>& paths) {
    clus::ValueListReader reader(info.data(), info.size());
    while (reader.Next()) {
        if (reader.Syntax() != clus::SyntaxPartitionInfo) {
            continue;
        }
        const std::wstring deviceName = reader.TextAt(clus::EntryHeaderSize + clus::PartitionDeviceOffset);
        LOG_INFO(L"ParseDeviceNamefromPartitionInfo_(), got device name: %s", deviceName.c_str());
        std::wstring path;
        if (TranslateDeviceNameToDiskPaths_(deviceName, path)) {
            LOG_INFO(L"device name translted to: %s", path.c_str());
            paths.push_back(path);
        } else {
            LOG_WARNING(L"translation fail, skip disk");
        }
    }
}

} // namespace

bool GetDiskLettersFromResource(HRESOURCE resource, std::vector<std::wstring>& paths) {
    LOG_ENTER_AND_LEAVE(L"GetDiskLettersFromResource");
    const std::size_t before = paths.size();
    try {
        std::vector<unsigned char> info;
        const DWORD code = ReadDiskInfo(resource, info);
        if (code != ERROR_SUCCESS) {
            LOG_WARNING(L"ClusterResourceControlEx_ error, code: %d", code);
            return false;
        }
        ParseDeviceNamefromPartitionInfo_(info, paths);
        return true;
    } catch (const std::bad_alloc&) {
        paths.erase(paths.begin() + static_cast<std::ptrdiff_t>(before), paths.end());
        return false; // callers of a function with C linkage know no exceptions
    }
}

bool GetDiskLetterFromResource(HRESOURCE resource, wchar_t* path, DWORD cchPath) {
    LOG_ENTER(L"GetDiskLetterFromResource");
    std::vector<std::wstring> paths;
    if (!GetDiskLettersFromResource(resource, paths) || paths.empty() || cchPath == 0) {
        LOG_LEAVE(L"GetDiskLetterFromResource");
        return false;
    }
    const std::size_t length = std::min<std::size_t>(paths.front().length(), cchPath - 1);
    std::copy_n(paths.front().c_str(), length, path);
    path[length] = L'\0';
    path[cchPath - 1] = L'\0'; // whatever the length: callers may look there
    LOG_INFO(L"GetDiskLettersFromResource, got disk letter %s", path);
    return true;
}
