#include "ReportPage.h"

#include "Deployment.h"
#include "ModelSettings.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "common/UtcTime.h"

#include <clus_VirtualServerUtil.h>

using namespace picture;

namespace {

std::string EffectOfCluster(const Json& value) {
    return value == 1 ? "The library asks the failover cluster for virtual servers."
                      : "The library takes this computer for a plain server, but for VCS.";
}

std::string EffectOfQuorum(const Json& value) {
    return value == CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY ? "The library creates resources for a shared disk."
           : value == CVirtualServerUtil::CLUSTER_QUORUM_CCR
               ? "The library creates resources for continuous replication."
               : "The library creates no resource on a failover cluster.";
}

std::string EffectOfHome(const Json& value) {
    return value.is_null() ? "The library finds no web site of the product, nor the data path of a plain server."
                           : "The library finds the product's programs there, and the data of a plain server.";
}

std::string EffectOfAddress(const Json& value) {
    return value.is_null() ? "A plain server has the address 127.0.0.1." : "A plain server has this address.";
}

std::string EffectOfGuid(const Json& value) {
    return value.is_null() ? "A plain server has an ID of zeros." : "A plain server has this ID.";
}

std::string EffectOfDataRoot(const Json& value) {
    return value.is_null() ? "The library creates no resource for continuous replication, and no registry replication "
                             "on VCS is found by its folder."
                           : "The data of a plain server and of continuous replication is there, and the folders of "
                             "registry replication on VCS are below it.";
}

std::string EffectOfThirdParty(const Json& value) {
    return value.is_null() || value == 0 ? "The library tells its callers that there is no VCS."
                                         : "The library tells its callers that there is VCS.";
}

const struct {
    const char* name;
    std::string (*effect)(const Json& value);
} KnownSettings[] = {{"IsCluster", EffectOfCluster},
                     {"ClusterQuorumMode", EffectOfQuorum},
                     {"HomeDir", EffectOfHome},
                     {"ServerIP", EffectOfAddress},
                     {"SERVERGUID", EffectOfGuid},
                     {"DataRootPath", EffectOfDataRoot},
                     {"ThirdPartyClusterType", EffectOfThirdParty}};

std::string ShownSetting(const Json& value, const Json& type) {
    return value.is_string()  ? value.get<std::string>()
           : !value.is_null() ? value.dump()
           : type.is_string() ? "not taken: it is a " + type.get<std::string>()
                              : "not set";
}

PageTable Settings() {
    PageTable table = {"The product's settings on this computer", "", {"Setting", "Value", "Effect"}, {}};
    const Deployment deployment = ReadDeployment();
    table.rows.push_back({"Deployment", deployment.kind, "Because " + deployment.reason + "."});
    table.rows.push_back({"Registry key", common::ToUtf8(ProductKey()),
                          "The library reads the values there, but for DataRootPath and ThirdPartyClusterType."});
    const Json values = ReadProductSettings();
    const Json types = ReadProductSettingTypes();
    for (const auto& known : KnownSettings) {
        const Json value = values.value(known.name, Json());
        table.rows.push_back({known.name, ShownSetting(value, types.value(known.name, Json())), known.effect(value)});
    }
    return table;
}

// The doctor's findings, the worst first; what is well is only counted.
PageTable FindingsTable(const Findings& findings) {
    PageTable table = {"Findings", "", {"Level", "Code", "Group", "Object", "Seen", "Effect", "Mend", "Ask"}, {}};
    for (const FindingLevel level : {FindingLevel::Error, FindingLevel::Warning, FindingLevel::Note}) {
        for (const Finding& finding : findings.All()) {
            if (finding.code->level == level) {
                table.rows.push_back({LevelWord(level), finding.code->name, common::ToUtf8(finding.group),
                                      finding.object, finding.seen, finding.code->effect, finding.mend, finding.ask});
            }
        }
    }
    const size_t good = findings.Count(FindingLevel::Ok);
    table.rows.push_back(
        {LevelWord(FindingLevel::Ok), "", "", "", std::to_string(good) + " things are well.", "", "", ""});
    return table;
}

} // namespace

PageContent ReportPage(const Status& status, const Findings& findings, const std::vector<std::string>& warnings,
                       const Simulation* simulation) {
    PageContent content;
    content.madeAt = common::ShownUtcNow();
    content.madeBy = "clusctl " CLUSCTL_VERSION;
    content.computer = common::ToUtf8(ComputerName());
    if (simulation != nullptr) {
        content.simulated = simulation->File().empty() ? "no file" : common::ToUtf8(simulation->File());
    }
    content.warnings = warnings;
    content.tables = {FindingsTable(findings), Settings()};
    content.cluster = status.cluster;
    content.health = status.health;
    return content;
}
