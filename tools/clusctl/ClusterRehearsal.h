// A rehearsal on a private copy of a failover cluster, which the simulator of this process plays.
#ifndef CLUSCTL_CLUSTERREHEARSAL_H
#define CLUSCTL_CLUSTERREHEARSAL_H

#include "CopyRun.h"
#include "RehearsalEvents.h"
#include "Report.h"

class ClusterRehearsal {
public:
    // `rehearsed`: what the model is one of, as people are told. Throws Failure when the model contradicts itself.
    ClusterRehearsal(const Json& model, const std::wstring& rehearsed);

    // Throws Failure when there is nothing of the event's names, or the cluster refuses it.
    void Happen(const RehearsalEvent& event);

    // Runs the command, with --json if told to, and keeps what it did.
    const CopyResult& Run(const Words& command, const FaultTexts& faults, bool asJson);

    // Lets end what goes on, for an hour at most. False when it goes on then.
    bool Settle();

    // As it is now, and as it was at first.
    const Json& Model() const {
        return m_model;
    }
    const Json& Before() const {
        return m_before;
    }
    const std::wstring& Rehearsed() const {
        return m_rehearsed;
    }

    // What the cluster did: "at" (seconds), "kind", "name", "what", "why".
    const Json& Timeline() const {
        return m_timeline;
    }

    // The nodes with what they serve, before and by now, as the library sees it on each of them.
    Json Nodes(Report& report);

private:
    void TakeEvents(const ClusterEvents& events);
    void Tell(const char* kind, const std::string& name, const std::string& what);
    double SecondsAt(std::int64_t time) const;
    Json ServersOn(const Json& model, const std::string& node, Report& report) const;

    const std::wstring m_rehearsed;
    const std::string m_thisComputer;
    Json m_before;
    Json m_model;
    std::int64_t m_start = 0;
    CopyResult m_result;
    Json m_timeline = Json::array();
};

// What goes on in the model is let end, as ClusterRehearsal::Settle does it; nothing is told of it.
Json Settled(const Json& model);

#endif
