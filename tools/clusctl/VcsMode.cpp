#include "VcsMode.h"

#include "Interruption.h"
#include "VcsTools.h"

#include <clus_VeritasCluster.h>

namespace {

const char WritableAlready[] = "10364"; // numbers of VCS messages
const char ReadOnlyAlready[] = "10369";

} // namespace

OpenConfiguration::OpenConfiguration(const LogCapture& log, bool isWanted) : m_log(log), m_isWanted(isWanted) {
    if (m_isWanted) {
        try {
            CVeritasCluster().SwitchToReadWriteMode();
        } catch (const Interrupted&) {
            Close();
            throw;
        }
    }
}

OpenConfiguration::~OpenConfiguration() {
    if (m_isWanted) {
        Close();
    }
}

void OpenConfiguration::Close() const {
    const Interruption::Shield shield;
    try {
        const ToolWatch watch(m_log);
        CVeritasCluster().SwitchToReadOnlyMode();
        const std::vector<ToolRun> runs = watch.Runs();
        if (!runs.empty() && runs.back().isInterrupted) { // and may have ended before its work was done
            CVeritasCluster().SwitchToReadOnlyMode();
        }
    } catch (...) {
        // Out of memory, perhaps while another exception is on its way: that one matters.
    }
}

bool OpenConfiguration::IsWritable(const LogCapture& log) {
    const ToolWatch watch(log);
    CVeritasCluster().SwitchToReadWriteMode();
    return watch.HasMessage(WritableAlready);
}

bool OpenConfiguration::IsReadOnly(const LogCapture& log) {
    const ToolWatch watch(log);
    CVeritasCluster().SwitchToReadOnlyMode();
    return watch.HasMessage(ReadOnlyAlready);
}

void OpenConfiguration::RequireClosed(const LogCapture& log, bool isWanted, const std::string& what) {
    if (isWanted && !IsReadOnly(log)) {
        throw Failure(Errors::Refused, what + ": the change is made, but the configuration was not read-only again")
            .Hint("'clusctl vcs mode ro' writes it to disk and closes it.");
    }
}

void OpenConfiguration::AddOption(CLI::App& command, bool& isWanted) {
    command.add_flag("--rw", isWanted,
                     "Open the configuration before, write it to disk and make it read-only after, also when it was "
                     "open before. Without it the mode is not touched: the configuration must be open (`vcs mode rw`)");
}
