#include "MemoryMeter.h"

#include "ImportPatch.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>

namespace bench {

namespace {

struct Count {
    bool running = false;
    std::size_t now = 0;
    std::size_t peak = 0;
    std::size_t allocations = 0;
    void* localBlocks[64] = {}; // resutils.dll allocates texts that clusutil.dll frees: those are not counted

    void Add(std::size_t bytes) {
        ++allocations;
        now += bytes;
        peak = std::max(peak, now);
    }
    void Remove(std::size_t bytes) {
        now -= std::min(now, bytes);
    }
    void** FindLocal(void* block) {
        void** end = localBlocks + std::size(localBlocks);
        void** found = std::find(localBlocks, end, block);
        return found == end ? nullptr : found;
    }
};

Count TheCount;

void* MeteredMalloc(std::size_t size) {
    void* block = std::malloc(size);
    if (TheCount.running && block) {
        TheCount.Add(_msize(block));
    }
    return block;
}

void MeteredFree(void* block) {
    if (TheCount.running && block) {
        TheCount.Remove(_msize(block));
    }
    std::free(block);
}

HLOCAL MeteredLocalAlloc(UINT flags, SIZE_T size) {
    HLOCAL block = LocalAlloc(flags, size);
    void** slot = TheCount.FindLocal(nullptr);
    if (TheCount.running && block && slot) {
        *slot = block;
        TheCount.Add(LocalSize(block));
    }
    return block;
}

HLOCAL MeteredLocalFree(HLOCAL block) {
    void** slot = block ? TheCount.FindLocal(block) : nullptr;
    if (slot) {
        *slot = nullptr;
        TheCount.Remove(LocalSize(block));
    }
    return LocalFree(block);
}

HLOCAL MeteredLocalReAlloc(HLOCAL block, SIZE_T size, UINT flags) {
    void** slot = TheCount.FindLocal(block);
    const SIZE_T before = LocalSize(block);
    HLOCAL grown = LocalReAlloc(block, size, flags);
    if (slot && grown) {
        *slot = grown;
        TheCount.Add(LocalSize(grown)); // old and new block exist side by side while the content moves
        TheCount.Remove(before);
    }
    return grown;
}

std::unique_ptr<harness::ImportEntryPatch> Patch(HMODULE module, const char* dll, const char* name, void* replacement) {
    std::vector<void**> entries;
    if (module) {
        entries = harness::FindImports(module, dll, name);
    }
    return entries.empty() ? nullptr : std::make_unique<harness::ImportEntryPatch>(std::move(entries), replacement);
}

} // namespace

struct MemoryMeter::Patches {
    std::unique_ptr<harness::ImportEntryPatch> malloc, free, localAlloc, localReAlloc, localFree;
};

MemoryMeter::MemoryMeter() : m_patches(std::make_unique<Patches>()) {
    const HMODULE runtime = GetModuleHandleW(L"libstdc++-6.dll");
    const HMODULE library = harness::LibraryModule();
    m_patches->malloc = Patch(runtime, "msvcrt.dll", "malloc", reinterpret_cast<void*>(&MeteredMalloc));
    m_patches->free = Patch(runtime, "msvcrt.dll", "free", reinterpret_cast<void*>(&MeteredFree));
    m_patches->localAlloc = Patch(library, "kernel32.dll", "LocalAlloc", reinterpret_cast<void*>(&MeteredLocalAlloc));
    m_patches->localReAlloc =
        Patch(library, "kernel32.dll", "LocalReAlloc", reinterpret_cast<void*>(&MeteredLocalReAlloc));
    m_patches->localFree = Patch(library, "kernel32.dll", "LocalFree", reinterpret_cast<void*>(&MeteredLocalFree));
}

MemoryMeter::~MemoryMeter() = default;

bool MemoryMeter::Works() const {
    return m_patches->malloc && m_patches->free && m_patches->localAlloc && m_patches->localFree;
}

void MemoryMeter::Start() {
    TheCount = Count();
    TheCount.running = true;
}

void MemoryMeter::Stop() {
    TheCount.running = false;
}

std::size_t MemoryMeter::PeakBytes() const {
    return TheCount.peak;
}

std::size_t MemoryMeter::Allocations() const {
    return TheCount.allocations;
}

} // namespace bench
