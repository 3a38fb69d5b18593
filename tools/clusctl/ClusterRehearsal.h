// A rehearsal on a private copy of a failover cluster, which the simulator of this process plays.
#ifndef CLUSCTL_CLUSTERREHEARSAL_H
#define CLUSCTL_CLUSTERREHEARSAL_H

#include "ClusterSimulator.h"
#include "Rehearsal.h"
#include "RehearsedModel.h"

#include <cstdint>

// The ends that are told apart, as they are compared.
struct SweptEnds {
    Json asBefore;
    Json asWanted;
};

class ClusterRehearsal : public Rehearsal {
public:
    // `rehearsed`: what the model is one of, as people are told. Throws Failure when the model contradicts itself.
    ClusterRehearsal(Json model, const std::wstring& rehearsed);

    void NoteServers() override;
    void Happen(const RehearsalEvent& event) override;
    RehearsedCommand Run(const Words& command, const FaultTexts& faults, bool asJson) override;
    std::unique_ptr<SweptRehearsal> RunAgain(const Words& command, const std::string& fault) override;
    bool Settle() override;
    const char* TitleOfCalls() const override {
        return "Calls of the cluster:";
    }
    void TellCluster(Report& report) override;
    void TellDifference(Report& report) const override;
    void Save(const std::wstring& path) const override;
    std::string CompletedFault(const std::string& fault) const override;

private:
    void TakeEvents(const ClusterEvents& events);
    void Tell(const char* kind, const std::string& name, const std::string& what);
    double SecondsAt(std::int64_t time) const;
    void Load();
    Json Nodes(Report& report);
    Json ServersOn(const WrittenModel& model, const std::string& node, Report& report) const;

    const std::wstring m_rehearsed;
    const std::string m_thisComputer;
    WrittenModelPointer m_before;          // at first
    WrittenModelPointer m_beforeCommand;   // where Run began
    WrittenModelPointer m_model;           // by now
    Json m_serversBefore = Json::object(); // by node
    bool m_isLoaded = true;                // m_model, by the simulator
    SweptEnds m_ends;
    std::int64_t m_start = 0;
};

#endif
