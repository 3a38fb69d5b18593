#include "RehearsedRun.h"

#include "ClusterSimulator.h"
#include "SimulatedServices.h"
#include "SimulatedTime.h"
#include "VcsCopy.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <winsock2.h>
#include <windows.h>

const wchar_t RehearsalVariable[] = L"CLUSCTL_REHEARSAL";
const wchar_t RehearsedVariable[] = L"CLUSCTL_REHEARSED";
const wchar_t RehearsedBundleVariable[] = L"CLUSCTL_REHEARSED_BUNDLE";

namespace {

std::wstring g_folder;
std::wstring g_rehearsed;
std::wstring g_bundle;
bool g_tells = false; // what was done to a failover cluster

std::wstring Take(const wchar_t* name) {
    std::wstring value = common::EnvironmentVariable(name);
    SetEnvironmentVariableW(name, nullptr); // not for programs that this one starts
    return value;
}

} // namespace

RehearsedRun::RehearsedRun(bool hasModel) {
    const std::wstring folder = Take(RehearsalVariable);
    const std::wstring rehearsed = Take(RehearsedVariable);
    const std::wstring bundle = Take(RehearsedBundleVariable);
    if (hasModel) {
        g_folder = folder;
        g_rehearsed = rehearsed;
        g_bundle = bundle;
    }
}

void RehearsedRun::Begin(Answering asked) {
    if (!IsOne()) {
        return;
    }
    if (asked == Answering::Vcs) {
        const std::wstring copy = common::EnvironmentVariable(VcsVariable);
        SimulatedServices::Begin(copy);
        SimulatedTime::Begin([copy, rest = 0U](unsigned milliseconds) mutable {
            rest += milliseconds;
            if (rest >= 1000) { // its clock knows whole seconds
                VcsCopy::LetPass(copy, rest / 1000);
                rest %= 1000;
            }
        });
    } else if (ClusterSimulator::IsLoaded()) {
        ClusterSimulator::KeepFile(); // nobody else looks at the copy meanwhile
        ClusterSimulator::RecordEvents();
        ClusterSimulator::RecordCalls();
        SimulatedTime::Begin(&ClusterSimulator::AdvanceClock);
        g_tells = true;
    }
}

RehearsedRun::~RehearsedRun() {
    if (!g_tells) {
        return;
    }
    try {
        ClusterSimulator::AdvanceClock(0); // what has come about by now is written, too
        ClusterSimulator::WriteKeptFile();
        std::string events;
        for (const Json& event : ClusterSimulator::TakeEvents()) {
            events += common::DumpJsonLine(event) + "\n";
        }
        common::WriteWholeFile(g_folder + L"\\events", events);
        common::WriteWholeFile(g_folder + L"\\matched", ClusterSimulator::ReadFaultCounts());
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

const std::wstring& RehearsedRun::Bundle() {
    return g_bundle;
}
