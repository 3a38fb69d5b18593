// A volume manager for clusutil.dll: known volumes, and the mount paths of each. Its calls stand in the journal of the
// platform tap and can be made to fail there, the looked-up one included.
#ifndef VOLUMEMANAGER_H
#define VOLUMEMANAGER_H

#include "ClusterTest.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace harness {

class VolumeManager {
public:
    // The tap comes from a fixture that lives longer.
    explicit VolumeManager(PlatformTap& tap) : m_tap(tap) {
        Current() = this;
    }
    ~VolumeManager() {
        Current() = nullptr;
    }
    VolumeManager(const VolumeManager&) = delete;
    VolumeManager& operator=(const VolumeManager&) = delete;

    // The volume that a device path such as \\?\GLOBALROOT\device\Harddisk1\Partition2\ leads to, and its mount paths.
    void Add(const std::wstring& device, const std::wstring& volume, const std::vector<std::wstring>& paths) {
        m_volumes[device] = volume;
        m_paths[volume] = paths;
    }

    // kernel32.dll as clusutil.dll loaded it: loads without a free.
    int LibrariesHeld() const {
        return m_loads - m_frees;
    }
    int Loads() const {
        return m_loads;
    }

    // The system is one without GetVolumePathNamesForVolumeNameW.
    bool hasPathNames = true;

private:
    static VolumeManager*& Current() {
        static VolumeManager* current = nullptr;
        return current;
    }

    // A failure asked for in the tap: the call is written down and fails.
    bool Fails(const char* function, const std::string& call) {
        DWORD code = 0;
        if (!m_tap.ShouldFail(function, call, &code)) {
            return false;
        }
        return Fail(call, code);
    }
    bool Fail(const std::string& call, DWORD code) {
        m_tap.Record(call + "=" + std::to_string(code));
        SetLastError(code);
        return true;
    }

    HMODULE Load(LPCWSTR name) {
        const HarnessScope scope;
        const std::string call = "LoadLibraryW(" + Utf8(name) + ")";
        if (Fails("LoadLibraryW", call)) {
            return nullptr;
        }
        m_tap.Record(call);
        m_library = ::LoadLibraryW(name);
        ++m_loads;
        return m_library;
    }

    BOOL Free(HMODULE module) {
        const HarnessScope scope;
        EXPECT_EQ(module, m_library);
        m_tap.Record("FreeLibrary()");
        ++m_frees;
        return ::FreeLibrary(module);
    }

    FARPROC Find(HMODULE module, LPCSTR name) {
        const HarnessScope scope;
        EXPECT_EQ(module, m_library);
        const std::string call = std::string("GetProcAddress(") + name + ")";
        if (Fails("GetProcAddress", call) || (!hasPathNames && Fail(call, ERROR_PROC_NOT_FOUND))) {
            return nullptr;
        }
        m_tap.Record(call);
        EXPECT_STREQ(name, "GetVolumePathNamesForVolumeNameW");
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&PathNames));
    }

    BOOL VolumeName(LPCWSTR device, LPWSTR volume, DWORD cch) {
        const HarnessScope scope;
        const std::string call = "GetVolumeNameForVolumeMountPointW(" + Utf8(device) + ")";
        EXPECT_EQ(cch, 256u);
        EXPECT_EQ(device, volume) << "one buffer for both";
        if (Fails("GetVolumeNameForVolumeMountPointW", call)) {
            return FALSE;
        }
        const auto found = m_volumes.find(device);
        if (found == m_volumes.end()) {
            Fail(call, ERROR_PATH_NOT_FOUND);
            return FALSE;
        }
        m_tap.Record(call);
        std::copy_n(found->second.c_str(), found->second.size() + 1, volume);
        return TRUE;
    }

    BOOL VolumePaths(LPCWSTR volume, LPWCH paths, DWORD cch, PDWORD cchReturned) {
        const HarnessScope scope;
        const std::string call = "GetVolumePathNamesForVolumeNameW(" + Utf8(volume) + ")";
        EXPECT_EQ(LibrariesHeld(), 1) << "the function's library is loaded while it is called";
        EXPECT_EQ(cch, 256u);
        EXPECT_EQ(volume, paths) << "one buffer for both";
        if (Fails("GetVolumePathNamesForVolumeNameW", call)) {
            return FALSE;
        }
        std::wstring list;
        for (const std::wstring& path : m_paths[volume]) {
            list += path + L'\0';
        }
        list += L'\0';
        *cchReturned = static_cast<DWORD>(list.size());
        if (list.size() > cch) {
            Fail(call, ERROR_MORE_DATA);
            return FALSE;
        }
        m_tap.Record(call);
        std::copy(list.begin(), list.end(), paths);
        return TRUE;
    }
    static BOOL WINAPI PathNames(LPCWSTR volume, LPWCH paths, DWORD cch, PDWORD cchReturned) {
        return Current()->VolumePaths(volume, paths, cch, cchReturned);
    }

    PlatformTap& m_tap;
    std::map<std::wstring, std::wstring> m_volumes;
    std::map<std::wstring, std::vector<std::wstring>> m_paths;
    HMODULE m_library = nullptr;
    int m_loads = 0;
    int m_frees = 0;

    struct LoadTag;
    struct FreeTag;
    struct FindTag;
    struct VolumeNameTag;
    ImportPatch<HMODULE(LPCWSTR), LoadTag> m_load{FindImports(LibraryModule(), "kernel32.dll", "LoadLibraryW"),
                                                  [this](LPCWSTR name) { return Load(name); }};
    ImportPatch<BOOL(HMODULE), FreeTag> m_free{FindImports(LibraryModule(), "kernel32.dll", "FreeLibrary"),
                                               [this](HMODULE module) { return Free(module); }};
    ImportPatch<FARPROC(HMODULE, LPCSTR), FindTag> m_find{
        FindImports(LibraryModule(), "kernel32.dll", "GetProcAddress"),
        [this](HMODULE module, LPCSTR name) { return Find(module, name); }};
    ImportPatch<BOOL(LPCWSTR, LPWSTR, DWORD), VolumeNameTag> m_volumeName{
        FindImports(LibraryModule(), "kernel32.dll", "GetVolumeNameForVolumeMountPointW"),
        [this](LPCWSTR device, LPWSTR volume, DWORD cch) { return VolumeName(device, volume, cch); }};
};

} // namespace harness

#endif
