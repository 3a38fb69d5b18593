// A temporary folder of this account's own, which is in use as long as it lives.
#ifndef CLUSCTL_PRIVATEFOLDER_H
#define CLUSCTL_PRIVATEFOLDER_H

#include "common/Handle.h"
#include "common/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

// Only this account, administrators and the system may use it, whatever the temporary folder allows. Folders of the
// same kind that ended runs have left are removed first, and those in which somebody had a file open at their end.
class PrivateFolder {
public:
    // `kind` begins its name. Throws Failure when it cannot be made or written to.
    explicit PrivateFolder(const std::wstring& kind);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::wstring& Path() const {
        return m_folder->Path();
    }
    std::wstring File(const std::wstring& name) const {
        return m_folder->File(name);
    }

    // The folders of this kind that are in no use, but for those of accounts that keep them to themselves.
    static std::vector<std::wstring> Left(const std::wstring& kind);

private:
    std::unique_ptr<common::TemporaryFolder> m_folder;
    common::Handle m_use; // held while the folder is in use; a folder with the file in it that nobody holds is left
};

#endif
