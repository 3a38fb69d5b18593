// A fresh folder for the temporary files of this process.
#ifndef COMMON_TEMPORARYFOLDER_H
#define COMMON_TEMPORARYFOLDER_H

#include <winsock2.h>
#include <windows.h>

#include <string>
#include <vector>

namespace common {

// The folder goes with the object, and with it the files and empty folders in it.
class TemporaryFolder {
public:
    // Its name begins with `name` and ends with numbers that no other folder has, of a stopped process included. Who
    // may use it the folder above tells, or the security descriptor. Throws FileError.
    explicit TemporaryFolder(const std::wstring& name, PSECURITY_DESCRIPTOR security = nullptr);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Without a backslash at the end.
    const std::wstring& Path() const {
        return m_path;
    }
    std::wstring File(const std::wstring& name) const {
        return m_path + L"\\" + name;
    }
    // The names of all files and folders in it, sorted.
    std::vector<std::wstring> Entries() const;

    // The file of this name is removed last, and only when all else is gone.
    void RemoveLast(const std::wstring& name) {
        m_last = name;
    }

    // As at the end; false when something in it cannot be removed, with the last-error value.
    bool Remove() const;

private:
    std::wstring m_path;
    std::wstring m_last;
};

// Removes a folder, and the files and empty folders in it, the file `last` only when all else is gone; false when
// something in it cannot be removed, with the last-error value.
bool RemoveFolder(const std::wstring& path, const std::wstring& last = std::wstring());

} // namespace common

#endif
