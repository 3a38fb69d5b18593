// --model FILE of a recording: its answers take the place of a cluster.
#ifndef CLUSCTL_REPLAY_H
#define CLUSCTL_REPLAY_H

#include "Report.h"
#include "Simulation.h"
#include "VcsToolFiles.h"

#include <functional>
#include <string>
#include <vector>

// Whether the text of a file is that of a recording.
bool IsRecording(const std::string& text);

// Whether a recording is one of VCS, as far as its beginning can be read.
bool IsRecordingOfVcs(const std::string& text);

// Takes a recording for the rest of this process. `file`: as the user names it. Throws WrongUsage when it is one of the
// other kind of cluster, Failure when it cannot be read.
void UseRecording(const std::wstring& file, const std::string& text, Answering asked);

// Whether a recording was taken; the rest below is to be asked only then.
bool IsReplaying();

// From now on the calls of this program and of the library are answered from it. After the libraries are loaded.
void BeginReplay();

// Whether anything has been asked of it.
bool HasReplayed();

// The product's settings when it was made; null when it was not installed.
Json ReplayedSettings();

// The VCS tools as they were found then.
std::vector<VcsToolFile> ReplayedTools();

// Whether a run of the VCS tool was recorded.
bool IsToolRecorded(const std::string& tool);

// Does the work. Throws Failure, with what there is to show, when something was asked that was not recorded, whatever
// the work made of that.
Report WorkReplayed(const std::function<Report()>& work);

#endif
