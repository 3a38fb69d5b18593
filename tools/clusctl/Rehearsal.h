// A rehearsal on a private copy of a cluster, of either kind.
#ifndef CLUSCTL_REHEARSAL_H
#define CLUSCTL_REHEARSAL_H

#include "ChildProgram.h"
#include "ClusterCalls.h"
#include "RehearsalEvents.h"
#include "RehearsalSweep.h"
#include "Report.h"

#include <memory>

// Faults in the simulators' language (docs/faults.md).
typedef std::vector<std::string> FaultTexts;

struct RehearsedCommand {
    ProgramResult program;
    std::vector<ClusterCall> calls;   // of the cluster, or runs of its tools
    std::vector<std::size_t> matched; // how many calls each of the faults has matched
};

class Rehearsal {
public:
    virtual ~Rehearsal() = default;

    // Notes which servers the nodes serve at first, for TellCluster. To be called before anything happens.
    virtual void NoteServers() = 0;

    // Throws Failure when there is nothing of the event's names, or the cluster refuses it.
    virtual void Happen(const RehearsalEvent& event) = 0;

    // Runs the command, with --json if told to. Once only.
    virtual RehearsedCommand Run(const Words& command, const FaultTexts& faults, bool asJson) = 0;

    // Starts the command again where Run began it, with one fault. To be compared with how the cluster was then, and
    // how it is now.
    virtual std::unique_ptr<SweptRehearsal> RunAgain(const Words& command, const std::string& fault) = 0;

    // Lets end what goes on, for an hour at most. False when it goes on then.
    virtual bool Settle() = 0;

    // What the cluster did: "at" (seconds), "kind", "name", "what", "why".
    const Json& Timeline() const {
        return m_timeline;
    }

    // Adds the nodes and servers, as noted and by now, and what stays down.
    virtual void TellCluster(Report& report) = 0;

    // Adds what changed of the configuration.
    virtual void TellDifference(Report& report) const = 0;

    // Writes the cluster as it is now as a model. Throws Failure.
    virtual void Save(const std::wstring& path) const = 0;

    // The fault with what a call fails with when it does not say. Throws WrongUsage when it is none.
    virtual std::string CompletedFault(const std::string& fault) const = 0;

    // What the calls are, as people are told: "Calls of the cluster:".
    virtual const char* TitleOfCalls() const = 0;

protected:
    Json m_timeline = Json::array();
};

#endif
