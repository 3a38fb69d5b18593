// The control interface of ClusSimControl.h.
#include "ClusSimControl.h"

#include "Events.h"
#include "Service.h"

#include <cstring>

using namespace clussim;

namespace {

typedef std::lock_guard<std::recursive_mutex> Guard;

std::size_t CopyOut(const std::string& text, char* buffer, std::size_t cb) {
    if (buffer && cb > text.size()) {
        std::memcpy(buffer, text.c_str(), text.size() + 1);
    }
    return text.size() + 1;
}

// As much of it as there is room for.
void Explain(const std::string& reason, char* error, std::size_t cbError) {
    if (error && cbError > 0) {
        std::strncpy(error, reason.c_str(), cbError - 1);
        error[cbError - 1] = '\0';
    }
}

} // namespace

unsigned ClusSimVersion(void) {
    return 1;
}

int ClusSimLoadModel(const char* json, char* error, size_t cbError) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    std::string reason;
    if (service.LoadModel(json, reason)) {
        return 1;
    }
    Explain(reason, error, cbError);
    return 0;
}

size_t ClusSimReadModel(char* buffer, size_t cb) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return CopyOut(service.ReadModel(), buffer, cb);
}

size_t ClusSimReadSettings(char* buffer, size_t cb) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    const std::string* settings = service.ReadSettings();
    return settings ? CopyOut(*settings, buffer, cb) : 0;
}

void ClusSimKeepFile(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.KeepFile();
}

unsigned long ClusSimWriteKeptFile(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return service.WriteKeptFile();
}

void ClusSimReset(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.Reset();
}

int ClusSimAddFault(const char* fault) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    try {
        service.AddFault(fault ? fault : "");
        return 1;
    } catch (const common::FaultError&) {
        return 0;
    }
}

void ClusSimClearFaults(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.ClearFaults();
}

void ClusSimUseManualClock(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.UseManualClock();
}

void ClusSimAdvanceClock(unsigned milliseconds) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.AdvanceClock(milliseconds);
}

unsigned long ClusSimHappen(const char* event, const char* name, const char* node, char* error, size_t cbError) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    try {
        return Happen(service, event ? event : "", name ? name : "", node ? node : "");
    } catch (const EventError& wrong) {
        Explain(wrong.what(), error, cbError);
        return ERROR_INVALID_PARAMETER;
    }
}

int ClusSimSeeFrom(const char* node) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return service.SeeFrom(node ? node : "") ? 1 : 0;
}

void ClusSimRecordEvents(int on) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.RecordEvents(on != 0);
}

size_t ClusSimReadEvents(char* buffer, size_t cb) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return CopyOut(EventLines(service.Events()), buffer, cb);
}

size_t ClusSimReadFaultCounts(char* buffer, size_t cb) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return CopyOut(service.FaultCounts(), buffer, cb);
}

void ClusSimRecordJournal(int on) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.journal.recording = on != 0;
}

size_t ClusSimReadJournal(char* buffer, size_t cb) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return CopyOut(service.journal.Lines(), buffer, cb);
}

void ClusSimClearJournal(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    service.journal.Clear();
    service.handles.ForgetBadCalls();
}

size_t ClusSimCallCount(const char* call) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return service.journal.Calls(call);
}

size_t ClusSimOpenHandles(const char* kind) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return service.handles.CountOpen(kind);
}

size_t ClusSimBadHandleCalls(void) {
    Service& service = Service::Instance();
    const Guard guard(service.lock);
    return service.handles.BadCalls();
}
