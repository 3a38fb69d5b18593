// The doctor's look at one virtual server on VCS: what the product's resources need, and how these are.
#include "DoctorParts.h"

#include "DoctorMends.h"
#include "Interruption.h"
#include "ModelSettings.h"
#include "Text.h"
#include "ThisComputer.h"
#include "VcsProduct.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsTools.h"

#include "common/Text.h"
#include "core/VeritasNames.h"

using namespace clus::veritas;

namespace {

bool Says(const std::wstring& state, const wchar_t* word) {
    return state.find(word) != std::wstring::npos;
}

// Whether the keys of a RegRep resource hold the product's, perhaps among others.
bool HoldsProductKey(const std::string& keys) {
    return common::Folded(common::ToUtf16(keys)).find(common::Folded(CompiledInProductKey)) != std::wstring::npos;
}

class VcsServerRound {
public:
    VcsServerRound(const LogCapture& log, const CVeritasVirtualServerInfo& server, Findings& findings)
        : m_log(log), m_server(server), m_group(Printable(server.sGroupName)), m_findings(findings) {
    }

    void Run() {
        m_findings.Add("vcs-server", m_group,
                       "The library takes it for a virtual server: its Information Store is " +
                           Printable(m_server.sExchangeResName) + ".");
        LookAtLanman();
        LookAtGroup();
        LookAtMounts();
        LookAtProduct();
    }

private:
    // Null of one that is empty. Throws Failure when the tool does not tell it.
    Json ReadAttribute(const std::wstring& resource, const wchar_t* attribute) const {
        const ToolWatch watch(m_log);
        Json value = ReadVcsAttribute(resource, attribute);
        watch.Require(true, "cannot read " + Printable(attribute) + " of " + Quoted(resource));
        return value;
    }

    void LookAtLanman() {
        if (m_server.sLanmanResName.empty()) {
            m_findings.Add("vcs-lanman-missing", m_group, "It has no Lanman resource.", LanmanCommand(m_group));
        } else if (ReadAttribute(m_server.sLanmanResName, VirtualNameAttribute).is_null()) {
            m_findings.Add("vcs-virtual-name-missing", Printable(m_server.sLanmanResName), "It has no VirtualName.",
                           WhileWritable("hares -modify " + Printable(m_server.sLanmanResName) + " VirtualName NAME"));
        }
    }

    void LookAtGroup() {
        const GroupState state = LastGroupState(m_log, m_server.sGroupName);
        for (const SystemState& row : state.states) {
            if (Says(row.state, L"FAULTED") && !state.system.empty() && row.system != state.system) {
                m_findings.Add("vcs-group-faulted-elsewhere", m_group,
                               "It is faulted on " + Printable(row.system) + ", and cannot go there.",
                               "hagrp -clear " + m_group + " -sys " + Printable(row.system));
            } else if (Says(row.state, L"FAULTED")) {
                m_findings.Add("vcs-group-faulted", m_group, "It is faulted on " + Printable(row.system) + ".",
                               "hagrp -clear " + m_group + " -sys " + Printable(row.system));
            }
        }
        if (!m_server.bGroupOnline) {
            std::vector<picture::StateOnNode> states;
            for (const SystemState& row : state.states) {
                states.push_back({common::ToUtf8(row.system), common::ToUtf8(row.state)});
            }
            m_findings.Add("vcs-group-offline", m_group, "It is online on no system.",
                           "hagrp -online " + m_group + " -sys " + SystemToComeOnline(states));
        } else if (IsThisComputer(m_server.sOnlineNode)) {
            m_findings.Add("vcs-group-here", m_group, std::string("It is ") + state.word + " on this system.");
        } else {
            m_findings.AddQuestion("vcs-group-other-system", m_group,
                                   std::string("It is ") + state.word + " on " + Printable(m_server.sOnlineNode) + ".",
                                   "clusctl doctor, on " + Printable(m_server.sOnlineNode));
        }
    }

    void LookAtMounts() {
        const VcsNames attendants = ListVcsNames(m_log, &CVeritasCluster::EnumResourceNamesW, "resources",
                                                 {{TypeAttribute, ExchServiceType},
                                                  {ServiceAttribute, SystemAttendantService},
                                                  {GroupAttribute, m_server.sGroupName}});
        const VcsNames mounts = TopMountResources(m_log, m_server.sGroupName);
        if (attendants.empty()) {
            m_findings.Add("vcs-attendant-missing", m_group, "None of its resources is the System Attendant.",
                           "create the System Attendant's resource with Exchange's own set-up",
                           "clusctl vcs resources --where Group=" + m_group);
        } else if (mounts.empty()) {
            m_findings.Add("vcs-mount-missing", Printable(attendants.front()), "It depends on no MountV resource.",
                           LinkCommand(Printable(attendants.front()), MountOfGroup()), AskForMounts());
        } else if (mounts.size() > 1) {
            m_findings.Add("vcs-mount-several", m_group,
                           "Several MountV resources are top-most: " + ListText(mounts) + ".",
                           "name one of them with --mount when the product's resources are created");
        } else {
            m_findings.Add("vcs-mount", Printable(mounts.front()), "It is the top-most MountV resource.");
        }
    }

    void LookAtProduct() {
        VcsNames all;
        const ToolWatch watch(m_log);
        const bool isCollected = CVeritasCluster().CollectKOVAResNames(m_server.sGroupName.c_str(), all);
        const bool areAll = isCollected && watch.Problems().empty(); // not with a blank in the data root, for example
        const RegistryReplication replication = FindRegistryReplication(m_log, m_server.sGroupName);
        LookAtReplications(replication);
        const bool hasNone = areAll ? all.empty()
                                    : ListResourcesOfService(m_log, m_server.sGroupName, HostService).empty() &&
                                          ListResourcesOfService(m_log, m_server.sGroupName, SAService).empty();
        if (hasNone && replication.resource.empty()) {
            const Creation creation = PlanCreation();
            m_findings.Add("vcs-product-missing", m_group, "It holds none of the product's resources.",
                           creation.Mend(""));
            TellCreation(creation);
            return;
        }
        const Creation creation = PlanCreation();
        if (replication.resource.empty()) {
            m_findings.Add("vcs-replication-missing", m_group,
                           "No RegRep resource replicates the product's registry key and no other.", creation.Mend(""));
        }
        const bool hasHost = LookAtService(HostService, "vcs-service-missing", creation.Mend(""));
        const bool hasAttendant = LookAtService(SAService, "vcs-service-missing", creation.Mend(""));
        LookAtService(QAVMonitorService, "vcs-service-optional", creation.Mend(" --quarantine"));
        LookAtService(RemoteConfigService, "vcs-service-optional", creation.Mend(" --remote-config"));
        if (replication.resource.empty() || !hasHost || !hasAttendant) {
            TellCreation(creation);
        }
    }

    // The command that creates what is missing of the product's resources, and why it would refuse.
    struct Creation {
        std::string command;
        std::string reason; // empty: it would not
        std::string hint;

        std::string Mend(const std::string& options) const {
            return (reason.empty() ? "" : "mend what stands in the way, then ") + command + options;
        }
    };

    Creation PlanCreation() const {
        Creation creation;
        ProductCreateOptions options;
        try {
            options = NeededOptions(m_log, m_server.sGroupName);
            RequireVcsCreatable(m_log, options);
        } catch (const Interrupted&) {
            throw;
        } catch (const Failure& failure) {
            creation.reason = AsSentence(failure.what());
            creation.hint = failure.Hint();
        }
        creation.command = "clusctl vcs product create " + m_group;
        for (const auto& option :
             {std::make_pair(" --mount ", options.mount), std::make_pair(" --regrep ", options.regRep),
              std::make_pair(" --data-path ", options.dataPath)}) {
            creation.command += option.second.empty() ? "" : option.first + Printable(option.second);
        }
        creation.command += " --rw";
        return creation;
    }

    void TellCreation(const Creation& creation) {
        if (creation.reason.empty()) {
            m_findings.Add("vcs-creation-possible", m_group, "Nothing stands in the way of creating what is missing.");
        } else {
            m_findings.Add("vcs-creation-blocked", m_group, creation.reason, creation.hint,
                           "clusctl vcs resources --where Group=" + m_group);
        }
    }

    // The one MountV resource of the group, if there is no other.
    std::string MountOfGroup() const {
        const VcsNames mounts = ListVcsNames(m_log, &CVeritasCluster::EnumResourceNamesW, "resources",
                                             {{GroupAttribute, m_server.sGroupName}, {TypeAttribute, MountVType}});
        return mounts.size() == 1 ? Printable(mounts.front()) : "MOUNT";
    }

    std::string AskForMounts() const {
        return "clusctl vcs resources --where Group=" + m_group + " --where Type=" + Printable(MountVType);
    }

    void LookAtReplications(const RegistryReplication& replication) {
        if (!replication.resource.empty()) {
            m_findings.Add("vcs-replication", Printable(replication.resource),
                           "It replicates the product's registry key.");
            LookAtStates(replication.resource, "");
            if (replication.disk.empty()) {
                m_findings.Add("vcs-replication-disk-missing", Printable(replication.resource),
                               "It depends on no MountV resource of the group.",
                               LinkCommand(Printable(replication.resource), MountOfGroup()), AskForMounts());
            }
        }
        for (const std::wstring& name :
             ListVcsNames(m_log, &CVeritasCluster::EnumResourceNamesW, "resources",
                          {{GroupAttribute, m_server.sGroupName}, {TypeAttribute, RegRepType}})) {
            const Json keys = ReadAttribute(name, KeysAttribute);
            const std::string text = keys.is_string() ? keys.get<std::string>() : std::string();
            if (text.empty()) {
                m_findings.Add("vcs-replication-half-made", Printable(name), "It replicates no key.",
                               "clusctl vcs product delete " + m_group + " --rw");
            } else if (name != replication.resource && HoldsProductKey(text)) {
                m_findings.Add("vcs-replication-more-keys", Printable(name),
                               "It replicates the product's key and others: " + Printable(text) + ".",
                               "give the other keys a RegRep resource of their own");
            }
        }
    }

    // Whether there is one.
    bool LookAtService(const wchar_t* service, const char* whenMissing, const std::string& mend) {
        const VcsNames resources = ListResourcesOfService(m_log, m_server.sGroupName, service);
        const std::string name = Printable(std::wstring(service));
        if (resources.empty()) {
            m_findings.Add(whenMissing, name, "No resource of the group runs it.", mend);
            return false;
        }
        if (resources.size() > 1) {
            m_findings.Add("vcs-service-several", name, "Several resources run it: " + ListText(resources) + ".",
                           "clusctl vcs resource delete " + Printable(resources.back()) + " --rw");
        }
        LookAtStates(resources.front(), "runs " + name + " and ");
        return true;
    }

    // Of a resource that has to be online where the group is; `does` precedes "is online".
    void LookAtStates(const std::wstring& resource, const std::string& does) {
        const std::string name = Printable(resource);
        const SystemStates states = ReadResourceStates(m_log, resource);
        const std::string switchOn = "clusctl vcs resource online " + name + " ";
        const std::string probe = "hares -probe " + name + " -sys ";
        for (const SystemState& row : states) {
            const std::string system = Printable(row.system);
            if (Says(row.state, L"FAULTED") && m_server.bGroupOnline && row.system != m_server.sOnlineNode) {
                m_findings.Add("vcs-resource-faulted-elsewhere", name, "It is faulted on " + system + ".",
                               "hares -clear " + name + " -sys " + system);
            } else if (Says(row.state, L"FAULTED")) {
                m_findings.Add("vcs-resource-faulted", name, "It is faulted on " + system + ".", switchOn + system);
            } else if (Says(row.state, L"UNKNOWN")) {
                m_findings.Add("vcs-resource-not-probed", name, "VCS does not know its state on " + system + ".",
                               probe + system);
            }
        }
        if (!m_server.bGroupOnline) {
            return;
        }
        const std::wstring state = StateOn(states, m_server.sOnlineNode);
        if (IsOnline(state)) {
            m_findings.Add("vcs-resource-online", name,
                           "It " + does + "is online on " + Printable(m_server.sOnlineNode) + ".");
        } else if (!Says(state, L"FAULTED") && !Says(state, L"UNKNOWN")) {
            m_findings.Add("vcs-resource-offline", name,
                           "It is not online on " + Printable(m_server.sOnlineNode) + ", where its group is.",
                           switchOn + Printable(m_server.sOnlineNode));
        }
    }

    const LogCapture& m_log;
    const CVeritasVirtualServerInfo& m_server;
    const std::string m_group;
    Findings& m_findings;
};

} // namespace

void DiagnoseVcsServer(const LogCapture& log, const CVeritasVirtualServerInfo& server, Findings& findings) {
    findings.SetGroup(server.sGroupName);
    try {
        VcsServerRound(log, server, findings).Run();
    } catch (const Failure& failure) {
        findings.AddQuestion("vcs-server-unread", Printable(server.sGroupName), AsSentence(failure.what()),
                             "clusctl vcs servers " + Printable(server.sGroupName));
    }
}
