// The simulated cluster service of this process: one model, from a file shared with other processes or held in memory,
// with its clock, faults, journal and handles.
#ifndef CLUSSIM_SERVICE_H
#define CLUSSIM_SERVICE_H

#include "Faults.h"
#include "Handles.h"
#include "Journal.h"
#include "ModelFile.h"

#include <functional>
#include <mutex>

namespace clussim {

class Service {
public:
    static Service& Instance();

    // Everything below is called with the lock held.
    std::recursive_mutex lock;
    Journal journal;
    Handles handles;

    // Reads the environment when no test drives the model; once.
    void LoadConfiguration();

    // The model as it is now: re-read when another process changed its file, transitions completed. Null when there is
    // none.
    Model* Current();

    // The same for cluster calls: null too while the cluster does not run.
    Model* Running();

    // Changes the model and, in file mode, writes it back under the lock shared with other processes. The change finds
    // its objects itself, as the model may be read anew before. A change that cannot be written is undone and answers
    // with the Win32 code.
    Code Change(const std::function<Code(Model&)>& change);

    // The same for what befalls the cluster from outside, whether it runs or not.
    Code Intervene(const std::function<Code(Model&)>& change);

    // The model's own clock where it has one, else the manual one, else the computer's.
    std::int64_t Now() const;

    // A test drives the model: calls leave misleading last-error values behind then, where the API promises none.
    bool InMemory() const {
        return m_memory != nullptr;
    }

    bool HasFaults() const {
        return !m_faults.Empty();
    }
    std::string FaultCounts() const {
        return m_faults.Counts();
    }

    // The fault that hits this call, or null. Counts.
    const Fault* Hit(const char* call, const std::vector<std::wstring>& objects);

    // What a call gives on a handle that was opened while the service ran.
    Code LostCode() const;

    // Control.
    bool LoadModel(const char* json, std::string& error);
    std::string ReadModel();
    const std::string* ReadSettings(); // null without a model
    void Reset();
    void AddFault(const std::string& text); // throws common::FaultError
    void ClearFaults();
    void KeepFile();
    Code WriteKeptFile();
    void UseManualClock();
    Code AdvanceClock(std::uint64_t milliseconds);
    bool SeeFrom(const std::string& node);
    void RecordEvents(bool on);
    const std::vector<Event>& Events() const {
        return m_events;
    }

private:
    Service();
    void Add(Fault fault);
    void AddModelFaults(const Model& model);
    void BringAboutDue(); // the events that a fault has for a time
    Code Advance(std::uint64_t milliseconds);
    Code ChangeModel(Model* (Service::*get)(), const std::function<Code(Model&)>& change);
    Code Apply(Model& model, const std::function<Code(Model&)>& change);
    void CollectEvents(Model& model);

    std::unique_ptr<Model> m_memory; // loaded by a test
    ModelFile m_file;
    Faults m_faults;
    bool m_configured = false;
    bool m_fileFaultsAdded = false;
    bool m_manualClock = false;
    std::int64_t m_manualNow = 0;
    bool m_recordsEvents = false;
    bool m_hasStopped = false; // as far as this process has seen: the service did not run when it looked last
    std::vector<Event> m_events;
    std::function<void()> m_seeAsBefore; // undoes SeeFrom
};

} // namespace clussim

#endif
