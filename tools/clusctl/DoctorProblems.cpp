// What the status tells of the cluster, as findings: both judge by the same rule.
#include "DoctorParts.h"

#include "ClusterInUse.h"
#include "Interruption.h"
#include "ReadPicture.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>
#include <cstring>

using namespace picture;

namespace {

bool EndsWith(const char* text, const char* end) {
    const size_t length = std::strlen(text);
    const size_t endLength = std::strlen(end);
    return length >= endLength && std::strcmp(text + length - endLength, end) == 0;
}

// Whether one of the doctor's own steps has told the same, perhaps under a narrower code, or of the group's parts one
// by one.
bool IsTold(const Problem& problem, const Findings& findings) {
    const std::string object = Printable(problem.object);
    const std::wstring group = common::ToUtf16(problem.group);
    const std::vector<Finding>& all = findings.All();
    return std::any_of(all.begin(), all.end(), [&](const Finding& finding) {
        const bool isOfGroup = problem.isOfGroup && finding.group == group;
        const bool isPart = std::strcmp(problem.code, "vcs-product-missing") == 0 &&
                            std::strcmp(finding.code->name, "vcs-service-missing") == 0;
        return isPart ? isOfGroup
                      : EndsWith(finding.code->name, problem.code) && (finding.object == object || isOfGroup);
    });
}

struct Mend {
    const char* code;
    const char* text; // '@' stands for the object
};

const Mend FailoverMends[] = {
    {"group-failed", "clusctl tree @, to see what failed; then cluster group @ /online"},
    {"group-offline", "cluster group @ /online"},
    {"group-unread", "clusctl groups @"},
    {"network-name-missing", "clusctl resources --group @"},
    {"node-unread", "clusctl nodes"},
    {"product-offline", "cluster res @ /online"},
    {"resource-failed", "look why it failed, then cluster res @ /online"},
    {"resource-offline", "cluster res @ /online"},
    {"resource-pending", "wait, then clusctl status"},
    {"product-pending", "wait, then clusctl status"},
    {"resource-unread", "clusctl resources @"},
    {"server-part-offline", "cluster res @ /online"},
    {"store-dependency-missing", "cluster res @ /adddep:INFORMATION-STORE"},
};

const Mend VcsMends[] = {
    {"group-unread", "clusctl vcs groups"},
    {"node-unread", "clusctl vcs systems"},
    {"resource-offline", "hares -online @ -sys SYSTEM"},
    {"server-part-offline", "hares -online @ -sys SYSTEM"},
    {"vcs-group-faulted", "mend what failed, then hagrp -clear @"},
    {"vcs-group-faulted-elsewhere", "hagrp -clear @ -sys SYSTEM"},
    {"vcs-group-frozen", "hagrp -unfreeze @, with -persistent if it was frozen so"},
    {"vcs-group-disabled", "hagrp -enable @ -sys SYSTEM"},
    {"vcs-lanman-missing", "hares -add @-Lanman Lanman @"},
    {"vcs-product-missing", "clusctl vcs product create @ --rw"},
    {"vcs-service-missing", "clusctl vcs product create @ --rw"},
    {"vcs-store-missing", "clusctl vcs resources --where Group=@"},
    {"vcs-resource-offline", "clusctl vcs resource online @ SYSTEM"},
    {"vcs-group-offline", "hagrp -online @ -sys SYSTEM"},
    {"vcs-resource-disabled", "hares -modify @ Enabled 1"},
    {"vcs-resource-faulted", "mend what failed, then hares -clear @"},
    {"vcs-resource-faulted-elsewhere", "hares -clear @ -sys SYSTEM"},
    {"vcs-resource-not-probed", "hares -probe @ -sys SYSTEM"},
    {"vcs-service-order", "hares -link the product's resources, the Lanman resource and the Information Store"},
    {"vcs-system-down", "hastart, on @"},
};

template <size_t Size> std::string MendIn(const Mend (&mends)[Size], const Problem& problem, const std::string& name) {
    for (const Mend& mend : mends) {
        if (std::strcmp(mend.code, problem.code) == 0) {
            std::string text = mend.text;
            for (size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + name.size())) {
                text.replace(at, 1, name);
            }
            return text;
        }
    }
    return "clusctl status";
}

std::string MendOf(const Problem& problem) {
    return ClusterInUse() == Answering::Vcs ? MendIn(VcsMends, problem, Printable(problem.object))
                                            : MendIn(FailoverMends, problem, Quoted(problem.object));
}

void Tell(const Problem& problem, Findings& findings) {
    if (!IsTold(problem, findings)) {
        findings.SetGroup(common::ToUtf16(problem.group));
        findings.Add(problem.code, Printable(problem.object), AsSentence(problem.text), MendOf(problem));
    }
}

} // namespace

ClusterHealth ReadClusterHealth(const LogCapture& log) {
    ClusterHealth result;
    Report unread;
    try {
        const ClusterPicture cluster =
            ClusterInUse() == Answering::Vcs ? ReadVcsPicture(log) : ReadFailoverPicture(nullptr, unread);
        result.health = HealthOf(cluster, true); // what is not known is told by itself
        result.unread = unread.IsComplete() ? std::string() : unread.Warnings().front();
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        result.unread = failure.what(); // told in the end, when nothing else tells of it
    }
    return result;
}

void DiagnoseProblems(const ClusterHealth& cluster, const std::wstring& group, Findings& findings) {
    for (const Problem& problem : cluster.health.problems) {
        if (common::ToUtf16(problem.group) == group) {
            Tell(problem, findings);
        }
    }
}

void DiagnoseOtherProblems(const ClusterHealth& cluster, Findings& findings) {
    for (const Problem& problem : cluster.health.problems) {
        Tell(problem, findings);
    }
}

void TellUnreadHealth(const ClusterHealth& cluster, Findings& findings) {
    findings.SetGroup(std::wstring());
    if (!cluster.unread.empty() && !IsSomethingUnread(findings)) {
        findings.Add("cluster-unread", "cluster", AsSentence(cluster.unread), "clusctl status");
    }
}

bool IsSomethingUnread(const Findings& findings) {
    const std::vector<Finding>& all = findings.All();
    return std::any_of(all.begin(), all.end(), [](const Finding& finding) {
        return EndsWith(finding.code->name, "-unread") || EndsWith(finding.code->name, "-unlisted");
    });
}
