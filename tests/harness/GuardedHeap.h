// The local heap of clusutil.dll, each of its blocks ending where a page begins that nobody may touch.
#ifndef HARNESS_GUARDEDHEAP_H
#define HARNESS_GUARDEDHEAP_H

#include "ImportPatch.h"

#include <cstring>
#include <map>
#include <stdexcept>

namespace harness {

// Comes on top of a fixture's own watch over the local heap, and must go before the fixture's audit does its work. The
// blocks of other DLLs go past it, unless they come from Allocate.
class GuardedHeap {
public:
    ~GuardedHeap() {
        for (const auto& block : m_blocks) {
            VirtualFree(block.second.pages, 0, MEM_RELEASE);
        }
    }

    // A block as clusutil.dll would get it, of zeros.
    void* Allocate(SIZE_T size) {
        const SIZE_T page = 4096;
        const SIZE_T room = (size + page - 1) / page * page;
        auto* pages = static_cast<unsigned char*>(VirtualAlloc(nullptr, room + page, MEM_RESERVE, PAGE_NOACCESS));
        if (!pages || !VirtualAlloc(pages, room, MEM_COMMIT, PAGE_READWRITE)) {
            throw std::runtime_error("no memory for a guarded block");
        }
        void* const block = pages + room - size;
        m_blocks[block] = {pages, size};
        return block;
    }
    // Blocks that were not freed.
    std::size_t Live() const {
        return m_blocks.size();
    }

private:
    struct Block {
        unsigned char* pages;
        SIZE_T size;
    };
    struct Tag;

    std::vector<void**> Of(const char* function) const {
        return FindImports(LibraryModule(), "kernel32.dll", function);
    }
    HLOCAL Grow(HLOCAL old, SIZE_T size) {
        void* const block = Allocate(size);
        const SIZE_T kept = m_blocks.at(old).size;
        std::memcpy(block, old, kept < size ? kept : size);
        Free(old);
        return block;
    }
    bool Free(HLOCAL memory) {
        const auto block = m_blocks.find(memory);
        if (block == m_blocks.end()) {
            return false;
        }
        VirtualFree(block->second.pages, 0, MEM_RELEASE);
        m_blocks.erase(block);
        return true;
    }

    std::map<void*, Block> m_blocks;
    ImportPatch<HLOCAL(UINT, SIZE_T), Tag> m_alloc{Of("LocalAlloc"),
                                                   [this](UINT, SIZE_T size) { return Allocate(size); }};
    ImportPatch<HLOCAL(HLOCAL, SIZE_T, UINT), Tag> m_grow{
        Of("LocalReAlloc"), [this](HLOCAL old, SIZE_T size, UINT) { return Grow(old, size); }};
    ImportPatch<HLOCAL(HLOCAL), Tag> m_free{
        Of("LocalFree"), [this](HLOCAL memory) -> HLOCAL { return Free(memory) ? nullptr : m_free.Next(memory); }};
    ImportPatch<SIZE_T(HLOCAL), Tag> m_size{Of("LocalSize"), [this](HLOCAL memory) {
                                                const auto block = m_blocks.find(memory);
                                                return block == m_blocks.end() ? m_size.Next(memory)
                                                                               : block->second.size;
                                            }};
};

} // namespace harness

#endif
