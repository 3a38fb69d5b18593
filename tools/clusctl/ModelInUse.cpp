#include "ModelInUse.h"

#include "CommandLine.h"
#include "Failure.h"
#include "Replay.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>

namespace {

const wchar_t MainCf[] = L"\\main.cf";

std::wstring g_named;
bool g_isBundle = false;
std::wstring g_bundle; // the path of the one whose computer is in use; empty without one

void SetVariable(const wchar_t* name, const std::wstring& value) {
    if (!SetEnvironmentVariableW(name, value.empty() ? nullptr : value.c_str()) && !value.empty()) {
        throw Failure::OfCode("cannot set the variable " + Printable(name), GetLastError());
    }
}

std::wstring ProgramFolder() {
    std::wstring path(32768, L'\0'); // the longest there is
    path.resize(GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string TextOfModel(const std::wstring& file) {
    try {
        return common::ReadWholeFile(file);
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the model " + Quoted(file), error.Code());
    }
}

// Models in JSON begin with a bracket; no main.cf does.
bool IsJson(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string::npos && text[first] == '{';
}

} // namespace

std::string ReadModelText(const std::wstring& file) {
    try {
        return common::ReadWholeFile(file);
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read " + Quoted(file), error.Code());
    }
}

std::wstring SimulatorFolder(const wchar_t* file) {
    const std::wstring program = ProgramFolder();
    for (const std::wstring& folder : {common::FullPath(program + L"..\\simulator\\"), program}) {
        if (common::FileExists(folder + file)) {
            return folder;
        }
    }
    throw Failure(Errors::NoSimulator, "the installation lacks the simulator's " + Printable(file))
        .Hint("It belongs into the folder simulator, beside that of clusctl.exe.");
}

std::wstring ModelFile(const std::wstring& named) {
    const std::wstring path = common::FullPath(named);
    std::wstring model = IsFolder(path) ? path + MainCf : path;
    if (!common::FileExists(model)) {
        throw Failure(Errors::FileNotFound, "there is no model " + Quoted(named))
            .Hint(IsFolder(path) ? "A folder is one of VCS and has to hold a main.cf." : "");
    }
    return IsBundle(model) ? ModelOfBundle(model) : model;
}

// What is loaded by its path is found by its name from then on, by this program and by the library.
void LoadClusterSimulator() {
    const std::wstring folder = SimulatorFolder(L"clusapi.dll");
    for (const wchar_t* const name : {L"clusapi.dll", L"resutils.dll"}) {
        if (LoadLibraryExW((folder + name).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) == nullptr) {
            throw Failure::OfCode("cannot load the simulator's " + Printable(name), GetLastError());
        }
    }
}

bool IsModelOfVcs(const std::wstring& file) {
    const std::string text = TextOfModel(ModelFile(file));
    return IsRecording(text) ? IsRecordingOfVcs(text) : !IsJson(text);
}

void RequireModel(const std::wstring& file) {
    const std::string text = TextOfModel(ModelFile(file));
    if (IsRecording(text)) {
        throw Failure(Errors::NotPossible, Quoted(file) + " is a recording, not a model")
            .Hint("\"clusctl model from-recording\" makes one of it.");
    }
}

void UseModel(const std::wstring& file, Answering asked) {
    const std::wstring model = ModelFile(file);
    const std::string text = TextOfModel(model);
    if (IsRecording(text)) {
        UseRecording(file, text, asked);
        SetVariable(ClusterVariable, L"");
        SetVariable(VcsVariable, L"");
        g_named = file;
        return;
    }
    const bool isVcs = !IsJson(text);
    if (isVcs != (asked == Answering::Vcs)) {
        throw WrongUsage(Quoted(file) + (isVcs ? " is a model of VCS, and this command asks a failover cluster"
                                               : " is a model of a failover cluster, and this command asks VCS"));
    }
    SetVariable(L"CLUSSIM_FILE", isVcs ? L"" : model);
    SetVariable(L"VCSSIM_MAIN_CF", isVcs ? model : L"");
    if (isVcs) {
        SetVariable(L"PATH", SimulatorFolder(L"hares.exe") + L";" + common::EnvironmentVariable(L"PATH"));
    } else {
        LoadClusterSimulator();
    }
    g_named = file;
    const std::wstring path = common::FullPath(file);
    g_isBundle = path != model && !IsFolder(path);
    g_bundle = g_isBundle ? path : std::wstring();
}

const std::wstring& NamedModel() {
    return g_named;
}

bool IsBundleInUse() {
    return g_isBundle;
}

const std::wstring& BundleInUse() {
    return g_bundle;
}

void UseComputerOf(const std::wstring& bundle) {
    g_bundle = bundle;
}

const BundledComputer* BundledComputerInUse() {
    return g_bundle.empty() ? nullptr : &ComputerOfBundle(g_bundle);
}
