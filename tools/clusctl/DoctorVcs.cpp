// The doctor's look at VCS: its tools, its engine, the mode of the configuration, and which groups are servers.
#include "DoctorParts.h"

#include "FileVersion.h"
#include "Text.h"
#include "ThisComputer.h"
#include "VcsFolder.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsToolFiles.h"
#include "VcsToolProcess.h"
#include "VcsTools.h"

#include "common/Files.h"
#include "common/Text.h"
#include "core/VeritasNames.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>

using namespace clus::veritas;

namespace {

const wchar_t ClusterTool[] = L"haclus"; // the library does not run it

// Whether all that the library runs are there, and nobody else may change any.
bool LookAtTools(bool allowsWritable, Findings& findings) {
    if (TellRecorded(RecordedPart::VcsTools, findings)) {
        return true; // the simulator's are asked
    }
    const std::vector<VcsToolFile> tools = FindVcsTools();
    bool areThere = true;
    for (const VcsToolFile& tool : tools) {
        if (tool.path.empty() && tool.tool == ClusterTool) {
            continue; // the mode is not known then, which is told there
        }
        if (tool.path.empty()) {
            areThere = false;
            findings.Add("vcs-tool-missing", Printable(tool.tool), "It is not on the search path.",
                         "add the folder of the VCS tools to PATH");
        } else {
            const std::string version = FileVersion(tool.path);
            findings.Add("vcs-tool", Printable(tool.tool),
                         "It is " + QuotedPath(tool.path) +
                             (version.empty() ? std::string(".") : ", of version " + version + "."));
        }
        const std::wstring planted = VcsFolder::CallersFolder() + L"\\" + tool.tool + L".exe";
        if (common::FileExists(planted) && !common::IsSameName(planted, tool.path)) {
            findings.Add("vcs-tool-current-folder", Printable(tool.tool),
                         "There is another one in the current folder: " + QuotedPath(planted) + ".",
                         "del " + QuotedPath(planted));
        }
    }
    try {
        if (!allowsWritable) {
            RequireTrustedTools(tools);
        }
    } catch (const Failure& failure) {
        findings.Add("vcs-tool-writable", "VCS tools", AsSentence(failure.what()), failure.Hint());
        return false;
    }
    return areThere;
}

void LookAtSettings(Findings& findings) {
    if (CVeritasCluster().GetThirdPartyClusterType() == THIRD_PARTY_CLUSTER_TYPE_NONE) {
        findings.Add("vcs-type-none", "ThirdPartyClusterType", "It is 0, not set, or cannot be read.",
                     "run the product's set-up for VCS");
    }
    const std::wstring root = CVirtualServerUtil::GetDataRootPath();
    if (root.empty()) {
        findings.Add("vcs-data-root-missing", "DataRootPath", "It is not set.", "run the product's set-up for VCS");
    } else if (root.find_first_of(L" \t") != std::wstring::npos) {
        findings.Add("vcs-data-root-blank", "DataRootPath", "It is " + Quoted(root) + ": a blank is in it.",
                     "choose a data root without blanks");
    }
}

bool LookAtEngine(const LogCapture& log, Findings& findings) {
    try {
        const VcsNames systems = ListVcsNames(log, &CVeritasCluster::EnumSystemNames, "systems");
        findings.Add("vcs-engine", "VCS", "Its engine answers. Systems: " + ListText(systems) + ".");
        const bool isHere = std::any_of(systems.begin(), systems.end(), IsThisComputer);
        if (!isHere) {
            findings.Add("vcs-system-missing", Printable(ComputerName()),
                         "The cluster has no system of this computer's name.",
                         "run clusctl on a system of the cluster");
        }
        return true;
    } catch (const Failure& failure) {
        const bool isDown = failure.Kind().name == std::string(Errors::EngineDown.name);
        findings.Add(isDown ? "vcs-engine-down" : "vcs-not-asked", "VCS", AsSentence(failure.what()),
                     isDown ? "hastart" : "", isDown ? "" : "clusctl vcs systems");
        return false;
    }
}

// Empty when the tool is missing, or says nothing of use.
std::string ReadOnlyValue() {
    if (!HasVcsTool(ClusterTool)) {
        return std::string();
    }
    const std::string answer = RunVcsTool(ClusterTool, L"-value ReadOnly").output;
    return answer.substr(0, answer.find_last_not_of(" \t\n") + 1);
}

void LookAtMode(Findings& findings) {
    if (TellRecorded(RecordedPart::VcsMode, findings)) {
        return;
    }
    const std::string value = ReadOnlyValue();
    if (value == "0") {
        findings.Add("vcs-mode-open", "configuration", "It is open for writing.", "clusctl vcs mode ro");
    } else if (value == "1") {
        findings.Add("vcs-mode-closed", "configuration", "It is written to disk and read-only.");
    } else {
        findings.Add("vcs-mode-unknown", "configuration", "haclus does not tell whether it is open for writing.");
    }
}

// Groups with resources of Exchange that the library takes for no server.
void LookAtOtherGroups(const LogCapture& log, const std::vector<CVeritasVirtualServerInfo>& servers,
                       const std::wstring& wanted, bool& isFound, Findings& findings) {
    for (const std::wstring& group : ListVcsGroups(log)) {
        const bool isServer = std::any_of(servers.begin(), servers.end(),
                                          [&group](const auto& server) { return server.sGroupName == group; });
        if (isServer || (!wanted.empty() && !common::IsSameName(group, wanted))) {
            continue;
        }
        const VcsNames resources = ListVcsNames(log, &CVeritasCluster::EnumResourceNamesW, "resources",
                                                {{GroupAttribute, group}, {TypeAttribute, ExchServiceType}});
        if (!resources.empty()) {
            isFound = true;
            findings.SetGroup(group);
            findings.Add("vcs-store-missing", Printable(group),
                         "It holds resources of Exchange (" + ListText(resources) +
                             "), none of which is the Information Store.",
                         "create the Information Store's resource with Exchange's own set-up",
                         "clusctl vcs attribute " + Printable(resources.front()) + " Service");
        }
    }
}

bool IsWanted(const CVeritasVirtualServerInfo& server, const std::wstring& wanted) {
    if (wanted.empty() || common::IsSameName(server.sGroupName, wanted)) {
        return true;
    }
    const Json name =
        server.sLanmanResName.empty() ? Json() : ReadVcsAttribute(server.sLanmanResName, VirtualNameAttribute);
    return name.is_string() && common::IsSameName(common::ToUtf16(name.get<std::string>()), wanted);
}

void LookAtServers(const LogCapture& log, const ClusterHealth& health, const std::wstring& wanted, Findings& findings) {
    std::vector<CVeritasVirtualServerInfo> servers;
    const ToolWatch watch(log);
    if (!CVeritasCluster().CollectExchangeEVSInfo(servers) || !watch.Problems().empty()) {
        findings.AddQuestion("vcs-servers-unread", "virtual servers", "Not all of them can be read.",
                             "clusctl vcs servers");
    }
    bool isFound = false;
    for (const CVeritasVirtualServerInfo& server : servers) {
        const ToolWatch asked(log);
        if (IsWanted(server, wanted)) {
            isFound = true;
            DiagnoseVcsServer(log, server, findings);
            DiagnoseProblems(health, server.sGroupName, findings);
        } else if (!asked.Problems().empty()) {
            findings.SetGroup(server.sGroupName);
            findings.AddQuestion("vcs-server-unread", Printable(server.sGroupName), "Its network name cannot be read.",
                                 "clusctl vcs servers " + Printable(server.sGroupName));
        }
    }
    try {
        LookAtOtherGroups(log, servers, wanted, isFound, findings);
    } catch (const Failure& failure) {
        findings.AddQuestion("vcs-servers-unread", "groups", AsSentence(failure.what()), "clusctl vcs groups");
    }
    findings.SetGroup(std::wstring());
    if (!isFound) {
        TellNoServer(wanted, "clusctl vcs servers", findings);
    }
}

} // namespace

void DiagnoseVcs(const LogCapture& log, const DoctorRequest& request, Findings& findings) {
    LookAtSettings(findings);
    if (!LookAtTools(request.allowsWritableTools, findings) || !LookAtEngine(log, findings)) {
        return;
    }
    LookAtMode(findings);
    const ClusterHealth health = ReadClusterHealth(log);
    DiagnoseProblems(health, std::wstring(), findings);
    LookAtServers(log, health, request.wanted, findings);
    if (request.wanted.empty()) {
        DiagnoseOtherProblems(health, findings);
    }
    TellUnreadHealth(health, findings);
}
