#include "VcsMode.h"

#include "Interruption.h"
#include <clus_VeritasCluster.h>

namespace {

const char WritableAlready[] = "10364"; // numbers of VCS messages
const char ReadOnlyAlready[] = "10369";
const char StillOpen[] = "the configuration is still open for writing and not saved";
const char HowToClose[] = "'clusctl vcs mode ro' writes it to disk and closes it.";

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

Report OpenConfiguration::Tell(const LogCapture& log, const ToolWatch& watch, bool isWanted, const std::string& done,
                               const std::function<Report()>& tell) {
    Report report;
    try {
        report = tell();
    } catch (Failure& failure) {
        if (watch.HasOpened() && !watch.ClosingProblems().empty()) {
            const std::string hint = failure.Hint().empty() ? std::string() : failure.Hint() + " ";
            failure.Hint(hint + "Besides, " + StillOpen + ": " + HowToClose);
        }
        throw;
    }
    if (!isWanted) {
        return report;
    }
    const ToolWatch again(log);
    if (IsReadOnly(log) || IsReadOnly(log)) { // the first may have closed it, when the command itself had failed to
        return report;
    }
    const std::string what = done + ", but " + StillOpen;
    const std::vector<ToolProblem> problems = again.ClosingProblems();
    Failure failure = problems.empty() ? Failure(Errors::Refused, what + ": VCS does not show it read-only")
                                       : ToolFailure(what, problems);
    throw FailureWithReport(failure.Hint(HowToClose), report);
}

void OpenConfiguration::AddOption(CLI::App& command, bool& isWanted) {
    command.add_flag("--rw", isWanted,
                     "Open the configuration before, write it to disk and make it read-only after, also when it was "
                     "open before. Without it the mode is not touched: the configuration must be open (`vcs mode rw`)");
}
