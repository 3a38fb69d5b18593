// The files that the system starts for the names of the VCS tools, and who may change them.
#ifndef CLUSCTL_VCSTOOLFILES_H
#define CLUSCTL_VCSTOOLFILES_H

#include <string>
#include <vector>

struct VcsToolFile {
    std::wstring tool; // "hares"
    std::wstring path; // empty: there is none
};

// The file that is started for a bare name: beside clusctl.exe, then in the system's folders, then along PATH. The
// current folder, and what PATH names relative to it, do not count: clusctl starts its tools from an empty folder.
// Empty when there is none.
std::wstring FindVcsTool(const std::wstring& tool);

// All that a command may run: those of the library, and haclus, which clusctl alone asks.
std::vector<VcsToolFile> FindVcsTools();

// Throws Failure when a tool, a file beside it, or a folder that is searched before its own can be changed by anybody
// but this account, administrators and the system itself: who can do that runs what he likes with the rights of this
// account. Folders that do not exist are passed over.
void RequireTrustedTools(const std::vector<VcsToolFile>& tools);

// The SID of the account that this runs under, as text; empty when it cannot be told.
std::wstring ThisAccount();

// Whether a folder's owner is this account, administrators or the system.
bool HasTrustedOwner(const std::wstring& path);

#endif
