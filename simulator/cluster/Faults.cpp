#include "Faults.h"

#include "common/Text.h"

#include <algorithm>
#include <cstdlib>

namespace clussim {

using common::Folded;
using common::ToUtf16;

namespace {

const char* const Calls[] = {
    "AddClusterResourceDependency",
    "AddClusterResourceNode",
    "CloseCluster",
    "CloseClusterGroup",
    "CloseClusterNode",
    "CloseClusterResource",
    "ClusterCloseEnum",
    "ClusterEnum",
    "ClusterGroupCloseEnum",
    "ClusterGroupEnum",
    "ClusterGroupOpenEnum",
    "ClusterOpenEnum",
    "ClusterResourceCloseEnum",
    "ClusterResourceControl",
    "ClusterResourceEnum",
    "ClusterResourceOpenEnum",
    "CreateClusterResource",
    "DeleteClusterResource",
    "GetClusterFromResource",
    "GetClusterGroupState",
    "GetClusterInformation",
    "GetClusterNodeState",
    "GetClusterResourceState",
    "OfflineClusterResource",
    "OnlineClusterResource",
    "OpenCluster",
    "OpenClusterGroup",
    "OpenClusterNode",
    "OpenClusterResource",
    "RemoveClusterResourceDependency",
    "ResUtilFindDwordProperty",
    "ResUtilFindSzProperty",
    "ResUtilGetResourceDependency",
    "ResUtilGetResourceDependencyByClass",
    "ResUtilResourceTypesEqual",
};

// The whole text as a number, decimal or with 0x.
bool ParseNumber(const std::string& text, unsigned long& number) {
    if (text.empty() || text[0] < '0' || text[0] > '9') {
        return false;
    }
    char* end = nullptr;
    number = std::strtoul(text.c_str(), &end, 0);
    return *end == '\0';
}

} // namespace

bool ParseFault(const std::string& text, Fault& fault) {
    fault = Fault();
    // The code stands behind the last "=", the occurrence behind the last "#" before it: object names may hold either
    // character.
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos) {
        return false;
    }
    const std::string result = text.substr(equals + 1);
    std::string what = text.substr(0, equals);
    unsigned long number = 0;
    if (result.compare(0, 6, "state:") == 0) {
        const bool negative = result.compare(6, 1, "-") == 0;
        if (!ParseNumber(result.substr(negative ? 7 : 6), number)) {
            return false;
        }
        fault.forcesState = true;
        fault.state = negative ? -static_cast<int>(number) : static_cast<int>(number);
    } else if (!ParseNumber(result, fault.code)) {
        return false;
    }
    const std::size_t hash = what.rfind('#');
    if (hash != std::string::npos) {
        std::string occurrence = what.substr(hash + 1);
        fault.onlyFirst = occurrence.empty() || occurrence.back() != '+';
        if (!fault.onlyFirst) {
            occurrence.pop_back();
        }
        if (!ParseNumber(occurrence, number) || number == 0) {
            return false;
        }
        fault.first = number;
        what.erase(hash);
    }
    const std::size_t at = what.find('@');
    if (at != std::string::npos) {
        fault.object = Folded(ToUtf16(what.substr(at + 1)));
        if (fault.object.empty()) {
            return false;
        }
        what.erase(at);
    }
    fault.call = what;
    return std::find(std::begin(Calls), std::end(Calls), what) != std::end(Calls) &&
           (!fault.forcesState || what == "GetClusterResourceState");
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

const Fault* Faults::Hit(const char* call, const std::vector<std::wstring>& objects) {
    const Fault* hit = nullptr;
    for (Fault& fault : m_faults) {
        if (fault.call != call) {
            continue;
        }
        if (!fault.object.empty() && std::none_of(objects.begin(), objects.end(), [&](const std::wstring& object) {
                return Folded(object) == fault.object;
            })) {
            continue;
        }
        ++fault.seen;
        if (!hit && (fault.onlyFirst ? fault.seen == fault.first : fault.seen >= fault.first)) {
            hit = &fault;
        }
    }
    return hit;
}

} // namespace clussim
