// The systems of VCS: in which state they are, and whether what is said to be online on one can be.
#ifndef CLUSCTL_VCSSYSTEMS_H
#define CLUSCTL_VCSSYSTEMS_H

#include "Json.h"
#include "LogCapture.h"
#include "Report.h"
#include "VcsStates.h"
#include "VcsValues.h"

#include "picture/ClusterPicture.h"

#include <optional>
#include <string>
#include <vector>

// The states of these systems. Throws Failure when VCS does not tell.
std::vector<picture::Node> ReadVcsSystems(const LogCapture& log, const VcsNames& names);

// Of a system that does not run: what VCS shows of it is from before.
std::string SaidToBeOn(const std::string& group, const std::string& state, const std::string& system);

// Whether the systems run that groups are said to be on. VCS is asked once, when the first of them is on one.
class RunningSystems {
public:
    RunningSystems(const LogCapture& log, Report& report) : m_log(log), m_report(report) {
    }

    // "running", "not running" or "unknown"; null of a group that is on no system. Warns of a system that does not run:
    // what VCS shows of it is from before. When it cannot be read the report is incomplete.
    Json StateUnder(const std::wstring& group, const GroupState& state);

private:
    const LogCapture& m_log;
    Report& m_report;
    bool m_isAsked = false;
    std::optional<VcsNames> m_running; // without a value: VCS does not tell
};

#endif
