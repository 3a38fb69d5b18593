// A model in a file that several processes work on.
#ifndef CLUSSIM_MODELFILE_H
#define CLUSSIM_MODELFILE_H

#include "Model.h"

#include "common/FileLock.h"

namespace clussim {

class ModelFile {
public:
    // The file to work on; empty for none.
    void SetPath(const std::wstring& path);
    bool HasPath() const {
        return !m_path.empty();
    }

    // The model, read again when the file has changed. Null when there is no file or it is malformed: the reason is
    // then told once on standard error and to the debugger.
    Model* Current();

    // Writes the current model: a new file takes the old one's place. To be called in a turn. The Win32 code.
    Code Write();

    // Forgets what was read, so that Current reads again.
    void Forget();

    // Keeps other processes from reading and changing the file.
    common::FileLock& Lock() {
        return m_lock;
    }

private:
    // What tells one version of the file from another.
    struct Stamp {
        DWORD indexHigh = 0;
        DWORD indexLow = 0;
        FILETIME written = {};
        DWORD size = 0;

        bool operator==(const Stamp& other) const;
    };

    Stamp StampOf(const common::Handle& file) const;
    void Tell(const std::string& message);

    std::wstring m_path;
    common::FileLock m_lock;
    std::unique_ptr<Model> m_model;
    Stamp m_stamp;
    std::string m_told;
};

// GetComputerNameW.
std::wstring ThisComputer();

} // namespace clussim

#endif
