// A fresh temporary folder, as the current directory if wanted: the former one comes back with the object's end, and
// the folder goes with all it holds.
#ifndef HARNESS_PRIVATEFOLDER_H
#define HARNESS_PRIVATEFOLDER_H

#include <string>
#include <vector>

namespace harness {

class PrivateFolder {
public:
    enum class Use {
        Folder,
        CurrentDirectory
    };

    explicit PrivateFolder(Use use);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    // Without a backslash at the end.
    const std::wstring& Path() const {
        return m_path;
    }
    std::wstring File(const std::wstring& name) const {
        return m_path + L"\\" + name;
    }
    // The names of all files and folders in it.
    std::vector<std::wstring> Entries() const;

private:
    std::wstring m_path;
    std::wstring m_formerDirectory;
};

} // namespace harness

#endif
