// The handles of this process.
#ifndef HARNESS_OPENHANDLES_H
#define HARNESS_OPENHANDLES_H

#include <windows.h>

namespace harness {

// How many are open, each value looked at: Wine's GetProcessHandleCount counts none.
inline int CountOpenHandles() {
    int count = 0;
    for (ULONG_PTR value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}

} // namespace harness

#endif
