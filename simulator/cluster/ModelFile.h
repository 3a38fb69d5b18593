// A model in a file that several processes work on.
#ifndef CLUSSIM_MODELFILE_H
#define CLUSSIM_MODELFILE_H

#include "Model.h"

#include "common/FileLock.h"

#include <optional>

namespace clussim {

class ModelFile {
public:
    // The file to work on; empty for none. A relative path is that of now, wherever the process goes.
    void SetPath(const std::wstring& path);
    bool HasPath() const {
        return !m_path.empty();
    }

    // The model, read again when the file has changed; else this costs one look at its time and size, and not even that
    // within 20 microseconds of the last one. Null when there is no file or it is malformed: the reason is then told
    // once on standard error and to the debugger.
    Model* Current();

    // What Current has given last.
    const Model* Loaded() const {
        return m_model.get();
    }

    // Writes the current model: a new file takes the old one's place. To be called in a turn. The Win32 code; the model
    // is forgotten when it cannot be written.
    Code Write();

    // From now on the file is this process's alone: it is not looked at again once it has been read, and changes are
    // kept until WriteKept. Until SetPath names another one.
    void Keep() {
        m_isKept = true;
    }

    // Writes what has been changed since Keep. The Win32 code, as of Write.
    Code WriteKept();

    // Keeps other processes from reading and changing the file.
    common::FileLock& Lock() {
        return m_lock;
    }

private:
    // What tells one version of the file from another, once the file system's clock has gone on.
    struct Stamp {
        std::int64_t written = 0; // as in a FILETIME
        std::uint64_t size = 0;

        bool operator==(const Stamp& other) const {
            return written == other.written && size == other.size;
        }
    };

    bool HasChanged();
    std::optional<Stamp> StampOfFile() const;
    void Read();
    void Forget();
    Code Replace();
    void Tell(const std::string& message);

    std::wstring m_path;
    std::wstring m_givenPath;
    std::wstring m_systemPath; // as the system's own calls take it
    common::FileLock m_lock;
    std::optional<std::string> m_text; // what was read or written last
    std::unique_ptr<Model> m_model;    // that text's; null when it is malformed
    std::optional<Stamp> m_stamp;      // of the file with that text; none while a change might not show in it
    std::int64_t m_looked = 0;         // QueryPerformanceCounter when the file was compared with it last
    std::string m_told;
    bool m_isKept = false;
    bool m_isUnwritten = false; // of a kept file: the model is not what the file holds
};

// GetComputerNameW.
std::wstring ThisComputer();

} // namespace clussim

#endif
