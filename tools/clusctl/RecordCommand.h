// clusctl record: runs another command, and writes down what it asked of the cluster and was answered.
#ifndef CLUSCTL_RECORDCOMMAND_H
#define CLUSCTL_RECORDCOMMAND_H

#include "Simulation.h"
#include "Stream.h"
#include "VcsToolFiles.h"

#include <memory>
#include <string>
#include <vector>

class CommandLine;

struct RecordOptions {
    std::wstring file; // empty: nothing is recorded
    bool allowsChanges = false;
    bool isAnonymised = false;
    std::vector<std::string> command;
};

void AddRecordCommand(CommandLine& commandLine, RecordOptions& options);

// Records this process while it lives.
class RecordedWork {
public:
    // The libraries are loaded, and the settings of a model in force. Throws Failure when the file cannot be made: one
    // that is there is never replaced.
    RecordedWork(const RecordOptions& options, Answering asked, const std::string& commandName,
                 const std::vector<VcsToolFile>& tools);
    ~RecordedWork();
    RecordedWork(const RecordedWork&) = delete;
    RecordedWork& operator=(const RecordedWork&) = delete;

    // Ends the recording, and tells on `errors` how it went. The exit code of the whole: that of the work, unless it
    // was done and the recording is not complete.
    int Finish(int exitCode, const Stream& errors);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

#endif
