#include "HeapTap.h"

#include "ImportPatch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <set>

namespace harness {

namespace {

// A fixed table: it must not allocate while it tracks allocations.
class PointerTable {
public:
    void Clear() {
        std::memset(m_entries, 0, sizeof(m_entries));
        m_count = 0;
    }
    bool Add(void* pointer) {
        if (m_count >= Capacity / 2) {
            return false;
        }
        m_entries[Find(pointer)] = pointer;
        ++m_count;
        return true;
    }
    bool Remove(void* pointer) {
        std::size_t hole = Find(pointer);
        if (!m_entries[hole]) {
            return false;
        }
        m_entries[hole] = nullptr;
        --m_count;
        for (std::size_t next = (hole + 1) % Capacity; m_entries[next]; next = (next + 1) % Capacity) {
            void* moved = m_entries[next];
            m_entries[next] = nullptr;
            m_entries[Find(moved)] = moved;
        }
        return true;
    }
    std::size_t Count() const {
        return m_count;
    }

private:
    static const std::size_t Capacity = 1 << 16;

    std::size_t Find(void* pointer) const {
        std::size_t at = (reinterpret_cast<std::size_t>(pointer) >> 4) % Capacity;
        while (m_entries[at] && m_entries[at] != pointer) {
            at = (at + 1) % Capacity;
        }
        return at;
    }

    void* m_entries[Capacity] = {};
    std::size_t m_count = 0;
};

struct State {
    DWORD operationThread = 0; // 0: outside an operation
    std::set<void*> blocks;
    std::size_t badFrees = 0;
    std::size_t bytes = 0;
    std::size_t peakBytes = 0;

    unsigned count = 0;
    unsigned failAt = 0;
    FaultMode mode = FaultMode::Once;
    unsigned failLocalAlloc = 0;
    unsigned failLocalReAlloc = 0;
    const char* firedIn = nullptr;
};

State& TheState() {
    static State state;
    return state;
}

thread_local int harnessDepth = 0;

PointerTable live; // C++ blocks of the operation
// The runtime's own: this program's import of free may be patched as well.
void* (*realMalloc)(std::size_t) = &std::malloc;
void (*realFree)(void*) = &std::free;
HeapTap* theTap = nullptr;

bool Fire(const char* where) {
    State& state = TheState();
    if (!state.firedIn) {
        state.firedIn = where;
        OnFirstFault();
    }
    return true;
}

// Counts one allocation of the operation and says whether it has to fail.
bool CountAllocation(const char* where) {
    State& state = TheState();
    if (harnessDepth > 0 || state.operationThread != GetCurrentThreadId()) {
        return false;
    }
    ++state.count;
    const bool fails = state.failAt != 0 &&
                       (state.mode == FaultMode::Once ? state.count == state.failAt : state.count >= state.failAt);
    return fails && Fire(where);
}

// Counts down to the local allocation that has to fail.
bool CountDown(unsigned& n, const char* where) {
    return n != 0 && --n == 0 && Fire(where);
}

void* TappedMalloc(std::size_t size) {
    if (CountAllocation("operator new")) {
        return nullptr;
    }
    State& state = TheState();
    void* block = realMalloc(size);
    if (block && harnessDepth == 0 && state.operationThread == GetCurrentThreadId()) {
        if (live.Add(block)) {
            state.bytes += _msize(block);
            state.peakBytes = std::max(state.peakBytes, state.bytes);
        }
    }
    return block;
}

void TappedFree(void* block) {
    if (block && live.Count() != 0 && live.Remove(block)) {
        TheState().bytes -= _msize(block);
    }
    realFree(block);
}

HLOCAL TappedLocalAlloc(UINT flags, SIZE_T size) {
    if (CountAllocation("LocalAlloc") || CountDown(TheState().failLocalAlloc, "LocalAlloc")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    HLOCAL block = LocalAlloc(flags, size);
    HeapTap::AdoptBlock(block);
    return block;
}

HLOCAL TappedLocalReAlloc(HLOCAL old, SIZE_T size, UINT) {
    if (CountAllocation("LocalReAlloc") || CountDown(TheState().failLocalReAlloc, "LocalReAlloc")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const HarnessScope scope;
    const SIZE_T oldSize = LocalSize(old);
    HLOCAL block = LocalAlloc(LMEM_FIXED, size);
    std::memset(block, 0xcc, size);
    std::memcpy(block, old, oldSize < size ? oldSize : size);
    if (TheState().blocks.erase(old) == 0) {
        ++TheState().badFrees;
    }
    TheState().blocks.insert(block);
    std::memset(old, 0xdd, oldSize);
    LocalFree(old);
    return block;
}

HLOCAL TappedLocalFree(HLOCAL block) {
    const HarnessScope scope;
    if (!block) {
        return nullptr;
    }
    if (TheState().blocks.erase(block) == 0) {
        ++TheState().badFrees;
        return block;
    }
    std::memset(block, 0xdd, LocalSize(block));
    HLOCAL result = LocalFree(block);
    SetLastError(0xBADF4EE); // callers that promise to keep the last error must not show this one
    return result;
}

std::unique_ptr<ImportEntryPatch> PatchIfImported(HMODULE module, const char* dll, const char* name, void* function) {
    std::vector<void**> entries = FindImports(module, dll, name);
    return entries.empty() ? nullptr : std::make_unique<ImportEntryPatch>(std::move(entries), function);
}

} // namespace

HarnessScope::HarnessScope() {
    ++harnessDepth;
}

HarnessScope::~HarnessScope() {
    --harnessDepth;
}

struct HeapTap::Patches {
    std::unique_ptr<ImportEntryPatch> localAlloc;
    std::unique_ptr<ImportEntryPatch> localReAlloc;
    std::unique_ptr<ImportEntryPatch> localFree;
    std::unique_ptr<ImportEntryPatch> allocate;
    std::unique_ptr<ImportEntryPatch> release;
    std::unique_ptr<ImportEntryPatch> releaseByTests;
};

HeapTap::HeapTap() : m_patches(std::make_unique<Patches>()) {
    if (theTap) {
        throw std::logic_error("one HeapTap at a time");
    }
    TheState() = State();
    live.Clear();
    const HMODULE library = LibraryModule();
    m_patches->localAlloc =
        PatchIfImported(library, "kernel32.dll", "LocalAlloc", reinterpret_cast<void*>(&TappedLocalAlloc));
    m_patches->localReAlloc =
        PatchIfImported(library, "kernel32.dll", "LocalReAlloc", reinterpret_cast<void*>(&TappedLocalReAlloc));
    m_patches->localFree =
        PatchIfImported(library, "kernel32.dll", "LocalFree", reinterpret_cast<void*>(&TappedLocalFree));
    // What operator new and delete call. With mingw-w64 they are in the runtime's DLL, and all modules share them;
    // Visual C++ links them into each module, and a test releases what the library gave it.
    const HMODULE runtime = GetModuleHandleW(L"libstdc++-6.dll");
    const HMODULE allocating = runtime ? runtime : library;
    m_patches->allocate = PatchIfImported(allocating, AnyCRuntime, "malloc", reinterpret_cast<void*>(&TappedMalloc));
    m_patches->release = PatchIfImported(allocating, AnyCRuntime, "free", reinterpret_cast<void*>(&TappedFree));
    if (!m_patches->allocate || !m_patches->release) {
        throw std::runtime_error("the C++ runtime's allocations cannot be watched");
    }
    realMalloc = reinterpret_cast<void* (*)(std::size_t)>(m_patches->allocate->Original());
    realFree = reinterpret_cast<void (*)(void*)>(m_patches->release->Original());
    if (!runtime) {
        m_patches->releaseByTests =
            PatchIfImported(GetModuleHandleW(nullptr), AnyCRuntime, "free", reinterpret_cast<void*>(&TappedFree));
    }
    theTap = this;
}

HeapTap::~HeapTap() {
    EndOperation();
    m_patches.reset();
    theTap = nullptr;
}

std::size_t HeapTap::LiveBlocks() const {
    return TheState().blocks.size();
}

std::size_t HeapTap::BadFrees() const {
    return TheState().badFrees;
}

void HeapTap::AdoptBlock(void* block) {
    const HarnessScope scope;
    if (block && theTap) {
        TheState().blocks.insert(block);
    }
}

void HeapTap::StartOperation() {
    State& state = TheState();
    live.Clear();
    state.count = 0;
    state.bytes = state.peakBytes = 0;
    harnessDepth = 0;
    state.operationThread = GetCurrentThreadId();
}

void HeapTap::EndOperation() {
    TheState().operationThread = 0;
}

std::size_t HeapTap::LiveAllocations() const {
    return live.Count();
}

std::size_t HeapTap::PeakBytes() const {
    return TheState().peakBytes;
}

void HeapTap::FailAllocation(unsigned n, FaultMode mode) {
    State& state = TheState();
    state.failAt = n;
    state.mode = mode;
    state.firedIn = nullptr;
}

void HeapTap::FailLocalAlloc(unsigned n) {
    TheState().failLocalAlloc = n;
    TheState().firedIn = nullptr;
}

void HeapTap::FailLocalReAlloc(unsigned n) {
    TheState().failLocalReAlloc = n;
    TheState().firedIn = nullptr;
}

bool HeapTap::Fired() const {
    return TheState().firedIn != nullptr;
}

const char* HeapTap::FiredIn() const {
    return TheState().firedIn ? TheState().firedIn : "nothing";
}

#if defined(__GNUC__)
__attribute__((noinline))
#endif
void OnFirstFault() {
    static volatile int hits = 0;
    hits = hits + 1;
}

} // namespace harness
