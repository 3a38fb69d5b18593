#include "Faults.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>

namespace clussim {

using common::Folded;
using common::ToUtf16;

namespace {

const char Time[] = "time";

const char* const Calls[] = {
    "AddClusterResourceDependency",
    "AddClusterResourceNode",
    "CloseCluster",
    "CloseClusterGroup",
    "CloseClusterNetInterface",
    "CloseClusterNetwork",
    "CloseClusterNode",
    "CloseClusterNotifyPort",
    "CloseClusterResource",
    "ClusterCloseEnum",
    "ClusterEnum",
    "ClusterGroupCloseEnum",
    "ClusterGroupControl",
    "ClusterGroupEnum",
    "ClusterGroupOpenEnum",
    "ClusterNetInterfaceControl",
    "ClusterOpenEnum",
    "ClusterResourceCloseEnum",
    "ClusterResourceControl",
    "ClusterResourceEnum",
    "ClusterResourceOpenEnum",
    "CreateClusterNotifyPort",
    "CreateClusterResource",
    "DeleteClusterResource",
    "FailClusterResource",
    "GetClusterFromResource",
    "GetClusterGroupState",
    "GetClusterInformation",
    "GetClusterNetInterfaceState",
    "GetClusterNetworkState",
    "GetClusterNodeState",
    "GetClusterNotify",
    "GetClusterQuorumResource",
    "GetClusterResourceState",
    "MoveClusterGroup",
    "OfflineClusterGroup",
    "OfflineClusterResource",
    "OnlineClusterGroup",
    "OnlineClusterResource",
    "OpenCluster",
    "OpenClusterGroup",
    "OpenClusterNetInterface",
    "OpenClusterNetwork",
    "OpenClusterNode",
    "OpenClusterResource",
    "PauseClusterNode",
    "RegisterClusterNotify",
    "RemoveClusterResourceDependency",
    "ResUtilFindDwordProperty",
    "ResUtilFindSzProperty",
    "ResUtilGetResourceDependency",
    "ResUtilGetResourceDependencyByClass",
    "ResUtilResourceTypesEqual",
    "ResumeClusterNode",
};

// "time@5=event:..."
std::int64_t SecondsIn(const common::Fault& written) {
    const std::string& text = written.object;
    const bool isNumber =
        !text.empty() && text.size() <= 9 && text.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber || !written.event || written.onlyFirst) {
        throw common::FaultError("a time is so many seconds, and takes an event: time@5=event:\"text\"");
    }
    return std::stol(text);
}

} // namespace

Fault ParseFault(const std::string& text) {
    Fault fault;
    fault.written = common::ParseFault(text);
    const common::Fault& written = fault.written;
    const bool isOfAnyCall = written.call.empty() && written.event;
    fault.isTimed = written.call == Time;
    if (fault.isTimed) {
        fault.afterMs = SecondsIn(written) * 1000;
    }
    if (!isOfAnyCall && !fault.isTimed &&
        std::find(std::begin(Calls), std::end(Calls), written.call) == std::end(Calls)) {
        throw common::FaultError("there is no call '" + written.call + "'");
    }
    const int effects =
        (written.code ? 1 : 0) + (written.state ? 1 : 0) + (written.delayMs != 0 ? 1 : 0) + (written.event ? 1 : 0);
    if (written.output || written.random || written.repeat || written.kill || written.hangs || written.toErrors ||
        effects != 1) {
        throw common::FaultError(
            "a call takes a code, delay_ms:n or event:\"text\", or GetClusterResourceState state:n");
    }
    if (written.code.value_or(0) < 0) {
        throw common::FaultError("a code is not negative");
    }
    fault.object = Folded(ToUtf16(written.object));
    fault.code = static_cast<Code>(written.code.value_or(0));
    fault.forcesState = written.state.has_value();
    fault.state = static_cast<int>(written.state.value_or(0));
    if (fault.forcesState && written.call != "GetClusterResourceState") {
        throw common::FaultError("only GetClusterResourceState takes a state");
    }
    return fault;
}

void Faults::Add(const Fault& fault) {
    m_faults.push_back(fault);
}

void Faults::Clear() {
    m_faults.clear();
}

void Faults::ClearModelFaults() {
    m_faults.erase(std::remove_if(m_faults.begin(), m_faults.end(), [](const Fault& fault) { return fault.isOfModel; }),
                   m_faults.end());
}

std::int64_t Faults::NextDue() const {
    std::int64_t next = INT64_MAX;
    for (const Fault& fault : m_faults) {
        next = fault.isTimed ? std::min(next, fault.dueAt) : next;
    }
    return next;
}

std::optional<std::string> Faults::TakeDue(std::int64_t now) {
    const std::int64_t next = NextDue();
    if (next > now) {
        return std::nullopt;
    }
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [next](const Fault& fault) { return fault.isTimed && fault.dueAt == next; });
    std::string event = *found->written.event;
    m_faults.erase(found);
    return event;
}

std::string Faults::Counts() const {
    std::string counts;
    for (const Fault& fault : m_faults) {
        counts += fault.isOfModel ? "" : std::to_string(fault.written.seen) + "\n";
    }
    return counts;
}

const Fault* Faults::Hit(const char* call, const std::vector<std::wstring>& objects) {
    const Fault* hit = nullptr;
    for (Fault& fault : m_faults) {
        if (fault.isTimed || (!fault.written.call.empty() && fault.written.call != call)) {
            continue;
        }
        if (!fault.object.empty() && std::none_of(objects.begin(), objects.end(), [&](const std::wstring& object) {
                return Folded(object) == fault.object;
            })) {
            continue;
        }
        if (fault.written.Occurs() && !hit) {
            hit = &fault;
        }
    }
    return hit;
}

} // namespace clussim
