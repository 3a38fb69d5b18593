// What the status tells of the cluster, as findings: both judge by the same rule.
#include "DoctorParts.h"

#include "ClusterInUse.h"
#include "DoctorMends.h"
#include "Interruption.h"
#include "ReadPicture.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>
#include <cstring>
#include <optional>

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

void Tell(const Problem& problem, const PictureIndex& cluster, Findings& findings) {
    if (!IsTold(problem, findings)) {
        findings.SetGroup(common::ToUtf16(problem.group));
        const Mend mend = MendOf(problem, cluster);
        findings.Add(problem.code, Printable(problem.object), AsSentence(problem.text), mend.text, mend.ask);
    }
}

} // namespace

ClusterHealth ReadClusterHealth(const LogCapture& log) {
    ClusterHealth result;
    Report unread;
    try {
        result.picture = ClusterInUse() == Answering::Vcs ? ReadVcsPicture(log) : ReadFailoverPicture(nullptr, unread);
        result.health = HealthOf(result.picture, true); // what is not known is told by itself
        result.unread = unread.IsComplete() ? std::string() : unread.Warnings().front();
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        result.unread = failure.what(); // told in the end, when nothing else tells of it
    }
    return result;
}

void DiagnoseProblems(const ClusterHealth& cluster, const std::wstring& group, Findings& findings) {
    std::optional<PictureIndex> index; // most servers have no problem
    for (const Problem& problem : cluster.health.problems) {
        if (common::ToUtf16(problem.group) == group) {
            if (!index) {
                index.emplace(cluster.picture);
            }
            Tell(problem, *index, findings);
        }
    }
}

void DiagnoseOtherProblems(const ClusterHealth& cluster, Findings& findings) {
    const PictureIndex index(cluster.picture);
    for (const Problem& problem : cluster.health.problems) {
        Tell(problem, index, findings);
    }
}

void TellUnreadHealth(const ClusterHealth& cluster, Findings& findings) {
    findings.SetGroup(std::wstring());
    if (!cluster.unread.empty() && !IsSomethingUnread(findings)) {
        findings.AddQuestion("cluster-unread", "cluster", AsSentence(cluster.unread), "clusctl status");
    }
}

bool IsSomethingUnread(const Findings& findings) {
    const std::vector<Finding>& all = findings.All();
    return std::any_of(all.begin(), all.end(), [](const Finding& finding) {
        return EndsWith(finding.code->name, "-unread") || EndsWith(finding.code->name, "-unlisted");
    });
}
