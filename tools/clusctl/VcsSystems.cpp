#include "VcsSystems.h"

#include "Text.h"
#include "VcsPicture.h"
#include "VcsServers.h"
#include "VcsTools.h"

#include "common/Text.h"
#include "picture/SystemsUnder.h"

#include <clus_VeritasCluster.h>

#include <algorithm>
#include <map>

namespace {

const wchar_t SystemStateAttribute[] = L"SysState";
const wchar_t RunningState[] = L"RUNNING";

VcsNames ListSystemsIn(const LogCapture& log, const wchar_t* state) {
    return ListVcsNames(log, &CVeritasCluster::EnumSystemNames, "systems", {{SystemStateAttribute, state}});
}

} // namespace

// Asks for the systems of each state until there is one for each: mostly the first question is the last.
std::vector<picture::Node> ReadVcsSystems(const LogCapture& log, const VcsNames& names) {
    std::map<std::wstring, std::wstring> found;
    const auto isFound = [&found](const std::wstring& name) { return found.count(name) != 0; };
    for (const wchar_t* const known : VcsSystemStates()) {
        if (std::all_of(names.begin(), names.end(), isFound)) {
            break;
        }
        for (const std::wstring& name : ListSystemsIn(log, known)) {
            found.emplace(name, known);
        }
    }
    std::vector<picture::Node> systems;
    for (const std::wstring& name : names) {
        const auto state = found.find(name);
        systems.push_back(VcsSystem(name, state == found.end() ? std::wstring() : state->second));
    }
    return systems;
}

std::string SaidToBeOn(const std::string& group, const std::string& state, const std::string& system) {
    return "the group " + Quoted(group) + " is said to be " + state + " on the system " + Quoted(system) +
           ", which is " + picture::NotRunning;
}

Json RunningSystems::StateUnder(const std::wstring& group, const GroupState& state) {
    if (state.system.empty()) {
        return Json();
    }
    if (!m_isAsked) {
        m_isAsked = true;
        try {
            m_running = ListSystemsIn(m_log, RunningState);
            if (m_running->empty()) { // whoever answers runs on a system: the answer was lost, more likely
                m_running.reset();
                m_report.MarkIncomplete("cannot tell which systems run: VCS names none");
            }
        } catch (const Failure& failure) {
            m_report.MarkIncomplete(std::string("cannot tell which systems run: ") + failure.what());
        }
    }
    if (!m_running) {
        return picture::RunningUnknown;
    }
    if (Contains(*m_running, state.system)) {
        return picture::Running;
    }
    m_report.AddWarning(SaidToBeOn(common::ToUtf8(group), state.word, common::ToUtf8(state.system)));
    return picture::NotRunning;
}
