// An open registry key under HKEY_LOCAL_MACHINE, and reading its values.
#ifndef CLUS_PLATFORM_REGISTRYKEY_H
#define CLUS_PLATFORM_REGISTRYKEY_H

#include "platform/Owner.h"

namespace clus {

// Closed at the end of its scope.
class RegistryKey {
public:
    // RegOpenKeyExW. Whether it could be opened, the object itself tells.
    RegistryKey(const wchar_t* path, REGSAM access);

    explicit operator bool() const {
        return static_cast<bool>(m_key);
    }

    // A REG_DWORD value. False, with `value` untouched, when it is missing or of another type.
    bool ReadDword(const wchar_t* name, DWORD& value) const;

    // A value's bytes as stored, whatever its type, into `data` of `cb` bytes. False when it is missing or longer.
    bool ReadBytes(const wchar_t* name, void* data, DWORD cb) const;

    // A text value as stored, into `text` of `cchText` characters, of which `cbLimit` bytes may be filled. Terminated
    // on success even when the stored value is not; empty on failure: value missing, longer, or no text.
    bool ReadText(const wchar_t* name, wchar_t* text, DWORD cchText, DWORD cbLimit) const;

private:
    RegKeyOwner m_key;
};

} // namespace clus

#endif
