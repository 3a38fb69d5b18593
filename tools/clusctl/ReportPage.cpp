#include "ReportPage.h"

#include "Deployment.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "common/UtcTime.h"

#include <clus_VirtualServerUtil.h>

using namespace picture;

namespace {

PageTable Settings() {
    PageTable table = {"The product's settings on this computer", "", {"Setting", "Value"}, {}};
    const Deployment deployment = ReadDeployment();
    table.rows.push_back({"Deployment", deployment.kind});
    table.rows.push_back({"Because", deployment.reason});
    table.rows.push_back({"Registry key", common::ToUtf8(CVirtualServerUtil::GetProductRegistryKey())});
    table.rows.push_back({"Data root", common::ToUtf8(CVirtualServerUtil::GetDataRootPath())});
    return table;
}

// The doctor's findings, the worst first; what is well is only counted.
PageTable FindingsTable(const Findings& findings) {
    PageTable table = {"Findings", "", {"Level", "Code", "Group", "Object", "Seen", "Mend"}, {}};
    for (const FindingLevel level : {FindingLevel::Error, FindingLevel::Warning, FindingLevel::Note}) {
        for (const Finding& finding : findings.All()) {
            if (finding.code->level == level) {
                table.rows.push_back({LevelWord(level), finding.code->name, common::ToUtf8(finding.group),
                                      finding.object, finding.seen, finding.mend});
            }
        }
    }
    const size_t good = findings.Count(FindingLevel::Ok);
    table.rows.push_back({LevelWord(FindingLevel::Ok), "", "", "", std::to_string(good) + " things are well.", ""});
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
