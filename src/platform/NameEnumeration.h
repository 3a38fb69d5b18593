// The loop that all enumerations of names share.
#ifndef CLUS_PLATFORM_NAMEENUMERATION_H
#define CLUS_PLATFORM_NAMEENUMERATION_H

#include "platform/LocalBuffer.h"

#include <list>
#include <string>

namespace clus {

enum class OnFailedEntry {
    GoOn,
    Stop
};

// Appends every name that `enumEntry(index, text, &cch)` gives, until ERROR_NO_MORE_ITEMS. The empty `buffer` (the
// caller's, so that it is freed after the enumerator is closed) starts with `cchStart` characters and grows to what
// ERROR_MORE_DATA reports, which excludes the terminator. Any other code, and a name that memory could not be found
// for, is passed to `logFailure`, makes the result false, and goes on with the next index or stops.
template <typename EnumEntry, typename LogFailure>
bool AppendNames(DWORD cchStart, OnFailedEntry onFailedEntry, EnumEntry enumEntry, LogFailure logFailure,
                 LocalBuffer& buffer, std::list<std::wstring>& names) {
    bool result = true;
    DWORD index = 0;
    buffer.EnsureCharacters(cchStart);
    DWORD cch = buffer.Characters();
    for (;;) {
        const DWORD code = enumEntry(index, buffer.Text(), &cch);
        if (code == ERROR_NO_MORE_ITEMS) {
            return result;
        }
        if (code == ERROR_MORE_DATA) {
            ++cch;
            if (buffer.EnsureCharacters(cch)) {
                continue;
            }
        }
        if (code == ERROR_SUCCESS && buffer.pData) {
            names.emplace_back(buffer.Text());
        } else {
            result = false;
            logFailure(code);
            if (onFailedEntry == OnFailedEntry::Stop) {
                return result;
            }
        }
        cch = buffer.Characters();
        ++index;
    }
}

} // namespace clus

#endif
