// The DLLs that this process has loaded: the product's, the cluster's and the compiler's run-time.
#ifndef CLUSCTL_LOADEDLIBRARIES_H
#define CLUSCTL_LOADEDLIBRARIES_H

#include <string>
#include <vector>

struct LoadedLibrary {
    const wchar_t* name; // "clusutil.dll"
    bool isProducts;
    std::wstring path;
    std::string version; // empty when it has none
};

// Those of a list that are loaded, the product's first.
std::vector<LoadedLibrary> LoadedLibraries();

#endif
