// Growable local-heap buffer for cluster calls that return data of unknown length.
#ifndef CLUS_PLATFORM_LOCALBUFFER_H
#define CLUS_PLATFORM_LOCALBUFFER_H

#include "platform/Owner.h"

namespace clus {

// Bytes of the longest answer that is asked for, which is more than a cluster keeps of anything. A longer one is a
// count gone wrong, and is treated like one that memory could not be found for.
const DWORD LongestAnswer = 16 * 1024 * 1024;

struct LocalBuffer {
    void* pData = nullptr;
    DWORD cbSize = 0; // bytes

    LocalBuffer() = default;
    ~LocalBuffer() {
        const LastErrorKeeper keeper;
        Release();
    }
    LocalBuffer(const LocalBuffer&) = delete;
    LocalBuffer& operator=(const LocalBuffer&) = delete;

    // Makes room for `cbNeeded` bytes, keeping the content; it never shrinks. The first block is zero-filled, what is
    // added later is not. False for 0 and when a block cannot grow (the old one stays). A failing first allocation
    // still answers true and records the size: users look at the pointer.
    bool Ensure(DWORD cbNeeded) {
        if (cbNeeded == 0) {
            return false;
        }
        if (!pData) {
            pData = LocalAlloc(LPTR, cbNeeded);
            cbSize = cbNeeded;
            return true;
        }
        if (static_cast<LONG>(cbNeeded) > static_cast<LONG>(cbSize)) {
            void* grown = LocalReAlloc(pData, cbNeeded, LMEM_MOVEABLE);
            if (!grown) {
                return false;
            }
            pData = grown;
            cbSize = cbNeeded;
        }
        return true;
    }

    // The same in characters, for counts that a service reports: true only when the block is there and holds them, and
    // false for more than the longest answer.
    bool EnsureCharacters(DWORD cch) {
        return cch <= LongestAnswer / sizeof(wchar_t) && Ensure(cch * static_cast<DWORD>(sizeof(wchar_t))) && pData;
    }

    void Release() {
        LocalFree(pData);
        pData = nullptr;
        cbSize = 0;
    }

    wchar_t* Text() const {
        return static_cast<wchar_t*>(pData);
    }
    // The text that a service wrote, which ends within the block even when it was left unterminated.
    const wchar_t* TerminatedText() {
        if (Characters() > 0) {
            Text()[Characters() - 1] = L'\0';
        }
        return Text();
    }
    // Characters and bytes that may be written.
    DWORD Characters() const {
        return Bytes() / static_cast<DWORD>(sizeof(wchar_t));
    }
    DWORD Bytes() const {
        return pData ? cbSize : 0;
    }
};

} // namespace clus

#endif
