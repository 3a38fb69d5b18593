#include "RecordedVcs.h"

#include "HeardTool.h"

#include "common/Text.h"
#include "core/ToolSecrets.h"

#include <algorithm>

namespace {

typedef RecordedVcs::Row Row;

const char State[] = "State";
const char SystemState[] = "SysState";

class VcsListener {
public:
    RecordedVcs Hear(const recording::Recording& recording);

private:
    void HearTool(const HeardTool& run);
    void HearCluster(const HeardTool& run);
    void HearSystems(const HeardTool& run);
    void HearObjects(const HeardTool& run, HeardObjects& objects);
    void HearTable(const HeardTool& run, TableForm form, HeardObjects& objects);
    void HearValue(const HeardTool& run, HeardObjects& objects);
    void HearState(const HeardTool& run, HeardObjects& objects);
    void HearList(const HeardTool& run, HeardObjects& objects);
    void HearConditions(const HeardTool& run, const std::vector<std::string>& names);
    void HearLinks(const HeardTool& run);
    void HearGroupLinks(const HeardTool& run);
    void HearMembers(const HeardTool& run);
    void HearChange(const HeardTool& run);

    RecordedVcs m_vcs;
    std::size_t m_answer = 0;
};

bool Has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Those that are not there yet go behind the one that was shown before them.
void InsertLinks(const std::vector<Row>& shown, std::vector<Row>& links) {
    std::size_t place = 0;
    for (const Row& link : shown) {
        const auto known = std::find(links.begin(), links.end(), link);
        if (known == links.end()) {
            links.insert(links.begin() + static_cast<std::ptrdiff_t>(place), link);
        } else {
            place = static_cast<std::size_t>(known - links.begin());
        }
        ++place;
    }
}

// An answer about `names`, or all: what it does not show is gone. The rows in which they are parents come first, each
// part in the order of all links. `parent`: its column.
void TakeLinks(const std::vector<Row>& shown, std::size_t parent, const std::vector<std::string>& names,
               std::vector<Row>& links) {
    if (names.empty()) {
        links = shown;
        return;
    }
    links.erase(std::remove_if(links.begin(), links.end(),
                               [&](const Row& link) {
                                   return (Has(names, link[parent]) || Has(names, link[parent + 1])) &&
                                          std::find(shown.begin(), shown.end(), link) == shown.end();
                               }),
                links.end());
    const auto asChild =
        std::find_if(shown.begin(), shown.end(), [&](const Row& link) { return !Has(names, link[parent]); });
    InsertLinks(std::vector<Row>(shown.begin(), asChild), links);
    InsertLinks(std::vector<Row>(asChild, shown.end()), links);
}

void VcsListener::HearTool(const HeardTool& run) {
    if (run.isElsewhere) {
        return;
    }
    ++m_answer;
    if (!run.isQuestion) {
        HearChange(run);
    } else if (run.tool == "haclus") {
        HearCluster(run);
    } else if (run.tool == "hasys") {
        HearSystems(run);
    } else if (run.Is("hagrp", "-dep")) {
        HearGroupLinks(run);
    } else if (run.Is("hagrp", "-resources")) {
        HearMembers(run);
    } else if (run.tool == "hagrp") {
        HearObjects(run, m_vcs.groups);
    } else if (run.Is("hares", "-dep")) {
        HearLinks(run);
    } else if (run.tool == "hares") {
        HearObjects(run, m_vcs.resources);
    }
}

void VcsListener::HearCluster(const HeardTool& run) {
    std::string value;
    if (run.verb == "-display") {
        HearTable(run, TableForm::Value, m_vcs.cluster);
    } else if (run.verb == "-value" && run.names.size() == 1 && run.Value(value)) {
        m_vcs.cluster.There("").Tell(run.names[0], value);
    }
}

void VcsListener::HearSystems(const HeardTool& run) {
    std::string value;
    if (run.verb == "-display") {
        HearTable(run, TableForm::ObjectValue, m_vcs.systems);
    } else if (run.verb == "-value") {
        HearValue(run, m_vcs.systems);
    } else if (run.verb == "-list") {
        HearList(run, m_vcs.systems);
    } else if (run.verb == "-state" && run.names.size() == 1 && run.Value(value)) {
        m_vcs.systems.There(run.names[0]).Tell(SystemState, value);
    } else if (run.verb == "-state") {
        for (const ShownValue& row : run.Values(TableForm::ObjectValue)) {
            m_vcs.systems.Tell(row, m_answer, Told::Attribute);
        }
    }
}

void VcsListener::HearObjects(const HeardTool& run, HeardObjects& objects) {
    if (run.verb == "-display") {
        HearTable(run, TableForm::ObjectSystemValue, objects);
    } else if (run.verb == "-value") {
        HearValue(run, objects);
    } else if (run.verb == "-state") {
        HearState(run, objects);
    } else if (run.verb == "-list") {
        HearList(run, objects);
    }
}

void VcsListener::HearTable(const HeardTool& run, TableForm form, HeardObjects& objects) {
    const Told told = !run.system.empty() ? Told::Row : run.attributes.empty() ? Told::Object : Told::Attribute;
    std::vector<std::string> names;
    for (const ShownValue& row : run.Values(form)) {
        objects.Tell(row, m_answer, told);
        if (names.empty() || names.back() != row.object) {
            names.push_back(row.object);
        }
    }
    if (run.isWhole && told == Told::Object && run.names.empty()) {
        objects.ListAll(names, false);
    }
}

void VcsListener::HearValue(const HeardTool& run, HeardObjects& objects) {
    std::string value;
    if (run.names.size() >= 2 && run.Value(value)) {
        objects.TellValue({run.names[0], run.names[1], run.names.size() > 2 ? run.names[2] : AllSystems, value});
    }
}

void VcsListener::HearState(const HeardTool& run, HeardObjects& objects) {
    std::string value;
    if (run.names.size() == 1 && !run.system.empty() && run.Value(value)) {
        objects.Tell({run.names[0], State, run.system, value}, m_answer, Told::Row);
        return;
    }
    for (const ShownValue& row : run.Values(TableForm::ObjectSystemValue)) {
        objects.Tell(row, m_answer, run.system.empty() ? Told::Attribute : Told::Row);
    }
}

void VcsListener::HearList(const HeardTool& run, HeardObjects& objects) {
    if (!run.hasWorked) {
        return;
    }
    const bool isOfAll = run.names.empty();
    std::vector<std::string> names;
    for (const Row& line : run.Lines()) {
        HeardObject& object = objects.There(line[0]);
        if (names.empty() || names.back() != line[0]) {
            names.push_back(line[0]);
            object.systems = isOfAll ? Row() : object.systems;
        }
        if (line.size() > 1) {
            AddOnce(object.systems, line[1]);
        }
    }
    if (isOfAll) {
        objects.ListAll(names, &objects != &m_vcs.systems);
    } else if (&objects == &m_vcs.resources) {
        HearConditions(run, names);
    }
}

// What was listed has the values that were asked for.
void VcsListener::HearConditions(const HeardTool& run, const std::vector<std::string>& names) {
    for (const std::string& condition : run.names) {
        const std::size_t equals = condition.find('=');
        const std::string attribute = condition.substr(0, equals);
        const bool isOther = equals == std::string::npos || equals == 0 || condition[equals - 1] == '!' ||
                             condition.compare(equals, 2, "=~") == 0;
        if (isOther || attribute == State || clus::IsSecretAttribute(common::ToUtf16(attribute))) {
            continue;
        }
        const std::string value = condition.substr(equals + 1);
        for (const std::string& name : names) {
            HeardObject& object = m_vcs.resources.There(name);
            const bool isOfEach = attribute == "Type" || attribute == "Group";
            if (isOfEach) {
                object.Tell(attribute, value);
            } else if (object.Find(attribute) == nullptr) { // a list may have other members
                object.conditions.push_back({name, attribute, AllSystems, value});
            }
        }
    }
}

void VcsListener::HearLinks(const HeardTool& run) {
    if (!run.isWhole) {
        return;
    }
    std::vector<Row> links;
    for (Row& row : run.Rows(3)) {
        row.resize(3);
        for (const std::string& end : {row[1], row[2]}) {
            HeardObject& resource = m_vcs.resources.There(end);
            resource.Tell("Group", row[0]);
        }
        links.push_back(row);
    }
    TakeLinks(links, 1, run.names, m_vcs.resourceLinks);
    m_vcs.areResourceLinksTold = m_vcs.areResourceLinksTold || run.names.empty();
    for (const std::string& name : run.names) {
        m_vcs.resources.There(name).areLinksTold = true;
    }
}

void VcsListener::HearGroupLinks(const HeardTool& run) {
    if (!run.isWhole) {
        return;
    }
    const std::vector<Row> links = run.Rows(3);
    for (const Row& link : links) {
        m_vcs.groups.There(link[0]);
        m_vcs.groups.There(link[1]);
    }
    TakeLinks(links, 0, run.names, m_vcs.groupLinks);
    m_vcs.areGroupLinksTold = m_vcs.areGroupLinksTold || run.names.empty();
    for (const std::string& name : run.names) {
        m_vcs.groups.There(name).areLinksTold = true;
    }
}

void VcsListener::HearMembers(const HeardTool& run) {
    if (!run.hasWorked || run.names.size() != 1) {
        return;
    }
    for (const Row& line : run.Lines()) {
        m_vcs.resources.There(line[0]).Tell("Group", run.names[0]);
    }
}

void VcsListener::HearChange(const HeardTool& run) {
    if (!run.hasWorked) {
        return;
    }
    m_vcs.hasChanged = true;
    const bool isGroup = run.tool == "hagrp";
    HeardObjects& objects = isGroup ? m_vcs.groups : m_vcs.resources;
    const std::size_t count = run.names.size();
    if (run.tool == "haconf") {
        const bool isClosed = Has(run.options, "-makero");
        if (isClosed || run.verb == "-makerw") {
            m_vcs.cluster.There("").Tell("ReadOnly", isClosed ? "1" : "0");
        }
    } else if (!isGroup && run.tool != "hares") {
        return;
    } else if (run.verb == "-delete" && count == 1) {
        objects.Remove(run.names[0]);
    } else if (run.verb == "-add" && count == (isGroup ? 1U : 3U)) {
        HeardObject& object = objects.There(run.names[0]);
        if (!isGroup) {
            object.Tell("Type", run.names[1]);
            object.Tell("Group", run.names[2]);
        }
    }
}

RecordedVcs VcsListener::Hear(const recording::Recording& recording) {
    for (const recording::RecordedTool& run : recording.tools) {
        HearTool(HeardTool(run));
    }
    return std::move(m_vcs);
}

} // namespace

RecordedVcs HearVcsRecording(const recording::Recording& recording) {
    return VcsListener().Hear(recording);
}
