// Runs that were ended before they were done: each run that changes something leaves a mark while it lasts.
#ifndef CLUSCTL_RUNMARKER_H
#define CLUSCTL_RUNMARKER_H

#include <winsock2.h>
#include <windows.h>

#include <string>
#include <vector>

// A file in the folder "clusctl" of the computer's application data, open while the run lasts: who can open it for
// writing knows that the run is gone.
class RunMarker {
public:
    // `command`: what the run is about, "vcs product create EVS1 --rw"; `model`: the whole path of the simulated
    // cluster that it changes, empty of the one of this computer. A run that cannot be marked goes on all the same.
    RunMarker(const std::string& command, const std::wstring& model);
    ~RunMarker();
    RunMarker(const RunMarker&) = delete;
    RunMarker& operator=(const RunMarker&) = delete;

private:
    std::wstring m_path;
    HANDLE m_file;
};

// Finds the marks of runs that were ended.
class KilledRuns {
public:
    // All of them.
    KilledRuns();

    // Those that changed this cluster, as of RunMarker, and those of releases that did not note which.
    explicit KilledRuns(const std::wstring& model);

    // One sentence for each, in the order in which they began: what it was doing, and what it left behind.
    const std::vector<std::string>& Sentences() const;

    // Not told again.
    void Forget() const;

private:
    explicit KilledRuns(const std::wstring* model);

    std::vector<std::wstring> m_paths;
    std::vector<std::string> m_sentences;
};

#endif
