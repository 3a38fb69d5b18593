#include "VcsCopy.h"

#include "MainCfText.h"
#include "ModelInUse.h"
#include "NewFile.h"
#include "RehearsedRun.h"
#include "RehearsedVcs.h"
#include "Text.h"
#include "VcsModel.h"
#include "VcsToolCalls.h"

#include "common/FileLock.h"
#include "common/Files.h"

#include <CfDocument.h>

#include <algorithm>

namespace {

const wchar_t ControlTool[] = L"vcssim";
const wchar_t ModelName[] = L"main.cf";
const DWORD LongestTurn = 2000; // milliseconds; no tool of the simulator works that long
const std::int64_t LongestSettling = 3600;

// What a tool prints that fails without saying anything else.
const char UsualOutput[] = R"(output:"VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n")";

[[noreturn]] void FailToWrite(const common::FileError& error) {
    throw Failure::OfCode("cannot write the private copy " + Quoted(error.Path()), error.Code());
}

std::string ReadCopied(const std::wstring& path) {
    try {
        return common::ReadWholeFile(path);
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the private copy " + Quoted(error.Path()), error.Code());
    }
}

bool IsPlainName(const std::wstring& name) {
    return name.find_first_of(L"\\/:") == std::wstring::npos;
}

// Runs a tool of the simulator on a copy, apart from what a command does there.
ProgramResult RunOn(const std::wstring& mainCf, const wchar_t* tool, const Words& words) {
    try {
        const common::TemporaryFolder folder(L"clusctl");
        const ChildProgram program(SimulatorFolder(L"vcssim.exe") + tool + L".exe", words,
                                   {{VcsVariable, mainCf}, {L"VCSSIM_JOURNAL", L""}, {L"VCSSIM_FAULTS", L""}},
                                   folder.Path());
        return program.Finish();
    } catch (const common::FileError& error) {
        FailToWrite(error);
    }
}

// "hares=1" prints what a tool prints that does not reach VCS.
std::string WithOutput(const std::string& fault) {
    const std::size_t equals = fault.rfind('=');
    const bool isCode =
        equals != std::string::npos && fault.find_first_not_of("0123456789", equals + 1) == std::string::npos;
    return isCode ? fault + "," + UsualOutput : fault;
}

bool IsThere(const Json& states, const char* kind, const std::string& name) {
    return std::any_of(states.begin(), states.end(),
                       [&](const Json& row) { return row.at("kind") == kind && row.at("name") == name; });
}

void Require(const Json& states, const char* kind, const std::string& name, const std::string& what) {
    if (!IsThere(states, kind, name)) {
        throw Failure(Errors::NotFound, what + ": there is no " + kind + " " + Printable(name));
    }
}

bool IsOnlineOrPartial(const std::string& state) {
    return state.find("ONLINE") != std::string::npos || state.find("PARTIAL") != std::string::npos;
}

} // namespace

VcsCopy::VcsCopy(const std::wstring& mainCf)
    : m_original(vcssim::ClusterFiles(mainCf).Folder()), m_files(std::wstring()) {
    const vcssim::ClusterFiles original(mainCf);
    // Keeps the tools from changing the files meanwhile.
    common::FileLock lock(original.Lock());
    const common::FileLock::Turn turn(lock, LongestTurn);
    if (!turn) {
        throw Failure::OfCode("cannot lock " + Quoted(mainCf), turn.Code());
    }
    try {
        m_folder = std::make_unique<common::TemporaryFolder>(L"clusctl");
        m_files = vcssim::ClusterFiles(m_folder->File(mainCf.substr(m_original.size())));
        for (const std::wstring& name : original.Names()) {
            // An included file of another folder has no place in this one; the tools know most types without it.
            if (IsPlainName(name)) {
                common::WriteWholeFile(m_folder->File(name), common::ReadWholeFile(m_original + name));
            }
        }
        Json state = State();
        SetClock(state);
        common::WriteWholeFile(m_files.State(), common::DumpJson(state));
    } catch (const common::FileError& error) {
        FailToWrite(error);
    }
}

std::string VcsCopy::RunTool(const wchar_t* tool, const Words& words, const std::string& what) const {
    const ProgramResult result = RunOn(MainCf(), tool, words);
    if (result.exitCode == 0) {
        return result.output;
    }
    const std::string text = result.errors + result.output;
    std::string said = text.substr(0, text.find('\n'));
    const std::string own = common::ToUtf8(m_folder->Path() + L"\\");
    const std::size_t at = said.find(own);
    if (at != std::string::npos) {
        said.replace(at, own.size(), common::ToUtf8(m_original));
    }
    throw Failure(Errors::Refused,
                  what + ": " + (said.empty() ? "exit code " + std::to_string(result.exitCode) : Printable(said)));
}

void VcsCopy::Switch(const std::string& name, bool isOnline, const std::string& what) const {
    const Json states = States();
    const bool isGroup = IsThere(states, "group", name);
    if (!isGroup && !IsThere(states, "resource", name)) {
        throw Failure(Errors::NotFound, std::string(isOnline ? "online" : "offline") +
                                            ": there is no group or resource " + Printable(name));
    }
    Words there;
    std::wstring target;
    for (const Json& row : states) {
        if (row.at("kind") != (isGroup ? "group" : "resource") || row.at("name") != name) {
            continue;
        }
        const auto system = row.at("system").get<std::string>();
        if (IsOnlineOrPartial(row.at("state").get<std::string>())) {
            there.push_back(common::ToUtf16(system));
        }
        if (target.empty() && StateIn(states, "system", system, "") == "RUNNING") {
            target = common::ToUtf16(system);
        }
    }
    const wchar_t* const tool = isGroup ? L"hagrp" : L"hares";
    if (!isOnline) {
        for (const std::wstring& system : there) {
            RunTool(tool, {L"-offline", common::ToUtf16(name), L"-sys", system}, what);
        }
        return;
    }
    if (there.empty() && target.empty()) {
        throw Failure(Errors::Refused, what + ": none of its systems is running");
    }
    RunTool(tool, {L"-online", common::ToUtf16(name), L"-sys", there.empty() ? target : there.front()}, what);
}

// Where its group is; one that no group is at work with, wherever it is.
void VcsCopy::Fail(const std::string& resource, const std::string& what) const {
    const Json states = States();
    Require(states, "resource", resource, "fail");
    const auto group = vcssim::CfDocument(Configuration()).GroupOf(resource)->block.name;
    Words online;
    Words serving;
    for (const Json& row : states) {
        if (row.at("kind") == "resource" && row.at("name") == resource &&
            StartsWith(row.at("state").get<std::string>(), "ONLINE")) {
            const auto system = row.at("system").get<std::string>();
            const bool isThere = IsOnlineOrPartial(StateIn(states, "group", group, system));
            (isThere ? serving : online).push_back(common::ToUtf16(system));
        }
    }
    if (serving.empty() && online.empty()) {
        throw Failure(Errors::Refused, what + ": the resource is online nowhere");
    }
    for (const std::wstring& system : serving.empty() ? online : serving) {
        RunTool(ControlTool, {L"fault", common::ToUtf16(resource), system}, what);
    }
}

void VcsCopy::Happen(const RehearsalEvent& event) const {
    const std::string what = "VCS refuses the event " + event.Text();
    const std::string& name = event.names.front();
    const std::wstring first = common::ToUtf16(name);
    if (event.word == "node-down" || event.word == "node-up") {
        Require(States(), "system", name, event.word);
        RunTool(ControlTool, {event.word == "node-down" ? L"system-down" : L"system-up", first}, what);
    } else if (event.word == "move") {
        const Json states = States();
        Require(states, "group", name, event.word);
        Require(states, "system", event.names[1], event.word);
        RunTool(L"hagrp", {L"-switch", first, L"-to", common::ToUtf16(event.names[1])}, what);
    } else if (event.word == "fail") {
        Fail(name, what);
    } else if (event.word == "wait") {
        LetPass(std::stoll(name));
    } else {
        Switch(name, event.word == "online", what);
    }
}

Json VcsCopy::States() const {
    return StateRows(RunTool(ControlTool, {L"state"}, "the VCS simulator cannot read the cluster"), State());
}

Json VcsCopy::State() const {
    if (!common::FileExists(m_files.State())) {
        return Json::object();
    }
    try {
        return common::ParseJson(ReadCopied(m_files.State()));
    } catch (const common::JsonError& error) {
        throw Failure("the states " + Quoted(m_original + m_files.State().substr(m_files.Folder().size())) +
                      " cannot be read: " + error.what());
    }
}

std::string VcsCopy::Configuration() const {
    return ReadCopied(m_files.Running());
}

void VcsCopy::LetPass(std::int64_t seconds) const {
    RunTool(ControlTool, {L"wait", std::to_wstring(seconds)}, "the VCS simulator cannot let time pass");
}

// Many commands wait second by second: while nothing is under way no tool has to run for that.
void VcsCopy::LetPass(const std::wstring& mainCf, std::int64_t seconds) {
    const std::wstring path = vcssim::ClusterFiles(mainCf).State();
    try {
        Json state = common::ParseJson(common::ReadWholeFile(path));
        if (PassIdly(state, seconds)) {
            common::WriteWholeFile(path, common::DumpJson(state));
            return;
        }
    } catch (const std::exception&) {
        // The tool tells what is wrong.
    }
    RunOn(mainCf, ControlTool, {L"wait", std::to_wstring(seconds)});
}

bool VcsCopy::Settle() const {
    Json state = State();
    const std::int64_t start = ClockOfVcs(state);
    for (std::int64_t next = NextEndOfVcs(state); next != 0; next = NextEndOfVcs(state)) {
        if (next - start > LongestSettling) {
            return false;
        }
        LetPass(next - ClockOfVcs(state));
        state = State();
    }
    return true;
}

std::unique_ptr<ChildProgram> VcsCopy::Start(const Words& command, const FaultTexts& faults, bool asJson,
                                             const std::wstring& rehearsed) const {
    Variables variables = {{RehearsalVariable, m_folder->Path()},
                           {RehearsedVariable, rehearsed},
                           {RehearsedBundleVariable, BundleInUse()},
                           {L"VCSSIM_JOURNAL", m_folder->File(L"journal")}};
    if (!faults.empty()) {
        std::string lines;
        for (const std::string& fault : faults) {
            lines.append(WithOutput(fault)).append("\n");
        }
        try {
            common::WriteWholeFile(m_folder->File(L"faults"), lines);
        } catch (const common::FileError& error) {
            FailToWrite(error);
        }
        variables.emplace_back(L"VCSSIM_FAULTS", m_folder->File(L"faults"));
    }
    Words words = {L"--model", MainCf()};
    if (asJson) {
        words.emplace_back(L"--json");
    }
    words.insert(words.end(), command.begin(), command.end());
    return std::make_unique<ChildProgram>(OwnPath(), words, variables, m_folder->Path(), GivenPassword());
}

std::vector<ClusterCall> VcsCopy::Calls() const {
    const std::wstring journal = m_folder->File(L"journal");
    return common::FileExists(journal) ? ReadToolCalls(ReadCopied(journal)) : std::vector<ClusterCall>();
}

std::vector<std::size_t> VcsCopy::MatchedByFaults() const {
    const std::wstring counts = m_folder->File(L"faults.counts"); // where the tools keep them
    return common::FileExists(counts) ? ReadFaultCounts(ReadCopied(counts)) : std::vector<std::size_t>();
}

std::unique_ptr<ChildProgram> VcsCopy::Ask(const Words& command) const {
    Words words = {L"--model", MainCf(), L"--json"};
    words.insert(words.end(), command.begin(), command.end());
    return std::make_unique<ChildProgram>(
        OwnPath(), words,
        Variables{{RehearsedBundleVariable, BundleInUse()}, {L"VCSSIM_JOURNAL", L""}, {L"VCSSIM_FAULTS", L""}},
        m_folder->Path());
}

void VcsCopy::Save(const std::wstring& folder) const {
    const std::wstring own = MainCf().substr(m_files.Folder().size());
    VcsModel model;
    std::size_t secrets = 0;
    for (const std::wstring& name : m_files.Names()) {
        const std::wstring path = m_files.Folder() + name;
        const bool isOwn = StartsWith(common::ToUtf8(name), common::ToUtf8(own));
        if (!IsPlainName(name)) {
            continue;
        }
        std::string bytes;
        if (path == m_files.State()) {
            Json state = State();
            state.erase("timeline");
            bytes = common::DumpJson(state);
        } else {
            bytes = isOwn ? MaskedMainCf(ReadCopied(path), secrets) : ReadCopied(path);
        }
        model.files.push_back({isOwn ? ModelName + name.substr(own.size()) : name, bytes});
    }
    WriteNewFolder(folder, model.files);
}
