#include "GuardedMemory.h"

#include "Attack.h"

#include <cstdlib>
#include <cstring>

using harness::AnyCRuntime;
using harness::FindImports;
using harness::ImportEntryPatch;
using harness::LibraryModule;

namespace hostile {

namespace {

const std::size_t Page = 4096;
const unsigned char Fresh = 0xcc;
const unsigned char Margin = 0xfd;
const std::size_t MarginChecked = 64;

GuardedHeaps* heaps = nullptr;
void* (*realMalloc)(std::size_t) = nullptr;
void (*realFree)(void*) = nullptr;

void* GuardedMalloc(std::size_t size) {
    if (Outside::Depth() > 0) {
        return realMalloc(size);
    }
    if (heaps->isFailing && TheAttack().chance.OneIn(20000)) {
        return nullptr;
    }
    const Outside outside;
    void* const block = heaps->runtime.Allocate(size);
    return block ? block : realMalloc(size);
}

void GuardedFree(void* block) {
    if (!heaps->runtime.Owns(block)) {
        realFree(block);
        return;
    }
    const Outside outside;
    heaps->runtime.Free(block);
}

HLOCAL GuardedLocalAlloc(UINT flags, SIZE_T size) {
    const Outside outside;
    TheAttack().CountCall();
    void* const block = heaps->isFailing && TheAttack().chance.OneIn(300) ? nullptr : heaps->local.Allocate(size);
    if (!block) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    } else if ((flags & LMEM_ZEROINIT) != 0) {
        std::memset(block, 0, size);
    }
    return block;
}

HLOCAL GuardedLocalFree(HLOCAL block) {
    const Outside outside;
    if (block) {
        heaps->local.Free(block);
    }
    return nullptr;
}

HLOCAL GuardedLocalReAlloc(HLOCAL old, SIZE_T size, UINT flags) {
    const Outside outside;
    void* const block = GuardedLocalAlloc(flags, size);
    if (block) {
        const std::size_t kept = heaps->local.SizeOf(old);
        std::memcpy(block, old, kept < size ? kept : size);
        heaps->local.Free(old);
    }
    return block;
}

SIZE_T GuardedLocalSize(HLOCAL block) {
    return heaps->local.SizeOf(block);
}

} // namespace

// Slots of equally many pages, each with a page behind it that stays shut. They are used in turn, so that a freed one
// stays shut for as long as possible.
class GuardedMemory::Shelf {
public:
    Shelf(std::size_t room, std::size_t count)
        : m_room(room), m_slots(count), m_pages(static_cast<unsigned char*>(
                                            VirtualAlloc(nullptr, count * (room + Page), MEM_RESERVE, PAGE_NOACCESS))) {
        if (!m_pages) {
            throw std::runtime_error("no room for guarded memory");
        }
    }
    ~Shelf() {
        VirtualFree(m_pages, 0, MEM_RELEASE);
    }
    Shelf(const Shelf&) = delete;
    Shelf& operator=(const Shelf&) = delete;

    std::size_t Room() const {
        return m_room;
    }
    bool Owns(const void* address) const {
        const auto* at = static_cast<const unsigned char*>(address);
        return at >= m_pages && at < m_pages + m_slots.size() * (m_room + Page);
    }
    // The pages of a free slot, or null when none of the next few is free.
    unsigned char* Take(std::size_t size) {
        for (int tries = 0; tries < 64; ++tries) {
            m_next = (m_next + 1) % m_slots.size();
            Slot& slot = m_slots[m_next];
            if (slot.used) {
                continue;
            }
            unsigned char* const pages = Pages(m_next);
            DWORD old = 0;
            if (slot.committed ? !VirtualProtect(pages, m_room, PAGE_READWRITE, &old)
                               : !VirtualAlloc(pages, m_room, MEM_COMMIT, PAGE_READWRITE)) {
                return nullptr;
            }
            slot.used = slot.committed = true;
            slot.size = size;
            return pages;
        }
        return nullptr;
    }
    Slot& SlotOf(const void* address) {
        return m_slots[IndexOf(address)];
    }
    unsigned char* PagesOf(const void* address) {
        return Pages(IndexOf(address));
    }
    void GiveBack(const void* address) {
        DWORD old = 0;
        VirtualProtect(PagesOf(address), m_room, PAGE_NOACCESS, &old);
        SlotOf(address).used = false;
    }

private:
    std::size_t IndexOf(const void* address) const {
        return static_cast<std::size_t>(static_cast<const unsigned char*>(address) - m_pages) / (m_room + Page);
    }
    unsigned char* Pages(std::size_t index) const {
        return m_pages + index * (m_room + Page);
    }

    std::size_t m_room;
    std::vector<Slot> m_slots;
    unsigned char* m_pages;
    std::size_t m_next = 0;
};

GuardedMemory::GuardedMemory(std::size_t alignment) : m_alignment(alignment) {
    m_shelves.push_back(std::make_unique<Shelf>(Page, 8192));
    m_shelves.push_back(std::make_unique<Shelf>(4 * Page, 1024));
}

GuardedMemory::~GuardedMemory() {
    for (const auto& large : m_large) {
        VirtualFree(large.second.pages, 0, MEM_RELEASE);
    }
}

// Where a block begins in its pages, which are filled with patterns.
unsigned char* GuardedMemory::Place(unsigned char* pages, std::size_t room, std::size_t size) const {
    unsigned char* const block = pages + (room - size) / m_alignment * m_alignment;
    const std::size_t before = static_cast<std::size_t>(block - pages);
    const std::size_t margin = before < MarginChecked ? before : MarginChecked;
    std::memset(block - margin, Margin, margin);
    std::memset(block, Fresh, size);
    std::memset(block + size, Margin, static_cast<std::size_t>(pages + room - block) - size);
    return block;
}

void GuardedMemory::Check(const unsigned char* block, const unsigned char* pages, std::size_t room,
                          std::size_t size) const {
    if (block != pages + (room - size) / m_alignment * m_alignment) {
        TheAttack().Fail("memory is freed that is no block");
    }
    const std::size_t before = static_cast<std::size_t>(block - pages);
    const unsigned char* const first = block - (before < MarginChecked ? before : MarginChecked);
    for (const unsigned char* at = first; at < pages + room; ++at) {
        if (at == block) {
            at += size;
            if (at == pages + room) {
                break;
            }
        }
        if (*at != Margin) {
            TheAttack().Fail(at < block ? "memory is written before a block" : "memory is written behind a block");
        }
    }
}

void* GuardedMemory::Allocate(std::size_t size) {
    unsigned char* block = nullptr;
    for (const auto& shelf : m_shelves) {
        if (size <= shelf->Room()) {
            unsigned char* const pages = shelf->Take(size);
            if (!pages) {
                return nullptr;
            }
            block = Place(pages, shelf->Room(), size);
            break;
        }
    }
    if (!block) {
        const std::size_t room = (size + Page - 1) / Page * Page;
        auto* pages = static_cast<unsigned char*>(VirtualAlloc(nullptr, room + Page, MEM_RESERVE, PAGE_NOACCESS));
        if (!pages || !VirtualAlloc(pages, room, MEM_COMMIT, PAGE_READWRITE)) {
            return nullptr;
        }
        block = Place(pages, room, size);
        m_large[block] = {pages, size};
    }
    ++m_live;
    ++m_count;
    return block;
}

void GuardedMemory::Free(void* block) {
    const auto large = m_large.find(block);
    if (large != m_large.end()) {
        const std::size_t room = (large->second.size + Page - 1) / Page * Page;
        Check(static_cast<unsigned char*>(block), large->second.pages, room, large->second.size);
        VirtualFree(large->second.pages, 0, MEM_RELEASE);
        m_large.erase(large);
        --m_live;
        return;
    }
    for (const auto& shelf : m_shelves) {
        if (shelf->Owns(block)) {
            const Slot& slot = shelf->SlotOf(block);
            if (!slot.used) {
                TheAttack().Fail("memory is freed twice");
            }
            Check(static_cast<unsigned char*>(block), shelf->PagesOf(block), shelf->Room(), slot.size);
            shelf->GiveBack(block);
            --m_live;
            return;
        }
    }
    TheAttack().Fail("memory is freed that is no block");
}

bool GuardedMemory::Owns(const void* block) const {
    for (const auto& shelf : m_shelves) {
        if (shelf->Owns(block)) {
            return true;
        }
    }
    return m_large.count(block) != 0;
}

std::size_t GuardedMemory::SizeOf(const void* block) const {
    const auto large = m_large.find(block);
    if (large != m_large.end()) {
        return large->second.size;
    }
    for (const auto& shelf : m_shelves) {
        if (shelf->Owns(block) && shelf->SlotOf(block).used) {
            return shelf->SlotOf(block).size;
        }
    }
    TheAttack().Fail("the size of what is no block is asked for");
}

GuardedHeaps::GuardedHeaps() {
    heaps = this;
    const auto patch = [this](HMODULE module, const char* dll, const char* name, auto* function) {
        m_patches.push_back(
            std::make_unique<ImportEntryPatch>(FindImports(module, dll, name), reinterpret_cast<void*>(function)));
        return m_patches.back()->Original();
    };
    const HMODULE library = LibraryModule();
    patch(library, "kernel32.dll", "LocalAlloc", &GuardedLocalAlloc);
    patch(library, "kernel32.dll", "LocalReAlloc", &GuardedLocalReAlloc);
    patch(library, "kernel32.dll", "LocalFree", &GuardedLocalFree);
    patch(library, "kernel32.dll", "LocalSize", &GuardedLocalSize);
    // What operator new and delete call: of the runtime's DLL that all modules share, or in each module.
    const HMODULE shared = GetModuleHandleW(L"libstdc++-6.dll");
    const HMODULE allocating = shared ? shared : library;
    realMalloc = &std::malloc;
    realFree = &std::free;
    const Outside outside;
    realMalloc = reinterpret_cast<void* (*)(std::size_t)>(patch(allocating, AnyCRuntime, "malloc", &GuardedMalloc));
    realFree = reinterpret_cast<void (*)(void*)>(patch(allocating, AnyCRuntime, "free", &GuardedFree));
    if (!shared) {
        patch(GetModuleHandleW(nullptr), AnyCRuntime, "free", &GuardedFree);
    }
}

GuardedHeaps::~GuardedHeaps() {
    const Outside outside;
    while (!m_patches.empty()) {
        m_patches.pop_back();
    }
}

} // namespace hostile
