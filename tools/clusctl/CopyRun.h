// A command at work on a private copy of a failover cluster: a process of its own, in simulated time.
#ifndef CLUSCTL_COPYRUN_H
#define CLUSCTL_COPYRUN_H

#include "ClusterSimulator.h"
#include "Rehearsal.h"

#include "common/TemporaryFolder.h"

#include <memory>

struct CopyResult {
    RehearsedCommand command;
    ClusterEvents events;
    std::string model; // as the command leaves it
};

class CopyRun {
public:
    // Starts "clusctl COMMAND" on a copy of the model, with these faults. `rehearsed` is what the model is one of, as
    // people are told; `asJson`: with --json. Throws Failure when the copy cannot be made.
    CopyRun(const std::string& model, const Words& command, const FaultTexts& faults, const std::wstring& rehearsed,
            bool asJson);

    const ChildProgram& Program() const {
        return *m_program;
    }

    // Waits for its end.
    CopyResult Finish() const;

private:
    std::unique_ptr<common::TemporaryFolder> m_folder;
    std::unique_ptr<ChildProgram> m_program;
};

#endif
