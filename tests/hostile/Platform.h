// A platform that answers at random, within what the signatures of its calls allow, in place of everything that
// clusutil.dll imports: the cluster, the system, and the libraries that it works with.
#ifndef HOSTILE_PLATFORM_H
#define HOSTILE_PLATFORM_H

#include "Attack.h"
#include "GuardedMemory.h"

#include <memory>
#include <vector>

namespace hostile {

// One call of the platform: counted, its memory not the library's, and with any last-error value when it returns.
class PlatformCall {
public:
    PlatformCall() {
        TheAttack().CountCall();
    }
    ~PlatformCall() {
        SetLastError(m_lastError);
    }
    PlatformCall(const PlatformCall&) = delete;
    PlatformCall& operator=(const PlatformCall&) = delete;

private:
    Outside m_outside;
    DWORD m_lastError = TheAttack().Code();
};

// Writes a text for which there is room for `cch` characters: often with its terminator, sometimes up to the last
// character without one.
void WriteText(wchar_t* text, DWORD cch, const wchar_t* content);

// Reads what a caller passes, up to its last byte.
void Touch(const void* data, std::size_t cb);
void Touch(const wchar_t* text);

// Puts functions in the place of imports of clusutil.dll while it lives.
class Replacements {
public:
    ~Replacements() {
        while (!m_patches.empty()) {
            m_patches.pop_back();
        }
    }
    template <typename Function> void Add(const char* dll, const char* name, Function* function) {
        m_patches.push_back(std::make_unique<harness::ImportEntryPatch>(
            harness::FindImports(harness::LibraryModule(), dll, name), reinterpret_cast<void*>(function)));
    }
    // The import that holds an address.
    void AddAt(const void* address, void* function) {
        m_patches.push_back(std::make_unique<harness::ImportEntryPatch>(
            harness::FindImportsByAddress(harness::LibraryModule(), address), function));
    }

private:
    std::vector<std::unique_ptr<harness::ImportEntryPatch>> m_patches;
};

void ReplaceCluster(Replacements& replacements);
void ReplaceResourceUtilities(Replacements& replacements, GuardedHeaps& heaps);
void ReplaceSystem(Replacements& replacements);
void ReplaceTools(Replacements& replacements);
// Tool outputs that are being read.
std::size_t OpenReaders();

// Whether the next reading of the registry says that this is a cluster.
extern bool isCluster;

} // namespace hostile

#endif
