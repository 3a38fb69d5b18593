#include "VcsModelMaker.h"

#include "MainCfText.h"
#include "MissingParts.h"
#include "RecordedVcs.h"
#include "ShownStates.h"
#include "Text.h"

#include "core/ToolSecrets.h"

#include <CfDocument.h>
#include <TypeTable.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace {

typedef std::vector<std::string> Texts;

const char Unknown[] = "Unknown"; // the type of a resource, and the group of those, that the recording does not tell
const char State[] = "State";
const char SystemList[] = "SystemList";

std::string CountedSecrets(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " secret" : " secrets");
}

class VcsModelMaker {
public:
    explicit VcsModelMaker(const recording::Recording& recording)
        : m_recording(recording), m_vcs(HearVcsRecording(recording)) {
    }

    RecordedVcsModel Make();

private:
    void AddLists();
    void ChooseTypes();
    void ChooseGroups();
    void ChooseConditions(HeardObject& resource);
    void ChooseSystems(HeardObject& group, const Texts& all);
    void AddNamedSystems();
    void TellSystems();
    void TellGroups();
    void TellResources();
    bool AreStatesTold(const HeardObject& resource);
    std::size_t CountSecrets(const HeardObject& resource) const;
    void TakeLinks(ShownConfiguration& shown);
    Json States(const ShownConfiguration& shown) const;

    const recording::Recording& m_recording;
    RecordedVcs m_vcs;
    MissingParts m_missing;
    vcssim::TypeTable m_types;
    std::map<std::string, Texts> m_systems; // of each group
    std::map<std::string, Texts> m_members;
    std::set<std::string> m_groupsByState; // whose states do not follow from those of their resources
    std::string m_none;                    // the group that was made for resources of none
    std::size_t m_secrets = 0;
};

void VcsModelMaker::AddLists() {
    const std::pair<const HeardObjects*, const char*> lists[] = {
        {&m_vcs.systems, "systems"}, {&m_vcs.groups, "groups"}, {&m_vcs.resources, "resources"}};
    Texts unlisted;
    for (const auto& [objects, plural] : lists) {
        if (!objects->IsListed()) {
            unlisted.emplace_back(plural);
        }
    }
    m_missing.MissLists(unlisted);
}

// A resource has a type and a group, whether they are told or not.
void VcsModelMaker::ChooseTypes() {
    Texts untold;
    for (HeardObject& resource : m_vcs.resources.All()) {
        if (!vcssim::IsCfName(resource.Value("Type"))) {
            resource.Tell("Type", Unknown);
            untold.push_back(Quoted(resource.name));
        }
    }
    if (!untold.empty()) {
        m_types.Add(Unknown);
        m_missing.Miss("the recording does not tell the type of " + Joined(untold) + ": " + Unknown);
    }
}

void VcsModelMaker::ChooseGroups() {
    std::string none = Unknown;
    for (int number = 2; m_vcs.groups.Find(none) != nullptr; ++number) {
        none = std::string(Unknown) + "-" + std::to_string(number);
    }
    Texts untold;
    for (HeardObject& resource : m_vcs.resources.All()) {
        if (resource.Value("Group").empty()) {
            resource.Tell("Group", none);
            untold.push_back(Quoted(resource.name));
        }
        const std::string group = resource.Value("Group");
        m_vcs.groups.There(group);
        m_members[group].push_back(resource.name);
        ChooseConditions(resource);
    }
    if (!untold.empty()) {
        m_none = none;
        m_missing.Miss("the recording does not tell the group of " + Joined(untold) + ": the group " + Quoted(none) +
                       " is made for what has none");
    }
}

// What a resource was found by it has, unless that may be one of several values. A value that was asked for of each
// system may be one of all.
void VcsModelMaker::ChooseConditions(HeardObject& resource) {
    for (const ShownValue& condition : resource.conditions) {
        const vcssim::AttributeType* const type = m_types.Find(resource.Value("Type"), condition.attribute);
        const bool isList =
            type != nullptr && type->kind != vcssim::AttributeType::Text && type->kind != vcssim::AttributeType::Number;
        if (!isList && resource.Find(condition.attribute) == nullptr) {
            resource.Tell(condition.attribute, condition.value);
        }
    }
    for (HeardAttribute& attribute : resource.attributes) {
        const bool isEqual = std::all_of(attribute.rows.begin(), attribute.rows.end(), [&](const ShownValue& row) {
            return row.value == attribute.rows.front().value;
        });
        if (attribute.isAlone && isEqual && attribute.name != State && attribute.name != "Probed") {
            attribute.rows.resize(1);
            attribute.rows.front().system = AllSystems;
        }
    }
}

// The systems of the group's SystemList; of one that is not told, those that the group, or its resources, were shown
// with.
void VcsModelMaker::ChooseSystems(HeardObject& group, const Texts& all) {
    Texts& systems = m_systems[group.name];
    if (const HeardAttribute* const told = group.Find(SystemList)) {
        const Texts parts = told->rows.empty() ? Texts() : told->rows.front().Parts();
        for (std::size_t i = 0; i < parts.size(); i += 2) {
            AddOnce(systems, parts[i]);
        }
        return;
    }
    const auto add = [&systems](const Texts& shown) {
        for (const std::string& system : shown) {
            if (system != AllSystems && !system.empty()) {
                AddOnce(systems, system);
            }
        }
    };
    add(group.systems);
    add(group.SystemsOf(State));
    for (const std::string& member : m_members[group.name]) {
        const HeardObject& resource = *m_vcs.resources.Find(member);
        add(resource.systems);
        add(resource.SystemsOf(State));
    }
    if (group.name != m_none) {
        m_missing.Untold({systems.empty() ? "the systems" : "the numbers of the systems"}, group.name);
    }
    add(systems.empty() ? all : Texts());
    std::string list;
    for (std::size_t i = 0; i < systems.size(); ++i) {
        list += (i == 0 ? "" : "\t") + systems[i] + "\t" + std::to_string(i);
    }
    group.Tell(SystemList, list);
}

// Systems that only groups and resources tell of.
void VcsModelMaker::AddNamedSystems() {
    const auto add = [this](const Texts& systems) {
        for (const std::string& system : systems) {
            if (system != AllSystems && !system.empty()) {
                m_vcs.systems.There(system);
            }
        }
    };
    for (const HeardObjects* const objects : {&m_vcs.groups, &m_vcs.resources}) {
        for (const HeardObject& object : objects->All()) {
            add(object.systems);
            for (const HeardAttribute& attribute : object.attributes) {
                for (const ShownValue& row : attribute.rows) {
                    add({row.system});
                    const Texts parts = attribute.name == SystemList ? row.Parts() : Texts();
                    for (std::size_t i = 0; i < parts.size(); i += 2) {
                        add({parts[i]});
                    }
                }
            }
        }
    }
    if (m_vcs.systems.All().empty()) {
        m_vcs.systems.There(m_recording.header.computer);
        m_missing.Miss("the recording names no system: the computer that it was made on is taken for the only one");
    }
}

void VcsModelMaker::TellSystems() {
    for (HeardObject& system : m_vcs.systems.All()) {
        Texts untold;
        if (!system.isShown) {
            untold.emplace_back("all attributes");
        }
        if (system.Value("SysState").empty()) {
            untold.emplace_back("the state");
            system.Tell("SysState", "RUNNING");
        }
        m_missing.Untold(untold, system.name);
    }
    m_missing.MissUntold();
}

bool VcsModelMaker::AreStatesTold(const HeardObject& resource) {
    const Texts told = resource.SystemsOf(State);
    const Texts& systems = m_systems[resource.Value("Group")];
    return std::all_of(systems.begin(), systems.end(), [&told](const std::string& system) {
        return std::find(told.begin(), told.end(), system) != told.end();
    });
}

void VcsModelMaker::TellGroups() {
    Texts all;
    for (const HeardObject& system : m_vcs.systems.All()) {
        all.push_back(system.name);
    }
    for (HeardObject& group : m_vcs.groups.All()) {
        ChooseSystems(group, all);
        const Texts& members = m_members[group.name];
        const bool areMembersTold =
            m_vcs.resources.IsListed() && std::all_of(members.begin(), members.end(), [this](const std::string& name) {
                return AreStatesTold(*m_vcs.resources.Find(name));
            });
        Texts untold;
        if (!group.isShown) {
            untold.emplace_back("all attributes");
        }
        if (!areMembersTold && group.Find(State) != nullptr) {
            m_groupsByState.insert(group.name);
        } else if (!areMembersTold) {
            untold.emplace_back("the states");
        }
        if (!m_vcs.areGroupLinksTold && !group.areLinksTold) {
            untold.emplace_back("the dependencies");
        }
        if (group.name != m_none) {
            m_missing.Untold(untold, group.name);
        }
    }
    m_missing.MissUntold();
}

std::size_t VcsModelMaker::CountSecrets(const HeardObject& resource) const {
    std::size_t count = 0;
    for (const HeardAttribute& attribute : resource.attributes) {
        const bool isSecret = clus::IsSecretAttribute(common::ToUtf16(attribute.name));
        for (const ShownValue& row : attribute.rows) {
            count += isSecret && !row.value.empty() ? 1 : 0;
        }
    }
    return count;
}

void VcsModelMaker::TellResources() {
    for (const HeardObject& resource : m_vcs.resources.All()) {
        Texts untold;
        if (!resource.isShown) {
            untold.emplace_back("all attributes");
        }
        if (!AreStatesTold(resource)) {
            untold.emplace_back("the states");
        }
        if (!m_vcs.areResourceLinksTold && !resource.areLinksTold) {
            untold.emplace_back("the dependencies");
        }
        const std::size_t secrets = CountSecrets(resource);
        if (secrets != 0) {
            untold.push_back(CountedSecrets(secrets));
        }
        m_secrets += secrets;
        m_missing.Untold(untold, resource.name);
    }
    m_missing.MissUntold();
}

// Of what is there, and within a group: what was asked before may be gone.
void VcsModelMaker::TakeLinks(ShownConfiguration& shown) {
    for (const RecordedVcs::Row& link : m_vcs.resourceLinks) {
        const HeardObject* const parent = m_vcs.resources.Find(link[1]);
        const HeardObject* const child = m_vcs.resources.Find(link[2]);
        if (parent != nullptr && child != nullptr && parent->Value("Group") == child->Value("Group")) {
            shown.resourceLinks.push_back({parent->Value("Group"), link[1], link[2]});
        }
    }
    for (const RecordedVcs::Row& link : m_vcs.groupLinks) {
        if (m_vcs.groups.Find(link[0]) != nullptr && m_vcs.groups.Find(link[1]) != nullptr) {
            shown.groupLinks.push_back(link);
        }
    }
}

Json VcsModelMaker::States(const ShownConfiguration& shown) const {
    Json states = StatesJson(shown);
    for (const ShownValue& row : shown.groups) {
        if (row.attribute == State && m_groupsByState.count(row.object) != 0) {
            const std::size_t begin = row.value.find_first_not_of('|');
            const std::size_t end = row.value.find_last_not_of('|');
            states["groups"][row.object][row.system] =
                begin == std::string::npos ? std::string() : row.value.substr(begin, end + 1 - begin);
        }
    }
    if (m_recording.header.settings.is_object()) {
        states["settings"] = m_recording.header.settings;
    }
    return states;
}

RecordedVcsModel VcsModelMaker::Make() {
    m_missing.MissWhole(m_recording, m_vcs.hasChanged);
    if (m_vcs.cluster.There("").Value("ClusterName").empty()) {
        m_missing.Miss("the recording does not tell the name of the cluster");
    }
    AddLists();
    AddNamedSystems();
    ChooseTypes();
    ChooseGroups();
    TellSystems();
    TellGroups();
    TellResources();
    ShownConfiguration shown;
    shown.cluster = m_vcs.cluster.Rows();
    shown.systems = m_vcs.systems.Rows();
    shown.groups = m_vcs.groups.Rows();
    shown.resources = m_vcs.resources.Rows();
    TakeLinks(shown);
    const MainCf made = MakeMainCf(shown, m_types);
    for (const std::string& doubt : made.doubts) {
        m_missing.Miss(doubt);
    }
    RecordedVcsModel model;
    std::size_t masked = 0;
    model.mainCf = MaskedMainCf(made.text, masked);
    if (masked > m_secrets) { // users' passwords
        m_missing.Miss(CountedSecrets(masked - m_secrets) + " of the cluster's users " +
                       (masked - m_secrets == 1 ? "is" : "are") + " not in the model");
    }
    model.states = States(shown);
    model.systems = m_vcs.systems.All().size();
    model.groups = m_vcs.groups.All().size();
    model.resources = m_vcs.resources.All().size();
    model.missing = m_missing.Take();
    return model;
}

} // namespace

RecordedVcsModel MakeVcsModel(const recording::Recording& recording) {
    return VcsModelMaker(recording).Make();
}
