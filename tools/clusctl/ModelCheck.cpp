// Whether the simulators take a model.
#include "Failure.h"
#include "ModelFindings.h"
#include "ModelInUse.h"
#include "Text.h"

#include "common/Files.h"
#include "common/JsonPlaces.h"

#include <ClusterFiles.h>
#include <ConfigurationCheck.h>
#include <StateCheck.h>
#include <Store.h>

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace {

const std::size_t MostFindings = 100;

// Why the cluster simulator refuses the text; empty when it takes it.
std::string ReasonAgainst(const std::string& json) {
    typedef int (*LoadFunction)(const char* json, char* error, size_t cbError);
    LoadClusterSimulator();
    const auto load = reinterpret_cast<LoadFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"clusapi.dll"), "ClusSimLoadModel")));
    if (load == nullptr) {
        throw Failure(Errors::NoSimulator, "the simulator's clusapi.dll is of another version");
    }
    char error[1024] = "";
    return load(json.c_str(), error, sizeof(error)) != 0 ? std::string() : std::string(error);
}

// "line 3, column 7" in a parser's message.
std::size_t NumberBehind(const std::string& message, const char* word) {
    const std::size_t at = message.find(word);
    return at == std::string::npos ? 0 : std::strtoul(message.c_str() + at + std::string(word).size(), nullptr, 10);
}

// The member that is taken out to look on: what nothing else in the model refers to. Empty when there is none.
std::string Removable(const std::string& place, const std::string& what) {
    static const char* const lists[] = {".dependsOn[", ".possibleOwners[", ".preferredOwners[", ".partitions[",
                                        "faults["};
    for (const char* const list : lists) {
        const std::size_t at = place.find(list);
        if (at != std::string::npos) {
            return place.substr(0, at + std::string(list).size() - 1);
        }
    }
    static const char* const details[] = {".common.", ".private.", ".unread.", "cluster.behaviour.", "settings."};
    const bool isDetail = std::any_of(std::begin(details), std::end(details),
                                      [&place](const char* part) { return place.find(part) != std::string::npos; });
    return isDetail || what == "unknown member" ? place : std::string();
}

// Takes a member out of a document, by its place. False when it is not there.
bool Remove(Json& value, const std::string& place) {
    if (value.is_array() && place.front() == '[') {
        const std::size_t index = std::strtoul(place.c_str() + 1, nullptr, 10);
        const std::size_t close = place.find(']');
        const std::string rest = close == std::string::npos ? "" : place.substr(close + 1);
        return index < value.size() && !rest.empty() &&
               Remove(value[index], rest.front() == '.' ? rest.substr(1) : rest);
    }
    for (auto member = value.is_object() ? value.begin() : value.end(); member != value.end(); ++member) {
        const std::string& name = member.key();
        if (place == name) {
            value.erase(member);
            return true;
        }
        if (place.size() > name.size() && place.compare(0, name.size(), name) == 0 &&
            (place[name.size()] == '.' || place[name.size()] == '[')) {
            return Remove(member.value(), place.substr(name.size() + (place[name.size()] == '.' ? 1 : 0)));
        }
    }
    return false;
}

std::vector<ModelFinding> CheckFailoverModel(const std::wstring& file) {
    std::vector<ModelFinding> findings;
    const std::string text = ReadModelText(file);
    std::string rest = text;
    for (std::string reason = ReasonAgainst(rest); !reason.empty() && findings.size() < MostFindings;
         reason = ReasonAgainst(rest)) {
        const std::size_t colon = reason.find(": ");
        const std::string place = reason.substr(0, colon);
        const std::string what = colon == std::string::npos ? std::string() : reason.substr(colon + 2);
        Json document;
        try {
            document = common::ParseJson(rest);
        } catch (const common::JsonError&) {
            findings.push_back({file, false, NumberBehind(reason, "line "), NumberBehind(reason, "column "), reason});
            break;
        }
        const common::TextPlace at = common::FindJsonPlace(text, place);
        findings.push_back({file, false, at.line, at.column, reason});
        const std::string removable = Removable(place, what);
        if (removable.empty() || !Remove(document, removable)) {
            break;
        }
        rest = common::DumpJson(document);
    }
    return findings;
}

// Of the states of objects that there are not.
void NoteStrangers(const vcssim::Cluster& cluster, const Json& states, const std::string& text,
                   const std::wstring& file, std::vector<ModelFinding>& findings) {
    const auto isKnown = [&cluster](const std::string& member, const std::string& name) {
        return member == "systems"  ? cluster.HasSystem(name)
               : member == "groups" ? cluster.configuration.GroupNamed(name) != nullptr
                                    : cluster.configuration.ResourceNamed(name) != nullptr;
    };
    for (const char* const member : {"systems", "groups", "resources", "probed", "failing"}) {
        const Json& named = states.contains(member) ? states[member] : Json::object();
        for (const auto& object : named.items()) {
            if (!isKnown(member, object.key())) {
                const std::string place = std::string(member) + "." + object.key();
                const common::TextPlace at = common::FindJsonPlace(text, place);
                findings.push_back({file, true, at.line, at.column, place + ": the configuration has none"});
            }
        }
    }
}

// What is wrong with the states; `cluster` is what they are the states of, null when that cannot be read.
void CheckStates(const std::wstring& file, vcssim::Cluster* cluster, std::vector<ModelFinding>& findings) {
    const std::string text = ReadModelText(file);
    const auto add = [&](const std::string& reason) {
        const common::TextPlace at = common::FindJsonPlace(text, reason.substr(0, reason.find(": ")));
        findings.push_back({file, false, at.line, at.column, reason});
    };
    try {
        const Json states = common::ParseJson(text);
        const vcssim::State state = vcssim::ReadState(text);
        if (cluster != nullptr) {
            cluster->state = state;
            for (const std::string& contradiction : vcssim::ContradictionsIn(*cluster)) {
                add(contradiction);
            }
            NoteStrangers(*cluster, states, text, file, findings);
        }
    } catch (const common::JsonError& error) {
        const std::string reason = error.what();
        findings.push_back({file, false, NumberBehind(reason, "line "), NumberBehind(reason, "column "), reason});
    } catch (const vcssim::StateError& error) {
        add(error.what());
    }
}

void CheckConfiguration(const std::wstring& file, const vcssim::Cluster& cluster, std::vector<ModelFinding>& findings) {
    if (cluster.configuration.Systems().empty()) {
        findings.push_back({file, false, 0, 0, "there is no system"});
    }
    const std::string& text = cluster.configuration.Text();
    const auto add = [&](const vcssim::Problem& problem, bool isNote) {
        const vcssim::CfPlace at = vcssim::PlaceInCf(text, problem.at);
        findings.push_back({file, isNote, at.line, at.column, problem.what});
    };
    for (const vcssim::Problem& problem : vcssim::ProblemsOf(cluster)) {
        add(problem, problem.isUnknownAttribute);
    }
    for (const vcssim::Problem& note : vcssim::NotesOn(cluster)) {
        add(note, true);
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const ModelFinding& a, const ModelFinding& b) { return a.line < b.line; });
}

std::vector<ModelFinding> CheckVcsModel(const std::wstring& mainCf) {
    std::vector<ModelFinding> findings;
    const vcssim::ClusterFiles files(mainCf);
    vcssim::Cluster cluster;
    bool isRead = false;
    try {
        cluster = vcssim::Store(files).LoadConfiguration();
        isRead = true;
        CheckConfiguration(files.Running(), cluster, findings);
    } catch (const vcssim::StoreError& error) {
        findings.push_back({error.File(), false, error.Place().line, error.Place().column, error.Reason()});
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read " + Quoted(mainCf), error.Code());
    }
    if (common::FileExists(files.State())) {
        CheckStates(files.State(), isRead ? &cluster : nullptr, findings);
    }
    return findings;
}

} // namespace

std::vector<ModelFinding> CheckModel(const std::wstring& model) {
    RequireModel(model);
    return IsModelOfVcs(model) ? CheckVcsModel(ModelFile(model)) : CheckFailoverModel(ModelFile(model));
}
