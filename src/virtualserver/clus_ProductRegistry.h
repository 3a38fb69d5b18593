// Where the product keeps its registry settings, and reading them.
#ifndef CLUS_PRODUCTREGISTRY_H
#define CLUS_PRODUCTREGISTRY_H

#include "clus_CriticalSection.h"
#include "clus_Owner.h"

#include <string>

namespace clus {

// The compiled-in path of the product's key under HKEY_LOCAL_MACHINE.
extern const wchar_t DefaultProductRegistryKey[];

// The path in force: the compiled-in one, or what the settings file names. Valid after LoadProductRegistryKey.
extern std::wstring ProductRegistryKey;

// Reads the settings file beside the host executable, once per process whatever the outcome. Thread-safe; nothing is
// logged.
void LoadProductRegistryKey();

// The lock around the values that are read once per process.
extern CriticalSection SettingsLock;

// An open registry key under HKEY_LOCAL_MACHINE, closed at the end of its scope.
class RegistryKey {
public:
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
