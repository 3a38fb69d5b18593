// A rehearsal on a private copy of a VCS cluster, which the VCS simulator's tools play.
#ifndef CLUSCTL_VCSREHEARSAL_H
#define CLUSCTL_VCSREHEARSAL_H

#include "VcsCopy.h"

class VcsRehearsal : public Rehearsal {
public:
    // `rehearsed`: what the cluster with this main.cf is one of, as people are told. Throws Failure when it contradicts
    // itself.
    VcsRehearsal(const std::wstring& mainCf, const std::wstring& rehearsed);

    void NoteServers() override {
    } // they are asked for in the end, of the copy that is kept
    void Happen(const RehearsalEvent& event) override;
    RehearsedCommand Run(const Words& command, const FaultTexts& faults, bool asJson) override;
    std::unique_ptr<SweptRehearsal> RunAgain(const Words& command, const std::string& fault) override;
    bool Settle() override;
    void TellCluster(Report& report) override;
    void TellDifference(Report& report) const override;
    const char* TitleOfCalls() const override {
        return "Runs of VCS tools:";
    }
    void Save(const std::wstring& path) const override;
    std::string CompletedFault(const std::string& fault) const override;

private:
    void Tell(const char* kind, const std::string& name, const std::string& what);
    void TakeEvents();

    const std::wstring m_rehearsed;
    std::unique_ptr<VcsCopy> m_first;         // as it was at first
    std::unique_ptr<VcsCopy> m_beforeCommand; // where Run began
    std::unique_ptr<VcsCopy> m_copy;          // by now
    Json m_statesBefore = Json::array();
    std::int64_t m_start = 0; // seconds, of the copy's clock
    std::size_t m_taken = 0;  // of the copy's own time line
};

#endif
