// --each-call-fails: a command is rehearsed once for each call it makes, with that one failing.
#ifndef CLUSCTL_REHEARSALSWEEP_H
#define CLUSCTL_REHEARSALSWEEP_H

#include "ChildProgram.h"
#include "ClusterCalls.h"
#include "Report.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class LogCapture;

// A call, or the run of a tool, that is to fail.
struct SweepStep {
    std::size_t number = 0; // of the call in the run without a failure, from 1
    std::string call;       // as people are told
    std::string fault;      // in the simulators' language
};

// How the cluster ended.
enum class Ending {
    InBetween,
    AsBefore,
    AsWanted
};

struct SweepRun {
    unsigned long exitCode = 0;
    std::string message; // of the failure; empty when there was none
    Ending ending = Ending::InBetween;
};

// Of a command that printed JSON, and how it left the cluster.
SweepRun SweepRunOf(const ProgramResult& result, bool isAsBefore, bool isAsWanted);

// A rehearsal that has been started.
class SweptRehearsal {
public:
    virtual ~SweptRehearsal() = default;
    virtual const ChildProgram& Program() const = 0;
    // Waits for its end.
    virtual SweepRun Finish() = 0;
};

// One for each of these calls; with `faults` only for those that they name: "CALL", "CALL#N" or "CALL#N=CODE".
// `complete` gives a fault what its call fails with when it does not say. Throws WrongUsage.
std::vector<SweepStep> SweepSteps(const std::vector<ClusterCall>& calls, const std::vector<std::string>& faults,
                                  const std::function<std::string(const std::string& fault)>& complete);

// Those of them that name no call.
std::vector<std::string> FiltersWithoutStep(const std::vector<ClusterCall>& calls,
                                            const std::vector<std::string>& faults);

typedef std::function<std::unique_ptr<SweptRehearsal>(const SweepStep& step)> StartRehearsal;

// Two at a time, with a progress line. The rows "step", "call", "fault", "exitCode", "message", "ended": those that
// ended in between first. Throws Interrupted.
Json Sweep(const LogCapture& log, const std::vector<SweepStep>& steps, const StartRehearsal& start);

// Adds the table and how many ended how.
void AddSweep(Report& report, Json rows);

#endif
