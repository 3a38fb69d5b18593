// The one function of clusrecord.dll.
#include "clusrecord.h"

#include "Interception.h"
#include "Recorder.h"

#include "common/Files.h"
#include "common/Text.h"
#include "common/UtcTime.h"

#include <psapi.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

namespace {

struct State {
    State(const std::wstring& file, const recording::Header& header, const std::vector<HMODULE>& modules)
        : recorder(file, header), interception(std::make_unique<recording::Interception>(recorder, modules)) {
    }
    recording::Recorder recorder;
    std::unique_ptr<recording::Interception> interception;
};

std::mutex g_mutex;
State* g_state = nullptr; // left alone at the end of the process: others may still call

bool IsOfCluster(HMODULE module) {
    return module == GetModuleHandleW(L"clusapi.dll") || module == GetModuleHandleW(L"resutils.dll");
}

HMODULE OwnModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&OwnModule), &module);
    return module;
}

// Other modules call this one while it records, and threads may be inside at any time.
bool StayLoaded() {
    HMODULE module = nullptr;
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                              reinterpret_cast<LPCWSTR>(&OwnModule), &module) != 0;
}

// All that are loaded but the cluster's own, whose calls among themselves nobody wants, and this one.
std::vector<HMODULE> ModulesToRecord() {
    std::vector<HMODULE> modules(1024);
    DWORD size = 0;
    if (!EnumProcessModules(GetCurrentProcess(), modules.data(), static_cast<DWORD>(modules.size() * sizeof(HMODULE)),
                            &size)) {
        return {nullptr};
    }
    modules.resize(std::min<std::size_t>(modules.size(), size / sizeof(HMODULE)));
    std::vector<HMODULE> wanted;
    for (const HMODULE module : modules) {
        if (!IsOfCluster(module) && module != OwnModule()) {
            wanted.push_back(module);
        }
    }
    return wanted;
}

std::string ProgramName() {
    std::wstring path(32768, L'\0'); // the longest there is
    path.resize(GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size())));
    return common::ToUtf8(path.substr(path.find_last_of(L"\\/") + 1));
}

recording::Header HeaderFor(DWORD flags, const std::vector<HMODULE>& modules) {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &length);
    recording::Header header;
    header.program = ProgramName();
    header.begun = common::UtcNow();
    header.computer = common::ToUtf8(name);
    header.isAnonymised = (flags & CLUSRECORD_ANONYMISE) != 0;
    header.allowsChanges = (flags & CLUSRECORD_ALLOW_CHANGES) != 0;
    header.unseen = recording::Interception::UnknownOf(modules, !header.allowsChanges);
    return header;
}

DWORD Begin(const wchar_t* file, DWORD flags) {
    if (g_state != nullptr) {
        return ERROR_ALREADY_EXISTS;
    }
    try {
        if (!StayLoaded()) {
            return GetLastError();
        }
        const std::vector<HMODULE> modules = ModulesToRecord();
        g_state = std::make_unique<State>(file, HeaderFor(flags, modules), modules).release();
    } catch (const common::FileError& error) {
        return error.Code();
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    return ERROR_SUCCESS;
}

DWORD End() {
    if (g_state == nullptr) {
        return ERROR_NOT_FOUND;
    }
    const std::unique_ptr<State> state(g_state);
    g_state = nullptr;
    state->interception.reset();
    recording::Interception::AwaitCalls(); // behind the last call comes the end
    try {
        return state->recorder.Finish(nullptr);
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

} // namespace

DWORD WINAPI ClusRecord(LPCWSTR file, DWORD flags) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    if ((flags & ~static_cast<DWORD>(CLUSRECORD_ALLOW_CHANGES | CLUSRECORD_ANONYMISE)) != 0) {
        return ERROR_INVALID_PARAMETER;
    }
    return file == nullptr ? End() : Begin(file, flags);
}
