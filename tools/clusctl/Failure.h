// Why a command could not do its work: a stable name for scripts, an exit code, a sentence for people.
#ifndef CLUSCTL_FAILURE_H
#define CLUSCTL_FAILURE_H

#include <stdexcept>
#include <string>

// The same for all commands; docs/clusctl.md lists them.
enum ExitCode {
    ExitDone = 0,
    ExitFailed = 1, // for a reason that none of the others names
    ExitUsage = 2,
    ExitNotFound = 3,
    ExitNotPossible = 4, // in this state
    ExitRefused = 5,     // by the cluster
    ExitTimedOut = 6,
    ExitNoAnswer = 7, // the cluster, or its tools, do not answer
    ExitIncomplete = 8,
    ExitAccessDenied = 9,
    ExitInterrupted = 10,
    ExitWarnings = 11, // of the doctor: its worst finding
    ExitErrors = 12,
    ExitNotRecorded = 13, // what the recording in use was asked
    ExitLost = 14         // the cluster, while the command was at work
};

struct ErrorKind {
    const char* name; // in JSON
    ExitCode exitCode;
};

namespace Errors {
constexpr ErrorKind Failed = {"failed", ExitFailed};
constexpr ErrorKind OutputFailed = {"output-failed", ExitFailed};
constexpr ErrorKind WrongUsage = {"wrong-usage", ExitUsage};
constexpr ErrorKind ServerNotFound = {"server-not-found", ExitNotFound};
constexpr ErrorKind ResourceNotFound = {"resource-not-found", ExitNotFound};
constexpr ErrorKind GroupNotFound = {"group-not-found", ExitNotFound};
constexpr ErrorKind NodeNotFound = {"node-not-found", ExitNotFound};
constexpr ErrorKind FileNotFound = {"file-not-found", ExitNotFound};
constexpr ErrorKind NotFound = {"not-found", ExitNotFound};
constexpr ErrorKind NotPossible = {"not-possible", ExitNotPossible};
constexpr ErrorKind AlreadyExists = {"already-exists", ExitNotPossible};
constexpr ErrorKind NodePaused = {"node-paused", ExitNotPossible};
constexpr ErrorKind ReadOnly = {"read-only", ExitNotPossible};
constexpr ErrorKind UnsafeTool = {"unsafe-tool", ExitNotPossible};
constexpr ErrorKind NoSimulator = {"no-simulator", ExitNotPossible};
constexpr ErrorKind Refused = {"refused", ExitRefused};
constexpr ErrorKind TimedOut = {"timed-out", ExitTimedOut};
constexpr ErrorKind NoCluster = {"no-cluster", ExitNoAnswer};
constexpr ErrorKind ClusterLost = {"cluster-lost", ExitLost};
constexpr ErrorKind ToolMissing = {"tool-missing", ExitNoAnswer};
constexpr ErrorKind EngineDown = {"engine-down", ExitNoAnswer};
constexpr ErrorKind Incomplete = {"incomplete", ExitIncomplete};
constexpr ErrorKind AccessDenied = {"access-denied", ExitAccessDenied};
constexpr ErrorKind Interrupted = {"interrupted", ExitInterrupted};
constexpr ErrorKind NotRecorded = {"not-recorded", ExitNotRecorded};
} // namespace Errors

// Whether a Win32 code says that the cluster no longer answers, so that nothing more can be asked.
bool IsLost(unsigned long code);

// What is said of a call that failed with this code: a cluster that was lost refuses nothing.
std::string UnlessLost(const std::string& refusal, unsigned long code);

// The kind of failure that a Win32 code of the cluster or the system stands for; `otherwise` when it stands for none.
const ErrorKind& KindOfCode(unsigned long code, const ErrorKind& otherwise);

// A command could not do its work; what() is the sentence for the user.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& what) : Failure(Errors::Failed, what) {
    }
    Failure(const ErrorKind& kind, const std::string& what) : std::runtime_error(what), m_kind(&kind) {
    }
    // With the Win32 code, which is put behind the sentence and tells the kind where it can.
    static Failure OfCode(const std::string& what, unsigned long code, const ErrorKind& otherwise = Errors::Failed);
    // "cannot read the state of "EVS1": ..."
    static Failure OfReading(const char* what, const std::wstring& name, unsigned long code);

    // What the user can do about it: a sentence of its own.
    Failure& Hint(const std::string& hint) {
        m_hint = hint;
        return *this;
    }

    // Of another kind than the code tells.
    Failure& As(const ErrorKind& kind) {
        m_kind = &kind;
        return *this;
    }

    const ErrorKind& Kind() const {
        return *m_kind;
    }
    // 0: not known.
    unsigned long Win32() const {
        return m_win32;
    }
    const std::string& Hint() const {
        return m_hint;
    }

private:
    const ErrorKind* m_kind;
    unsigned long m_win32 = 0;
    std::string m_hint;
};

// Whether nothing more can be asked after it.
bool IsOfLostCluster(const Failure& failure);

#endif
