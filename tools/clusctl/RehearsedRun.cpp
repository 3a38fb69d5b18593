#include "RehearsedRun.h"

#include "ClusterSimulator.h"
#include "SimulatedTime.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <winsock2.h>
#include <windows.h>

const wchar_t RehearsalVariable[] = L"CLUSCTL_REHEARSAL";
const wchar_t RehearsedVariable[] = L"CLUSCTL_REHEARSED";

namespace {

std::wstring g_folder;
std::wstring g_rehearsed;

std::wstring Take(const wchar_t* name) {
    std::wstring value = common::EnvironmentVariable(name);
    SetEnvironmentVariableW(name, nullptr); // not for programs that this one starts
    return value;
}

} // namespace

RehearsedRun::RehearsedRun(bool hasModel) {
    const std::wstring folder = Take(RehearsalVariable);
    const std::wstring rehearsed = Take(RehearsedVariable);
    if (hasModel) {
        g_folder = folder;
        g_rehearsed = rehearsed;
    }
}

void RehearsedRun::Begin() {
    if (!IsOne()) {
        return;
    }
    if (ClusterSimulator::IsLoaded()) {
        ClusterSimulator::RecordEvents();
        ClusterSimulator::RecordCalls();
        SimulatedTime::Begin(&ClusterSimulator::AdvanceClock);
    }
}

RehearsedRun::~RehearsedRun() {
    if (!IsOne() || !SimulatedTime::IsInForce()) {
        return;
    }
    try {
        ClusterSimulator::AdvanceClock(0); // what has come about by now is written, too
        std::string events;
        for (const Json& event : ClusterSimulator::TakeEvents()) {
            events += common::DumpJsonLine(event) + "\n";
        }
        common::WriteWholeFile(g_folder + L"\\events", events);
        common::WriteWholeFile(g_folder + L"\\calls", ClusterSimulator::ReadCalls());
    } catch (const std::exception&) {
        // The rehearsal finds no files, and says so.
    }
}

bool RehearsedRun::IsOne() {
    return !g_folder.empty();
}

const std::wstring& RehearsedRun::Rehearsed() {
    return g_rehearsed;
}
