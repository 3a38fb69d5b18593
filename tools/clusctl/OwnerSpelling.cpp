#include "OwnerSpelling.h"

#include "ClusterObjects.h"
#include "Text.h"
#include "ThisComputer.h"

#include <algorithm>
#include <map>

bool IsSpelledOtherwise(const std::wstring& owner) {
    static std::map<std::wstring, bool> judged; // there are as many owners as nodes, and many that they own
    const auto known = judged.find(owner);
    return known != judged.end()
               ? known->second
               : judged.emplace(owner, owner != ComputerName() && IsThisComputer(owner)).first->second;
}

void WarnOfOwnerSpelling(const std::wstring& owner, Report& report) {
    if (!IsSpelledOtherwise(owner)) {
        return;
    }
    const std::string warning = "the owner " + Quoted(owner) + " is this computer, which is called " +
                                Quoted(ComputerName()) +
                                ": the library compares letter for letter, and serves nothing of that owner here";
    const std::vector<std::string>& told = report.Warnings();
    if (std::find(told.begin(), told.end(), warning) == told.end()) {
        report.AddWarning(warning);
    }
}

void WarnOfOwnerSpellings(const CCluster& cluster, Report& report) {
    for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
        const GroupHandle group = OpenGroup(cluster, name);
        std::wstring owner;
        if (!group || ReadGroupState(group.get(), owner) == ClusterGroupStateUnknown) {
            MarkUnread(report, "a server may be left out: cannot read the owner of the group " + Quoted(name),
                       GetLastError());
            continue;
        }
        WarnOfOwnerSpelling(owner, report);
    }
}
