// A registry of one's own in place of HKEY_LOCAL_MACHINE: a key below HKEY_CURRENT_USER that goes with the object. Keys
// that crashed runs left behind are removed.
#ifndef HARNESS_ISOLATEDREGISTRY_H
#define HARNESS_ISOLATEDREGISTRY_H

#include <winsock2.h>
#include <windows.h>

#include <string>

namespace harness {

class IsolatedRegistry {
public:
    IsolatedRegistry();
    ~IsolatedRegistry();
    IsolatedRegistry(const IsolatedRegistry&) = delete;
    IsolatedRegistry& operator=(const IsolatedRegistry&) = delete;

    // What stands for HKEY_LOCAL_MACHINE.
    HKEY Root() const {
        return m_root;
    }

    // Write values below it; missing keys are created. `SetBytes` gives full control over type and size, terminator
    // included.
    void CreateKey(const std::wstring& path);
    void SetText(const std::wstring& path, const std::wstring& name, const std::wstring& value);
    void SetNumber(const std::wstring& path, const std::wstring& name, DWORD value);
    void SetBytes(const std::wstring& path, const std::wstring& name, DWORD type, const void* data, DWORD size);

private:
    std::wstring m_path;
    HKEY m_root;
};

} // namespace harness

#endif
