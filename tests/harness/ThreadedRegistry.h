// A registry of one's own for a library that is called on many threads at once; the taps are for one thread.
#ifndef HARNESS_THREADEDREGISTRY_H
#define HARNESS_THREADEDREGISTRY_H

#include "ImportPatch.h"
#include "IsolatedRegistry.h"

namespace harness {

class ThreadedRegistry : public IsolatedRegistry {
private:
    ImportPatch<LSTATUS(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY), struct ThreadedRegistryTag> m_open{
        FindImports(LibraryModule(), "advapi32.dll", "RegOpenKeyExW"),
        [this](HKEY, LPCWSTR path, DWORD options, REGSAM access, PHKEY key) -> LSTATUS {
            return ::RegOpenKeyExW(Root(), path, options, access, key);
        }};
};

} // namespace harness

#endif
