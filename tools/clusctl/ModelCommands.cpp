#include "ModelCommands.h"

#include "CommandLine.h"
#include "ModelFindings.h"
#include "ModelFromRecording.h"
#include "ModelPicture.h"
#include "PictureCommands.h"
#include "PictureJson.h"
#include "Text.h"

#include <memory>

namespace {

const Columns FindingTitles = {
    {"file", "FILE"}, {"line", "LINE"}, {"column", "COLUMN"}, {"level", "LEVEL"}, {"message", "FINDING"},
};

const Columns ModelTitles = {
    {"name", "Cluster"},
    {"kind", "Kind"},
    {"running", "Running"},
    {"quorum", "Quorum"},
    {"configuration", "Configuration"},
    {"clock", "Clock"},
    {"behaviour", "Behaviour"},
    {"faults", "Faults"},
};

const Columns NodeTitles = {{"name", "NODE"}, {"state", "STATE"}};

const Columns DependencyTitles = {{"group", "GROUP"}, {"requires", "REQUIRES"}, {"relationship", "RELATIONSHIP"}};

const Columns DiskTitles = {{"resource", "DISK"}, {"number", "NUMBER"}, {"id", "ID"}, {"partitions", "PARTITIONS"}};

const Columns SettingTitles = {{"name", "SETTING"}, {"value", "VALUE"}};

const Columns UnreadTitles = {{"object", "NOT READ OF"}, {"part", "PART"}, {"code", "CODE"}};

const Columns DifferenceTitles = {
    {"change", "CHANGE"}, {"object", "OBJECT"}, {"property", "PROPERTY"}, {"before", "BEFORE"}, {"after", "AFTER"},
};

struct TwoModels {
    std::wstring before;
    std::wstring after;
    bool tells = false; // by the exit code
};

Json NumberOrNull(std::size_t number) {
    return number == 0 ? Json() : Json(number);
}

Report Check(const std::wstring& model) {
    Json findings = Json::array();
    bool isInOrder = true;
    for (const ModelFinding& finding : CheckModel(model)) {
        findings.push_back({{"file", finding.file},
                            {"line", NumberOrNull(finding.line)},
                            {"column", NumberOrNull(finding.column)},
                            {"level", finding.isNote ? "note" : "error"},
                            {"message", finding.message}});
        isInOrder = isInOrder && finding.isNote;
    }
    Report report;
    report.AddTable("findings", std::move(findings), FindingTitles, "The model is in order.");
    if (!isInOrder) {
        throw FailureWithReport(Failure("the model " + Quoted(model) + " is not in order"), report);
    }
    return report;
}

// A table that is left out when there is nothing to say in it.
void AddTableOf(const char* key, Json records, const Columns& columns, Report& report) {
    if (records.empty()) {
        report.AddMember(key, std::move(records));
    } else {
        report.AddTable(key, std::move(records), columns, std::string());
    }
}

Report Show(const std::wstring& path) {
    ModelPicture picture = PictureOfModel(path);
    Json model = ClusterJson(picture.cluster);
    model.update(picture.model);
    Report report;
    report.AddRecord("model", std::move(model), ModelTitles);
    report.AddTable("nodes", NodeRecords(picture.cluster), NodeTitles, "The model has no node.");
    AddTrees(picture.cluster, report);
    AddTableOf("groupDependencies", std::move(picture.groupDependencies), DependencyTitles, report);
    AddTableOf("disks", std::move(picture.disks), DiskTitles, report);
    AddTableOf("settings", std::move(picture.settings), SettingTitles, report);
    AddTableOf("unread", std::move(picture.unread), UnreadTitles, report);
    return report;
}

// Lists and numbers as they stand in a model.
Json Shown(const Json& value) {
    return value.is_null() || value.is_string() ? value : Json(value.dump());
}

Report Compare(const TwoModels& models) {
    Json differences = Json::array();
    for (const ModelDifference& difference : CompareModels(models.before, models.after)) {
        differences.push_back({{"change", difference.change},
                               {"object", difference.object},
                               {"property", difference.property.empty() ? Json() : Json(difference.property)},
                               {"before", Shown(difference.before)},
                               {"after", Shown(difference.after)}});
    }
    const bool isSame = differences.empty();
    Report report;
    report.AddTable("differences", std::move(differences), DifferenceTitles, "The models are the same.");
    if (models.tells && !isSame) {
        throw FailureWithReport(Failure("the models differ"), report);
    }
    return report;
}

} // namespace

void AddModelCommands(CommandLine& commandLine) {
    CLI::App& family = commandLine.AddFamily(
        headings::Rehearsal, "model", "Show and check models of the simulators, compare them, make them of recordings");

    const auto shown = std::make_shared<std::wstring>();
    CLI::App& show = commandLine.AddTo(family, "show", "Show what a model looks like, without asking a cluster",
                                       [shown](const LogCapture&) { return Show(*shown); });
    CommandLine::AddText(show, "PATH", *shown, "PATH", "A model, or a folder with a main.cf").required();

    const auto checked = std::make_shared<std::wstring>();
    CLI::App& check = commandLine.AddTo(family, "check", "Tell what is wrong with a model, and where",
                                        [checked](const LogCapture&) { return Check(*checked); });
    CommandLine::AddText(check, "PATH", *checked, "PATH", "A model, or a folder with a main.cf").required();

    const auto models = std::make_shared<TwoModels>();
    CLI::App& difference = commandLine.AddTo(family, "diff", "Tell how two models differ, object by object",
                                             [models](const LogCapture&) { return Compare(*models); });
    CommandLine::AddText(difference, "PATH", models->before, "PATH", "A model, or a folder with a main.cf").required();
    CommandLine::AddText(difference, "OTHER-PATH", models->after, "OTHER-PATH", "Another one of the same kind")
        .required();
    difference.add_flag("--exit-code", models->tells, "End with exit code 1 when they differ");

    AddModelFromRecordingCommand(commandLine, family);
}
