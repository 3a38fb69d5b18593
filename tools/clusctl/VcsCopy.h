// A private copy of a simulated VCS cluster, on which events happen and commands run. Time is a simulated one.
#ifndef CLUSCTL_VCSCOPY_H
#define CLUSCTL_VCSCOPY_H

#include "Rehearsal.h"

#include "common/TemporaryFolder.h"

#include <ClusterFiles.h>

#include <memory>
#include <string>

class VcsCopy {
public:
    // Of the cluster with this main.cf. Throws Failure when it cannot be copied.
    explicit VcsCopy(const std::wstring& mainCf);

    const std::wstring& MainCf() const {
        return m_files.MainCf();
    }

    // Throw Failure when VCS does not know what the event names, or refuses it, or the cluster cannot be read.
    void Happen(const RehearsalEvent& event) const;

    // As StateRows (RehearsedVcs.h) has them.
    Json States() const;

    // What the simulator keeps of the cluster's state.
    Json State() const;

    // What the cluster runs with.
    std::string Configuration() const;

    void LetPass(std::int64_t seconds) const;

    // Lets end what goes on, for an hour at most. False when it goes on then.
    bool Settle() const;

    // Starts "clusctl COMMAND" on it. Its tools meet the faults, without any those of the environment.
    std::unique_ptr<ChildProgram> Start(const Words& command, const FaultTexts& faults, bool asJson,
                                        const std::wstring& rehearsed) const;

    // The runs of tools by the command that was started.
    std::vector<ClusterCall> Calls() const;
    // How many of them each of its faults has matched.
    std::vector<std::size_t> MatchedByFaults() const;

    // Starts "clusctl --json COMMAND", which only asks: no fault meets it, and its runs of tools do not count.
    std::unique_ptr<ChildProgram> Ask(const Words& command) const;

    // Writes it as a model, secrets masked. Throws Failure.
    void Save(const std::wstring& folder) const;

    // Lets time pass on the copy with this main.cf, on which this process works.
    static void LetPass(const std::wstring& mainCf, std::int64_t seconds);

private:
    std::string RunTool(const wchar_t* tool, const Words& words, const std::string& what) const;
    void Switch(const std::string& name, bool isOnline, const std::string& what) const;
    void Fail(const std::string& resource, const std::string& what) const;

    const std::wstring m_original; // folder
    std::unique_ptr<common::TemporaryFolder> m_folder;
    vcssim::ClusterFiles m_files;
};

#endif
