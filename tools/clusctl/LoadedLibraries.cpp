#include "LoadedLibraries.h"

#include "FileVersion.h"

#include <winsock2.h>
#include <windows.h>

namespace {

const wchar_t* const ProductLibraries[] = {L"clusutil.dll", L"DebugLog.dll", L"CommonUtil.dll", L"WebServerUtil.dll"};
// The run-time is that of the compiler which built the library.
const wchar_t* const OtherLibraries[] = {L"clusapi.dll",        L"resutils.dll",        L"libstdc++-6.dll",
                                         L"libgcc_s_seh-1.dll", L"libwinpthread-1.dll", L"vcruntime140.dll",
                                         L"msvcp140.dll",       L"ucrtbase.dll",        L"msvcrt.dll"};

std::wstring PathOf(HMODULE module) {
    std::wstring path(32768, L'\0'); // the longest there is
    path.resize(GetModuleFileNameW(module, &path[0], static_cast<DWORD>(path.size())));
    return path;
}

void AddIfLoaded(std::vector<LoadedLibrary>& libraries, const wchar_t* name, bool isProducts) {
    const HMODULE module = GetModuleHandleW(name);
    if (module != nullptr) {
        const std::wstring path = PathOf(module);
        libraries.push_back({name, isProducts, path, FileVersion(path)});
    }
}

} // namespace

std::vector<LoadedLibrary> LoadedLibraries() {
    std::vector<LoadedLibrary> libraries;
    for (const wchar_t* const name : ProductLibraries) {
        AddIfLoaded(libraries, name, true);
    }
    for (const wchar_t* const name : OtherLibraries) {
        AddIfLoaded(libraries, name, false);
    }
    return libraries;
}
