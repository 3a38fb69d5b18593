#include "ProbeForms.h"

#include <cstddef>
#include <vector>

namespace {

const DWORD UnknownKind = 0x40000000;

} // namespace

void LookAtList(const char* rule, const AskItem& ask, const std::wstring& object, ProbeAnswers& answers) {
    std::vector<wchar_t> name(ProbeRoom + 1);
    std::wstring first;
    std::string difference;
    DWORD code = ERROR_SUCCESS;
    for (DWORD index = 0; code == ERROR_SUCCESS && index < MostProbedItems; ++index) {
        DWORD count = ProbeRoom;
        code = ask(index, name.data(), &count);
        const std::wstring text = code == ERROR_SUCCESS ? name.data() : L"";
        if (code == ERROR_SUCCESS && count != text.size()) {
            difference = "a count that is not the length";
        }
        first = index == 0 ? text : first;
    }
    if (difference.empty() && code != ERROR_NO_MORE_ITEMS) {
        if (IsRefusal(code)) {
            return;
        }
        difference = "its end: " + CodeText(code);
    }
    if (difference.empty() && !first.empty()) {
        auto count = static_cast<DWORD>(first.size());
        code = ask(0, name.data(), &count);
        if (code != ERROR_MORE_DATA && IsRefusal(code)) {
            return;
        }
        if (code != ERROR_MORE_DATA || count != first.size()) {
            difference =
                "too small a room: " + CodeText(code) + (count == first.size() ? ", the length" : ", another count");
        }
    }
    answers.Saw(rule, difference.empty(), difference.empty() ? "as that of the cluster" : difference, object);
}

void LookAtGroupLists(HGROUP group, const std::wstring& name, ProbeAnswers& answers) {
    const HGROUPENUM list = ClusterGroupOpenEnum(group, CLUSTER_GROUP_ENUM_CONTAINS);
    if (list == nullptr) {
        return;
    }
    LookAtList(
        "group-enum",
        [list](DWORD index, wchar_t* item, DWORD* count) {
            DWORD kind = 0;
            return ClusterGroupEnum(list, index, &kind, item, count);
        },
        name, answers);
    ClusterGroupCloseEnum(list);

    const HGROUPENUM unknown = ClusterGroupOpenEnum(group, CLUSTER_GROUP_ENUM_CONTAINS | UnknownKind);
    const DWORD code = unknown == nullptr ? GetLastError() : static_cast<DWORD>(ERROR_SUCCESS);
    answers.SawCode("group-enum-mask", code, ERROR_SUCCESS, name);
    if (unknown != nullptr) {
        ClusterGroupCloseEnum(unknown);
    }
}

void LookAtResourceLists(HRESOURCE resource, const std::wstring& name, bool isWhole, ProbeAnswers& answers) {
    const HRESENUM list = ClusterResourceOpenEnum(resource, CLUSTER_RESOURCE_ENUM_NODES);
    if (list == nullptr) {
        return;
    }
    const auto ask = [list](DWORD index, wchar_t* item, DWORD* count) {
        DWORD kind = 0;
        return ClusterResourceEnum(list, index, &kind, item, count);
    };
    if (isWhole) {
        LookAtList("resource-enum", ask, name, answers);
    }
    DWORD count = 0;
    const DWORD code = ask(0, nullptr, &count);
    if (code == ERROR_NO_MORE_ITEMS) {
        answers.Saw("possible-owners", false, "none", name);
    } else if (!IsRefusal(code)) {
        answers.Saw("possible-owners", true, "some", name);
        answers.SawCode("resource-enum-length", code, ERROR_SUCCESS, name);
    }
    ClusterResourceCloseEnum(list);

    for (const DWORD mask : {DWORD(0), UnknownKind}) {
        SetLastError(ERROR_SUCCESS);
        const HRESENUM wrong = ClusterResourceOpenEnum(resource, mask);
        if (wrong != nullptr) {
            answers.Saw("resource-enum-mask", false, "a list", name);
            ClusterResourceCloseEnum(wrong);
        } else {
            answers.SawCode("resource-enum-mask", GetLastError(), ERROR_INVALID_PARAMETER, name);
        }
    }
}

void LookAtInformation(HCLUSTER cluster, ProbeAnswers& answers) {
    std::vector<wchar_t> name(ProbeRoom + 1);
    DWORD count = ProbeRoom;
    if (GetClusterInformation(cluster, name.data(), &count, nullptr) != ERROR_SUCCESS) {
        return;
    }
    const std::wstring told = name.data();
    auto shortCount = static_cast<DWORD>(told.size());
    const DWORD code = GetClusterInformation(cluster, name.data(), &shortCount, nullptr);
    if (code == ERROR_MORE_DATA || !IsRefusal(code)) {
        const bool isLength = count == told.size() && shortCount == told.size();
        answers.Saw("cluster-name", code == ERROR_MORE_DATA && isLength,
                    CodeText(code) + (isLength ? ", the length" : ", another count"));
    }
    CLUSTERVERSIONINFO version = {};
    version.dwVersionInfoSize = offsetof(CLUSTERVERSIONINFO, dwClusterHighestVersion); // what it was at first
    count = ProbeRoom;
    answers.SawCode("version-short", GetClusterInformation(cluster, name.data(), &count, &version), ERROR_SUCCESS);
}
