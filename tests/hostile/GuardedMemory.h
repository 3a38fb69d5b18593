// Memory of which every block ends where a page begins that nobody may touch, and that stays shut for a while when it
// is freed.
#ifndef HOSTILE_GUARDEDMEMORY_H
#define HOSTILE_GUARDEDMEMORY_H

#include "ImportPatch.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace hostile {

// While one lives, what the thread allocates is not the library's: neither guarded nor counted.
class Outside {
public:
    Outside() {
        ++Depth();
    }
    ~Outside() {
        --Depth();
    }
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

    static int& Depth() {
        static int depth = 0; // of the one thread that works
        return depth;
    }
};

// Blocks of one alignment. What is written before a block, or behind it as far as the alignment leaves a gap, is found
// when it is freed; what is read or written further behind it, or later, faults.
class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t alignment);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    // Null when too many are held at once. The content is a pattern.
    void* Allocate(std::size_t size);
    void Free(void* block);
    bool Owns(const void* block) const;
    std::size_t SizeOf(const void* block) const;
    std::size_t Live() const {
        return m_live;
    }
    // Since the beginning.
    std::size_t Count() const {
        return m_count;
    }

private:
    struct Slot {
        std::size_t size = 0;
        bool used = false;
        bool committed = false;
    };
    class Shelf;
    struct Large {
        unsigned char* pages;
        std::size_t size;
    };

    unsigned char* Place(unsigned char* pages, std::size_t room, std::size_t size) const;
    void Check(const unsigned char* block, const unsigned char* pages, std::size_t room, std::size_t size) const;

    std::size_t m_alignment;
    std::vector<std::unique_ptr<Shelf>> m_shelves;
    std::map<const void*, Large> m_large;
    std::size_t m_live = 0;
    std::size_t m_count = 0;
};

// The local heap of clusutil.dll and what the C++ runtime allocates for it, guarded; each fails now and then.
class GuardedHeaps {
public:
    GuardedHeaps();
    ~GuardedHeaps();
    GuardedHeaps(const GuardedHeaps&) = delete;
    GuardedHeaps& operator=(const GuardedHeaps&) = delete;

    GuardedMemory local{1};
    GuardedMemory runtime{16};
    bool isFailing = false;

private:
    std::vector<std::unique_ptr<harness::ImportEntryPatch>> m_patches;
};

} // namespace hostile

#endif
