// Asking groups, resources and network interfaces by control codes, and why no cluster can be asked.
#include "ClusterObjects.h"

#include "common/AnswerRoom.h"

#include <algorithm>
#include <cstring>

namespace {

// The whole answer of a control.
template <typename Control> bool Query(const Control& control, std::vector<unsigned char>& answer, DWORD& code) {
    answer.resize(2048); // what fits takes one call: the common properties, or a disk with one partition
    for (;;) {
        DWORD needed = 0;
        code = control(answer.data(), static_cast<DWORD>(answer.size()), &needed);
        if (code != ERROR_MORE_DATA || !common::GrowRoom(answer, needed, common::LongestAnswer)) {
            answer.resize(code == ERROR_SUCCESS ? std::min<std::size_t>(needed, answer.size()) : 0);
            return code == ERROR_SUCCESS;
        }
    }
}

} // namespace

bool QueryResource(HRESOURCE resource, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code) {
    return Query(
        [=](void* out, DWORD size, DWORD* needed) {
            return ClusterResourceControl(resource, nullptr, controlCode, nullptr, 0, out, size, needed);
        },
        answer, code);
}

bool QueryGroup(HGROUP group, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code) {
    return Query(
        [=](void* out, DWORD size, DWORD* needed) {
            return ClusterGroupControl(group, nullptr, controlCode, nullptr, 0, out, size, needed);
        },
        answer, code);
}

bool QueryInterface(HNETINTERFACE card, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code) {
    return Query(
        [=](void* out, DWORD size, DWORD* needed) {
            return ClusterNetInterfaceControl(card, nullptr, controlCode, nullptr, 0, out, size, needed);
        },
        answer, code);
}

DWORD ReadResourceClass(HRESOURCE resource, DWORD& resourceClass) {
    std::vector<unsigned char> answer;
    DWORD code = 0;
    if (QueryResource(resource, CLUSCTL_RESOURCE_GET_CLASS_INFO, answer, code) &&
        answer.size() >= sizeof(resourceClass)) {
        std::memcpy(&resourceClass, answer.data(), sizeof(resourceClass));
    }
    return code;
}

DWORD ResourceClass(HRESOURCE resource) {
    DWORD result = CLUS_RESCLASS_UNKNOWN;
    ReadResourceClass(resource, result);
    return result;
}

namespace {

// What the user can do about a cluster that does not open.
const char* HintOfClosed(DWORD code) {
    switch (code) {
    case ERROR_ACCESS_DENIED:
        return "An account that administers the cluster may open it.";
    case ERROR_SERVICE_DOES_NOT_EXIST:
        return "This computer is no node of a cluster: give the command on one.";
    default:
        return "Its service may not be running on this computer: 'net start clussvc' starts it.";
    }
}

} // namespace

Failure FailureToOpenCluster(DWORD code) {
    Failure failure = Failure::OfCode("cannot open this computer's cluster", code);
    failure.Hint(HintOfClosed(code));
    return code == ERROR_ACCESS_DENIED ? failure : failure.As(Errors::NoCluster);
}
