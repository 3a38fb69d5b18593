// A private copy of the VCS simulator's cluster, to rehearse a change on.
#ifndef CLUSCTL_VCSDRYRUN_H
#define CLUSCTL_VCSDRYRUN_H

#include <string>
#include <vector>

// While it lives, the tools that this process starts work on the copy; then the copy is deleted.
class VcsDryRun {
public:
    // Throws Failure when VCSSIM_MAIN_CF names no main.cf, or it cannot be copied.
    VcsDryRun();
    ~VcsDryRun();
    VcsDryRun(const VcsDryRun&) = delete;
    VcsDryRun& operator=(const VcsDryRun&) = delete;

    // Throws Failure when the tools that ran so far were not the simulator's: those of a real cluster do not know of
    // the copy.
    void RequireSimulator() const;

    // What changed in the configuration that the cluster runs with, secrets masked, as a unified difference.
    std::vector<std::string> Difference() const;

private:
    void CopyBeside(const std::wstring& file, const wchar_t* suffix) const;
    void CopyIncludes(const std::wstring& file) const;
    void DeleteCopy() const;

    std::wstring m_folder;
    std::wstring m_name; // of the main.cf
    std::string m_before;
};

#endif
