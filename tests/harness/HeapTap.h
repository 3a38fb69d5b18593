// Watches the memory of clusutil.dll: its blocks on the local heap, and what the C++ runtime allocates for it. Can make
// the n-th allocation fail.
#ifndef HARNESS_HEAPTAP_H
#define HARNESS_HEAPTAP_H

#include <cstddef>
#include <memory>

namespace harness {

enum class FaultMode {
    Once,
    FromThenOn
};

// While one lives, allocations belong to the harness: neither counted nor made to fail.
class HarnessScope {
public:
    HarnessScope();
    ~HarnessScope();
    HarnessScope(const HarnessScope&) = delete;
    HarnessScope& operator=(const HarnessScope&) = delete;
};

// One at a time. A LocalReAlloc always moves the block and fills what it adds with 0xcc, so that use of a stale pointer
// or of unwritten memory is found.
class HeapTap {
public:
    HeapTap();
    ~HeapTap();
    HeapTap(const HeapTap&) = delete;
    HeapTap& operator=(const HeapTap&) = delete;

    // Local blocks that clusutil.dll holds, and frees of blocks that it did not hold.
    std::size_t LiveBlocks() const;
    std::size_t BadFrees() const;
    // For blocks that another DLL allocates and clusutil.dll has to free.
    static void AdoptBlock(void* block);

    // C++ allocations of this thread are tracked between the two calls; those not freed yet are `LiveAllocations`.
    void StartOperation();
    void EndOperation();
    std::size_t LiveAllocations() const;
    // The most bytes of C++ memory that the operation held at a time, of no more than some 30,000 blocks.
    std::size_t PeakBytes() const;

    // Makes the n-th allocation (1, 2, ...) of an operation fail: a local block, or one of the C++ runtime. 0: none.
    void FailAllocation(unsigned n, FaultMode mode);
    // The next local allocations alone: `LocalAlloc` (or LocalReAlloc) number n from now on fails once.
    void FailLocalAlloc(unsigned n);
    void FailLocalReAlloc(unsigned n);
    bool Fired() const;
    const char* FiredIn() const;

private:
    struct Patches;
    std::unique_ptr<Patches> m_patches;
};

// Called when an injected fault fires for the first time: a place for a breakpoint.
void OnFirstFault();

} // namespace harness

#endif
