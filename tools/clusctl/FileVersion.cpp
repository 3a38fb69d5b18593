#include "FileVersion.h"

#include <winsock2.h>
#include <windows.h>

#include <vector>

std::string FileVersion(const std::wstring& path) {
    DWORD ignored = 0;
    std::vector<unsigned char> information(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    void* found = nullptr;
    UINT length = 0;
    if (information.empty() ||
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(information.size()), information.data()) ||
        !VerQueryValueW(information.data(), L"\\", &found, &length) || length < sizeof(VS_FIXEDFILEINFO)) {
        return std::string();
    }
    const auto* const version = static_cast<const VS_FIXEDFILEINFO*>(found);
    return std::to_string(HIWORD(version->dwFileVersionMS)) + "." + std::to_string(LOWORD(version->dwFileVersionMS)) +
           "." + std::to_string(HIWORD(version->dwFileVersionLS)) + "." +
           std::to_string(LOWORD(version->dwFileVersionLS));
}
