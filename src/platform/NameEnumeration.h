// The loop that all enumerations of names share, and the names of a cluster's objects.
#ifndef CLUS_PLATFORM_NAMEENUMERATION_H
#define CLUS_PLATFORM_NAMEENUMERATION_H

#include "core/NameStore.h"
#include "platform/ClusterApi.h"
#include "platform/LocalBuffer.h"

#include <list>
#include <string>

namespace clus {

enum class OnFailedEntry {
    GoOn,
    Stop
};

// Ends an enumeration that gets nowhere: an enumerator may fail at whatever index it is asked for.
class EnumerationWatch {
public:
    // An entry was read.
    void Progress() {
        m_failures = 0;
    }
    // An answer without an entry. False, and logged, when it is the last of too many in a row.
    bool MayGoOn(DWORD code);
    // ERROR_MORE_DATA for an entry of `cch` characters without terminator, for which there was room for `cchGiven`.
    // False, and logged, when it has room there: the answer would be the same again and again.
    bool MayGrow(DWORD cch, DWORD cchGiven) const;

private:
    unsigned m_failures = 0;
};

// Appends every name that `enumEntry(index, text, &cch)` gives, until ERROR_NO_MORE_ITEMS. The empty `buffer` (the
// caller's, so that it is freed after the enumerator is closed) starts with `cchStart` characters and grows to what
// ERROR_MORE_DATA reports, which excludes the terminator. Any other code, and a name that memory could not be found
// for, is passed to `logFailure`, makes the result false, and goes on with the next index or stops. So does the end of
// an enumeration that gets nowhere.
template <typename EnumEntry, typename LogFailure, typename Names>
bool AppendNames(DWORD cchStart, OnFailedEntry onFailedEntry, EnumEntry enumEntry, LogFailure logFailure,
                 LocalBuffer& buffer, Names& names) {
    bool result = true;
    EnumerationWatch watch;
    DWORD index = 0;
    buffer.EnsureCharacters(cchStart);
    DWORD cch = buffer.Characters();
    for (;;) {
        const DWORD cchGiven = cch;
        const DWORD code = enumEntry(index, buffer.Text(), &cch);
        if (code == ERROR_NO_MORE_ITEMS) {
            return result;
        }
        bool grows = false;
        if (code == ERROR_MORE_DATA) {
            if (!watch.MayGrow(cch, cchGiven)) {
                return false;
            }
            ++cch;
            grows = buffer.EnsureCharacters(cch);
        }
        if (code == ERROR_SUCCESS && buffer.pData) {
            names.emplace_back(buffer.TerminatedText());
            watch.Progress();
        } else {
            if (!grows) {
                result = false;
                logFailure(code);
                if (onFailedEntry == OnFailedEntry::Stop) {
                    return result;
                }
            }
            if (!watch.MayGoOn(code)) {
                return false;
            }
        }
        if (!grows) {
            cch = buffer.Characters();
            ++index;
        }
    }
}

// Appends the names of all objects of the kinds in a CLUSTER_ENUM mask, in the cluster's order. False, and logged, when
// the cluster cannot be enumerated, or single entries cannot be read; the others are in the list then.
bool AppendClusterNames(HCLUSTER cluster, DWORD mask, std::list<std::wstring>& names);
bool AppendClusterNames(HCLUSTER cluster, DWORD mask, NameStore& names);

} // namespace clus

#endif
