// The files that a simulated VCS cluster consists of: the main.cf and those beside it.
#ifndef VCSSIM_CLUSTERFILES_H
#define VCSSIM_CLUSTERFILES_H

#include <string>
#include <vector>

namespace vcssim {

class ClusterFiles {
public:
    explicit ClusterFiles(const std::wstring& mainCf) : m_mainCf(mainCf) {
    }

    // The configuration as it was written last.
    const std::wstring& MainCf() const {
        return m_mainCf;
    }
    // The configuration that the cluster runs with, while it differs.
    std::wstring Live() const {
        return m_mainCf + L".live";
    }
    std::wstring State() const {
        return m_mainCf + L".state.json";
    }
    // The main.cf before the last one that was written.
    std::wstring Previous() const {
        return m_mainCf + L".previous";
    }
    // Stands for all of them: a common::FileLock on it keeps the tools from working.
    std::wstring Lock() const {
        return m_mainCf + L".lock";
    }

    // Which of the files holds the configuration that the cluster runs with.
    std::wstring Running() const;

    // With its separator at the end; empty for the current folder.
    std::wstring Folder() const;

    // Where the file of an include line is looked for.
    std::wstring Included(const std::string& name) const;

    // What a copy of the cluster needs and what exists: the main.cf, what differs from it, the state and the included
    // files. By their paths from Folder(), includes as they are written: most are plain names. Throws
    // common::FileError when the configuration cannot be read; a malformed one includes nothing.
    std::vector<std::wstring> Names() const;

private:
    std::wstring m_mainCf;
};

} // namespace vcssim

#endif
