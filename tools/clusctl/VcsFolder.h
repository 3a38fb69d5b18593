// The folder in which the VCS tools of a command run, and their output is captured: fresh, and this account's own.
#ifndef CLUSCTL_VCSFOLDER_H
#define CLUSCTL_VCSFOLDER_H

#include "PrivateFolder.h"
#include "StrayOutput.h"

#include <memory>
#include <string>
#include <vector>

// While it lives it is the current folder, and files that the environment names for the VCS simulator are named
// absolutely. So no tool is found where the caller happens to be, and nobody else can put anything in its way. What a
// tool prints whose output cannot be captured goes nowhere.
class VcsFolder {
public:
    // Throws Failure when it cannot be made or written.
    VcsFolder();
    ~VcsFolder();
    VcsFolder(const VcsFolder&) = delete;
    VcsFolder& operator=(const VcsFolder&) = delete;

    // The folder in which the caller started this program, whether or not one of these lives.
    static std::wstring CallersFolder();

    // Those that runs which were ended have left, as far as this account may look into them.
    static std::vector<std::wstring> LeftFolders();

private:
    struct Variable {
        const wchar_t* name;
        std::wstring given;
        std::wstring absolute;
    };

    void NameAbsolutely(const wchar_t* variable);

    std::wstring m_former;
    std::unique_ptr<PrivateFolder> m_folder;
    std::vector<Variable> m_variables;
    StrayOutput m_stray;
};

// Whether some more can be written to the current folder, as a Win32 code: after a tool's run, whether its output may
// have been cut for want of room.
unsigned long ProbeCurrentFolder();

#endif
