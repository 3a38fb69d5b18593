#include "VcsRehearsal.h"

#include "RehearsalText.h"

Report RehearsalReport(const std::vector<ToolRun>& runs, const VcsDryRun& dryRun) {
    Json commands = Json::array();
    for (const ToolRun& run : runs) {
        commands.push_back(run.command);
    }
    Json difference = Json::array();
    for (const std::string& line : dryRun.Difference()) {
        difference.push_back(line);
    }
    Report report;
    report.AddSentence("commands", commands, TitledBlock("Commands:", commands, "none are known"));
    report.AddSentence("difference", difference, TitledBlock("Change of the configuration:", difference, "none"));
    return report;
}
