#include "Doctor.h"

#include "ClusterInUse.h"
#include "DoctorCodes.h"
#include "DoctorParts.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>

const char* LevelWord(FindingLevel level) {
    static const char* const words[] = {"ok", "note", "warning", "error"};
    return words[static_cast<int>(level)];
}

void Findings::Add(const char* code, const std::string& object, const std::string& seen, const std::string& mend,
                   const std::string& ask) {
    m_findings.push_back({&FindDoctorCode(code), m_group, object, seen, mend, ask});
}

size_t Findings::Count(FindingLevel level) const {
    return static_cast<size_t>(std::count_if(m_findings.begin(), m_findings.end(),
                                             [level](const Finding& finding) { return finding.code->level == level; }));
}

FindingLevel Findings::Worst() const {
    FindingLevel worst = FindingLevel::Ok;
    for (const Finding& finding : m_findings) {
        worst = std::max(worst, finding.code->level);
    }
    return worst;
}

Json Findings::Records() const {
    const auto orNull = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
    Json records = Json::array();
    for (const Finding& finding : m_findings) {
        records.push_back({{"level", LevelWord(finding.code->level)},
                           {"code", finding.code->name},
                           {"group", TextOrNull(finding.group)},
                           {"object", finding.object},
                           {"seen", finding.seen},
                           {"effect", orNull(finding.code->effect)},
                           {"mend", orNull(finding.mend)},
                           {"ask", orNull(finding.ask)}});
    }
    return records;
}

Findings Diagnose(const LogCapture& log, const DoctorRequest& request) {
    Findings findings;
    TellBundle(findings);
    if (!TellRecorded(RecordedPart::Machine, findings)) {
        DiagnoseMachine(log, findings);
    }
    DiagnoseSettings(findings);
    if (ClusterInUse() == Answering::Vcs) {
        DiagnoseVcs(log, request, findings);
    } else {
        DiagnoseFailoverCluster(log, request.wanted, findings);
    }
    return findings;
}

void TellNoServer(const std::wstring& wanted, const std::string& lister, Findings& findings) {
    if (IsSomethingUnread(findings)) {
        if (!wanted.empty()) {
            findings.AddQuestion("server-unread", Printable(wanted), "No group that can be read is it, or holds it.",
                                 lister);
        }
        return;
    }
    if (!wanted.empty()) {
        throw Failure(Errors::ServerNotFound,
                      "the cluster has no virtual server or group " + Quoted(wanted) + " that could be a server")
            .Hint("'" + lister + "' lists what there is.");
    }
    findings.Add("servers-none", "cluster", "No group holds a resource of Exchange or of the product.",
                 "install Exchange in a group of the cluster");
}

std::wstring TextMember(const Json& record, const char* member) {
    const auto found = record.find(member);
    return found == record.end() || !found->is_string() ? std::wstring() : common::ToUtf16(found->get<std::string>());
}

std::string AsSentence(const std::string& message) {
    std::string text;
    for (size_t begin = 0; begin <= message.size();) {
        const size_t end = std::min(message.find('\n', begin), message.size());
        const size_t first = message.find_first_not_of(' ', begin);
        text += (text.empty() ? "" : "; ") + Printable(message.substr(first, end - first));
        begin = end + 1;
    }
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text + ".";
}
