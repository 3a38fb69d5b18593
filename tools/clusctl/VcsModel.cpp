#include "VcsModel.h"

#include "MainCfText.h"
#include "ModelSettings.h"
#include "Replay.h"
#include "ShownStates.h"
#include "Text.h"
#include "VcsToolFiles.h"
#include "VcsToolProcess.h"
#include "VcsTools.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/Text.h"

#include <CfDocument.h>
#include <ClusterFiles.h>

#include <winsock2.h>
#include <windows.h>

#include <algorithm>

namespace {

const wchar_t MainCfName[] = L"main.cf";
const wchar_t StateName[] = L"main.cf.state.json";
const wchar_t SimulatedVariable[] = L"VCSSIM_MAIN_CF";
const wchar_t HomeVariable[] = L"VCS_HOME";
const wchar_t ConfigurationFolder[] = L"\\conf\\config";
const wchar_t StaleMark[] = L"\\.stale"; // the cluster's configuration is open for writing, or was when it ended

const char CannotRead[] = "cannot read the VCS cluster";

std::string Ask(const ToolWatch& watch, const wchar_t* tool, const wchar_t* arguments) {
    std::string output = RunVcsTool(tool, arguments).output;
    watch.Require(true, CannotRead);
    return output;
}

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

// One of another installation than the tools that were asked before may tell of another cluster.
bool HasHaclus() {
    if (IsReplaying()) {
        return HasVcsTool(L"haclus"); // it was asked then, wherever it is on this computer
    }
    const std::wstring haclus = FindVcsTool(L"haclus");
    return !haclus.empty() && _wcsicmp(FolderOf(haclus).c_str(), FolderOf(FindVcsTool(L"hares")).c_str()) == 0;
}

ShownConfiguration AskTools(const LogCapture& log) {
    const ToolWatch watch(log);
    ShownConfiguration shown;
    shown.systems = ReadShownValues(Ask(watch, L"hasys", L"-display"), TableForm::ObjectValue);
    shown.groups = ReadShownValues(Ask(watch, L"hagrp", L"-display"), TableForm::ObjectSystemValue);
    shown.resources = ReadShownValues(Ask(watch, L"hares", L"-display"), TableForm::ObjectSystemValue);
    shown.groupLinks = ReadRows(Ask(watch, L"hagrp", L"-dep"), 3);
    shown.resourceLinks = ReadRows(Ask(watch, L"hares", L"-dep"), 3);
    if (HasHaclus()) {
        shown.cluster = ReadShownValues(Ask(watch, L"haclus", L"-display"), TableForm::Value);
    }
    if (shown.systems.empty()) {
        throw Failure(std::string(CannotRead) + ": VCS shows no systems");
    }
    return shown;
}

// The cluster's own main.cf as it stands, if there is one to be looked at; empty for none.
std::wstring OwnConfiguration(const VcsModelSource& source) {
    if (source.isMadeOfTools) {
        return std::wstring();
    }
    if (!source.configuration.empty()) {
        return source.configuration + L"\\" + MainCfName;
    }
    const std::wstring simulated = common::EnvironmentVariable(SimulatedVariable);
    if (!simulated.empty()) {
        return vcssim::ClusterFiles(simulated).Running();
    }
    const std::wstring home = common::EnvironmentVariable(HomeVariable);
    return home.empty() ? std::wstring() : home + ConfigurationFolder + L"\\" + MainCfName;
}

// Why a main.cf is not the one that the cluster runs with, as far as the names in it tell; empty when it may be.
std::string ReasonAgainst(const vcssim::CfDocument& document, const ShownConfiguration& shown) {
    const std::vector<std::string> groups = ObjectsIn(shown.groups);
    const std::vector<std::string> resources = ObjectsIn(shown.resources);
    for (const std::string& group : groups) {
        if (document.GroupNamed(group) == nullptr) {
            return "it lacks the group " + Quoted(group);
        }
    }
    for (const std::string& resource : resources) {
        if (document.ResourceNamed(resource) == nullptr) {
            return "it lacks the resource " + Quoted(resource);
        }
    }
    std::size_t held = 0;
    for (const vcssim::CfGroup& group : document.Groups()) {
        held += group.resources.size();
    }
    return document.Groups().size() != groups.size() || held != resources.size()
               ? "it holds groups or resources that the cluster does not have"
               : "";
}

class Reader {
public:
    Reader(const LogCapture& log, const VcsModelSource& source) : m_source(source), m_shown(AskTools(log)) {
    }

    VcsModel Read() {
        const std::wstring own = OwnConfiguration(m_source);
        if (own.empty() || !Copy(own)) {
            Make();
        }
        Json states = StatesJson(m_shown);
        const Json settings = ReadProductSettings();
        if (!settings.empty()) {
            states["settings"] = settings;
        }
        m_model.files.push_back({StateName, common::DumpJson(states)});
        m_model.systems = ObjectsIn(m_shown.systems).size();
        m_model.groups = ObjectsIn(m_shown.groups).size();
        m_model.resources = ObjectsIn(m_shown.resources).size();
        return std::move(m_model);
    }

private:
    // False when it is not that of the running cluster.
    bool Copy(const std::wstring& file) {
        std::string reason;
        try {
            const std::string text = common::ReadWholeFile(file);
            const vcssim::CfDocument document(text);
            reason = common::FileExists(FolderOf(file) + (StaleMark + 1)) ? "it is open for writing, or was left so"
                                                                          : ReasonAgainst(document, m_shown);
            if (reason.empty()) {
                AddMainCf(text);
                for (const std::string& include : document.Includes()) {
                    CopyInclude(FolderOf(file), include);
                }
                m_model.copied = file;
                return true;
            }
        } catch (const common::FileError& error) {
            if (!m_source.configuration.empty()) {
                throw Failure::OfCode(Quoted(file) + " is not used", error.Code());
            }
            reason = ErrorText(error.Code());
        } catch (const vcssim::CfError& error) {
            reason = "line " + std::to_string(error.Line()) + ": " + error.what();
        }
        const std::string what = Quoted(file) + " is not used: " + reason;
        if (!m_source.configuration.empty()) {
            throw Failure(what);
        }
        m_model.warnings.push_back(what);
        return false;
    }

    void CopyInclude(const std::wstring& folder, const std::string& include) {
        const std::wstring name = common::ToUtf16(include);
        if (name.find_first_of(L"\\/:") != std::wstring::npos) {
            m_model.doubts.push_back("the types of " + Quoted(include) + " are missing: the file lies elsewhere");
            return;
        }
        try {
            m_model.files.push_back({name, common::ReadWholeFile(folder + name)});
        } catch (const common::FileError& error) {
            // The simulator knows most types without it, as it does in the cluster that it stands in for.
            if (common::EnvironmentVariable(SimulatedVariable).empty()) {
                m_model.doubts.push_back("the types of " + Quoted(include) +
                                         " are missing: " + ErrorText(error.Code()));
            }
        }
    }

    void Make() {
        const MainCf made = MakeMainCf(m_shown, vcssim::TypeTable());
        if (m_shown.cluster.empty()) {
            m_model.doubts.emplace_back("the cluster's name is missing: there is no haclus beside hares");
        }
        m_model.doubts.insert(m_model.doubts.end(), made.doubts.begin(), made.doubts.end());
        try {
            AddMainCf(made.text);
        } catch (const vcssim::CfError& error) {
            throw Failure(std::string(CannotRead) + ": what the tools show makes no configuration: " + error.what());
        }
    }

    void AddMainCf(const std::string& text) {
        std::size_t count = 0;
        const std::string masked = MaskedMainCf(text, count);
        m_model.masked = m_source.showsSecrets ? 0 : count;
        m_model.files.push_back({MainCfName, m_source.showsSecrets ? text : masked});
    }

    const VcsModelSource& m_source;
    const ShownConfiguration m_shown;
    VcsModel m_model;
};

} // namespace

VcsModel ReadVcsModel(const LogCapture& log, const VcsModelSource& source) {
    return Reader(log, source).Read();
}
