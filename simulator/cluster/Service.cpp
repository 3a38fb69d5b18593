#include "Service.h"

#include "Engine.h"
#include "Events.h"
#include "ModelJson.h"

#include "common/Environment.h"
#include "common/Text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace clussim {

using common::EnvironmentVariable;
using common::ToUtf8;

Service::Service() = default;

Service& Service::Instance() {
    // Never destroyed: other DLLs may still close handles while the process ends.
    static Service* const service = new Service;
    return *service;
}

void Service::LoadConfiguration() {
    if (m_configured) {
        return;
    }
    m_configured = true;
    m_file.SetPath(EnvironmentVariable(L"CLUSSIM_FILE"));
    journal.SetFile(EnvironmentVariable(L"CLUSSIM_JOURNAL"));
    const std::string faults = ToUtf8(EnvironmentVariable(L"CLUSSIM_FAULTS"));
    for (std::size_t start = 0; start < faults.size();) {
        const std::size_t end = std::min(faults.find(';', start), faults.size());
        const std::string text = faults.substr(start, end - start);
        const std::size_t first = text.find_first_not_of(' ');
        try {
            if (first != std::string::npos) {
                AddFault(text.substr(first));
            }
        } catch (const common::FaultError& error) {
            std::fprintf(stderr, "clussim: CLUSSIM_FAULTS: \"%s\" is no fault like call@object#n=code: %s\n",
                         text.c_str(), error.what());
        }
        start = end + 1;
    }
}

Model* Service::Current() {
    Model* model = m_memory.get();
    if (!model) {
        LoadConfiguration();
        model = m_file.Current();
        if (model && !m_fileFaultsAdded) {
            m_fileFaultsAdded = true; // once: their counts go on when the file is read again
            AddModelFaults(*model);
        }
    }
    const std::int64_t never = INT64_MAX; // most often: the clock is not looked at then
    if (model && model->agenda.nextDue != never && model->agenda.nextDue <= Now()) {
        model->events.isOn = m_recordsEvents;
        Engine(*model, Now()).Settle();
        CollectEvents(*model);
    }
    if (model) {
        if (model->running && m_hasStopped && model->behaviour.handlesGoStale) {
            handles.Expire(true);
        }
        m_hasStopped = !model->running;
    }
    return model;
}

Code Service::LostCode() const {
    const Model* const model = m_memory ? m_memory.get() : m_file.Loaded();
    return model ? model->behaviour.lost : static_cast<Code>(RPC_S_SERVER_UNAVAILABLE);
}

void Service::BringAboutDue() {
    // Each event is gone before it happens, which looks at the model again.
    while (const std::optional<std::string> event = m_faults.TakeDue(Now())) {
        HappenAsWritten(*this, *event);
    }
}

Model* Service::Running() {
    BringAboutDue();
    Model* model = Current();
    return model && model->running ? model : nullptr;
}

Code Service::Change(const std::function<Code(Model&)>& change) {
    return ChangeModel(&Service::Running, change);
}

Code Service::Intervene(const std::function<Code(Model&)>& change) {
    return ChangeModel(&Service::Current, change);
}

Code Service::ChangeModel(Model* (Service::*get)(), const std::function<Code(Model&)>& change) {
    if (m_memory) {
        Model* const model = (this->*get)();
        return model ? Apply(*model, change) : LostCode();
    }
    LoadConfiguration();
    const common::FileLock::Turn turn(m_file.Lock());
    Model* const model = (this->*get)();
    if (!model) {
        return LostCode();
    }
    if (!turn) {
        return ERROR_SHARING_VIOLATION;
    }
    model->isChanged = false; // a completed transition alone is not worth a write: everybody completes it
    const Code code = Apply(*model, change);
    if (!model->isChanged) {
        return code;
    }
    const Code written = m_file.Write();
    return written != ERROR_SUCCESS ? written : code;
}

Code Service::Apply(Model& model, const std::function<Code(Model&)>& change) {
    model.events.isOn = m_recordsEvents;
    const Code code = change(model);
    CollectEvents(model);
    return code;
}

void Service::CollectEvents(Model& model) {
    m_events.insert(m_events.end(), std::make_move_iterator(model.events.entries.begin()),
                    std::make_move_iterator(model.events.entries.end()));
    model.events.entries.clear();
}

void Service::RecordEvents(bool on) {
    m_recordsEvents = on;
    m_events.clear();
}

std::int64_t Service::Now() const {
    const Model* const model = m_memory ? m_memory.get() : m_file.Loaded();
    if (model && model->clock != 0) {
        return model->clock;
    }
    if (m_manualClock) {
        return m_manualNow;
    }
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime) /
                                     10000);
}

const Fault* Service::Hit(const char* call, const std::vector<std::wstring>& objects) {
    return m_faults.Empty() ? nullptr : m_faults.Hit(call, objects);
}

bool Service::LoadModel(const char* json, std::string& error) {
    if (!json) {
        error = "no text";
        return false;
    }
    try {
        std::unique_ptr<Model> model = clussim::ReadModel(json, ThisComputer());
        m_configured = true; // an in-memory model ignores the environment
        m_file.SetPath(L"");
        m_memory = std::move(model);
        m_seeAsBefore = nullptr;
    } catch (const ModelError& problem) {
        error = problem.what();
        return false;
    }
    journal.recording = true;
    m_faults.ClearModelFaults();
    AddModelFaults(*m_memory);
    return true;
}

const std::string* Service::ReadSettings() {
    const Model* model = Current();
    return model ? &model->settings : nullptr;
}

std::string Service::ReadModel() {
    const Model* model = Current();
    return model ? WriteModel(*model) : std::string();
}

bool Service::SeeFrom(const std::string& node) {
    if (m_seeAsBefore) {
        m_seeAsBefore();
        m_seeAsBefore = nullptr;
    }
    if (node.empty()) {
        return true;
    }
    Node* const seen = m_memory ? m_memory->FindNode(common::ToUtf16(node)) : nullptr;
    if (!seen) {
        return false;
    }
    Model& model = *m_memory;
    const std::wstring here = ThisComputer();
    Node* const own = model.FindNode(here);
    if (seen == own) {
        return true;
    }
    std::vector<std::pair<Group*, std::wstring>> spellings;
    for (Group& group : model.groups) {
        if (group.owner == seen || group.owner == own) { // of names that are exchanged
            spellings.emplace_back(&group, std::move(group.ownerAs));
            group.ownerAs.clear();
        }
    }
    const std::wstring name = seen->name;
    const std::wstring ownName = own ? own->name : std::wstring(); // which may be spelled otherwise than the computer's
    const bool isOwnDot = own && own->isThisComputer;
    const bool wasRunning = model.running;
    model.Rename(*seen, here);
    seen->isThisComputer = true;
    if (own) {
        own->isThisComputer = false;
    }
    model.running = true;
    m_seeAsBefore = [&model, seen, own, name, ownName, isOwnDot, wasRunning, spellings]() {
        model.Rename(*seen, name);
        seen->isThisComputer = false;
        if (own) {
            own->name = ownName;
            own->isThisComputer = isOwnDot;
        }
        model.running = wasRunning;
        for (const auto& spelling : spellings) {
            spelling.first->ownerAs = spelling.second;
        }
    };
    return true;
}

void Service::Reset() {
    m_seeAsBefore = nullptr;
    m_memory.reset();
    m_file.SetPath(L"");
    m_configured = false;
    m_fileFaultsAdded = false;
    m_faults.Clear();
    m_manualClock = false;
    m_hasStopped = false;
    RecordEvents(false);
    journal.Clear();
    journal.recording = false;
    journal.SetFile(L"");
    handles.ForgetBadCalls();
}

void Service::Add(Fault fault) {
    fault.dueAt = Now() + fault.afterMs;
    m_faults.Add(fault);
}

void Service::AddFault(const std::string& text) {
    Add(ParseFault(text));
}

void Service::AddModelFaults(const Model& model) {
    for (const std::string& text : model.faults) {
        Fault fault = ParseFault(text);
        fault.isOfModel = true;
        Add(fault);
    }
}

void Service::ClearFaults() {
    m_faults.Clear();
}

void Service::KeepFile() {
    LoadConfiguration();
    m_file.Keep();
}

Code Service::WriteKeptFile() {
    const common::FileLock::Turn turn(m_file.Lock());
    return m_file.WriteKept();
}

void Service::UseManualClock() {
    m_manualNow = Now();
    m_manualClock = true;
}

Code Service::AdvanceClock(std::uint64_t milliseconds) {
    const std::int64_t end = Now() + static_cast<std::int64_t>(milliseconds);
    Code code = ERROR_SUCCESS;
    while (m_faults.NextDue() <= end && code == ERROR_SUCCESS) { // each event at its own time
        code = Advance(static_cast<std::uint64_t>(std::max<std::int64_t>(0, m_faults.NextDue() - Now())));
        Current();
        BringAboutDue();
    }
    return code != ERROR_SUCCESS ? code : Advance(static_cast<std::uint64_t>(std::max<std::int64_t>(0, end - Now())));
}

Code Service::Advance(std::uint64_t milliseconds) {
    const Model* const model = Current();
    if (!model || model->clock == 0) {
        m_manualNow += static_cast<std::int64_t>(milliseconds);
        return ERROR_SUCCESS;
    }
    return Intervene([milliseconds](Model& changed) {
        changed.clock += static_cast<std::int64_t>(milliseconds);
        changed.isChanged = true;
        return static_cast<Code>(ERROR_SUCCESS);
    });
}

} // namespace clussim
