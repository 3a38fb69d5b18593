#include "ClusterSimulator.h"

#include "Failure.h"
#include "Text.h"

#include <winsock2.h>
#include <windows.h>

#include <sstream>

namespace {

template <typename Function> Function* Find(const char* name) {
    const HMODULE api = GetModuleHandleW(L"clusapi.dll");
    return api == nullptr ? nullptr : reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(api, name)));
}

template <typename Function> Function& Need(const char* name) {
    Function* const function = Find<Function>(name);
    if (function == nullptr) {
        throw Failure(Errors::NoSimulator, std::string("the clusapi.dll in use is not the simulator's, or an older "
                                                       "one: it has no ") +
                                               name);
    }
    return *function;
}

// What a function that fills a buffer gives. It does its work each time, which is much for a large model: it is called
// once when the room suffices that was needed before.
std::string Text(const char* name) {
    auto& read = Need<size_t(char*, size_t)>(name);
    static std::size_t room = 65536;
    for (;;) {
        std::string text(room, '\0');
        const std::size_t needed = read(&text[0], text.size());
        if (needed <= room) {
            text.resize(needed == 0 ? 0 : needed - 1);
            return text;
        }
        room = needed + needed / 8;
    }
}

} // namespace

namespace ClusterSimulator {

bool IsLoaded() {
    return Find<unsigned()>("ClusSimVersion") != nullptr;
}

void Load(const std::string& model) {
    char error[1024] = "";
    if (!Need<int(const char*, char*, size_t)>("ClusSimLoadModel")(model.c_str(), error, sizeof(error))) {
        throw Failure(std::string("the simulator does not take the model: ") + error);
    }
    Need<void(int)>("ClusSimRecordJournal")(0);
}

std::string Read() {
    return Text("ClusSimReadModel");
}

void KeepFile() {
    Need<void()>("ClusSimKeepFile")();
}

void WriteKeptFile() {
    const unsigned long code = Need<unsigned long()>("ClusSimWriteKeptFile")();
    if (code != ERROR_SUCCESS) {
        throw Failure::OfCode("cannot write the model", code);
    }
}

void SeeFrom(const std::string& node) {
    if (Need<int(const char*)>("ClusSimSeeFrom")(node.c_str()) == 0) {
        throw Failure(Errors::NodeNotFound, "the model has no node " + Quoted(node));
    }
}

unsigned long Happen(const std::string& event, const std::string& name, const std::string& node) {
    auto& happen = Need<unsigned long(const char*, const char*, const char*, char*, size_t)>("ClusSimHappen");
    char error[1024] = "";
    const unsigned long code = happen(event.c_str(), name.empty() ? nullptr : name.c_str(),
                                      node.empty() ? nullptr : node.c_str(), error, sizeof(error));
    if (error[0] != '\0') {
        throw Failure(Errors::NotFound, error);
    }
    return code;
}

void AdvanceClock(unsigned milliseconds) {
    Need<void(unsigned)>("ClusSimAdvanceClock")(milliseconds);
}

void RecordEvents() {
    Need<void(int)>("ClusSimRecordEvents")(1);
}

ClusterEvents TakeEvents() {
    std::istringstream lines(Text("ClusSimReadEvents"));
    RecordEvents(); // forgets those so far
    ClusterEvents events;
    for (std::string line; std::getline(lines, line);) {
        events.push_back(common::ParseJson(line));
    }
    return events;
}

void RecordCalls() {
    Need<void(int)>("ClusSimRecordJournal")(1);
}

std::string ReadCalls() {
    return Text("ClusSimReadJournal");
}

std::string ReadFaultCounts() {
    return Text("ClusSimReadFaultCounts");
}

bool IsFault(const std::string& text) {
    const bool isOne = Need<int(const char*)>("ClusSimAddFault")(text.c_str()) != 0;
    Need<void()>("ClusSimClearFaults")();
    return isOne;
}

} // namespace ClusterSimulator
