#include "Interception.h"

#include "CallTable.h"
#include "ChangingCalls.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstring>
#include <mutex>
#include <set>

namespace recording {

namespace {

std::atomic<Interceptor*> g_interceptor(nullptr);
std::wstring g_computerName;       // empty: as the system says
std::atomic<unsigned> g_inside(0); // calls that the interceptor is answering

// Whom a call goes to: it is there as long as this is.
class Answerer {
public:
    Answerer() {
        ++g_inside; // before the look: who ends the interception looks here behind that
        m_interceptor = g_interceptor;
        if (m_interceptor == nullptr) {
            --g_inside;
        }
    }
    ~Answerer() {
        if (m_interceptor != nullptr) {
            --g_inside;
        }
    }
    Answerer(const Answerer&) = delete;
    Answerer& operator=(const Answerer&) = delete;
    Interceptor* Get() const {
        return m_interceptor;
    }
    Interceptor* operator->() const {
        return m_interceptor;
    }

private:
    Interceptor* m_interceptor = nullptr;
};

BOOL WINAPI StartProcess(LPCWSTR application, LPWSTR commandLine, LPSECURITY_ATTRIBUTES process,
                         LPSECURITY_ATTRIBUTES thread, BOOL inherits, DWORD flags, LPVOID environment, LPCWSTR folder,
                         LPSTARTUPINFOW startup, LPPROCESS_INFORMATION information) {
    const Answerer interceptor;
    // The library starts its tools by their names, with nothing but a command line.
    if (interceptor.Get() == nullptr || application != nullptr || commandLine == nullptr || environment != nullptr ||
        folder != nullptr) {
        return CreateProcessW(application, commandLine, process, thread, inherits, flags, environment, folder, startup,
                              information);
    }
    return interceptor->StartProcess(nullptr, commandLine, flags, startup, information);
}

BOOL WINAPI ExitCodeOf(HANDLE process, LPDWORD exitCode) {
    const Answerer interceptor;
    return interceptor.Get() == nullptr ? GetExitCodeProcess(process, exitCode)
                                        : interceptor->ExitCodeOf(process, exitCode);
}

BOOL WINAPI NameOfComputer(LPWSTR buffer, LPDWORD length) {
    const Answerer interceptor;
    std::wstring name = interceptor.Get() == nullptr ? std::wstring() : interceptor->ComputerName();
    if (name.empty()) {
        name = g_computerName;
    }
    if (name.empty()) {
        // Not by an import, which may be a replaced one.
        typedef BOOL(WINAPI * Function)(LPWSTR, LPDWORD);
        return reinterpret_cast<Function>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetComputerNameW")))(buffer, length);
    }
    if (*length <= name.size()) {
        *length = static_cast<DWORD>(name.size() + 1);
        SetLastError(ERROR_BUFFER_OVERFLOW);
        return FALSE;
    }
    std::copy(name.c_str(), name.c_str() + name.size() + 1, buffer);
    *length = static_cast<DWORD>(name.size());
    return TRUE;
}

struct SystemCall {
    const char* library;
    const char* name;
    void* entry;
    bool isOfLibrary; // replaced in clusutil.dll only, which starts the tools
};

const SystemCall SystemCalls[] = {
    {"kernel32.dll", "CreateProcessW", reinterpret_cast<void*>(&StartProcess), true},
    {"kernel32.dll", "GetExitCodeProcess", reinterpret_cast<void*>(&ExitCodeOf), true},
    {"kernel32.dll", "GetComputerNameW", reinterpret_cast<void*>(&NameOfComputer), false},
};

bool IsSame(const char* first, const char* second) {
    return lstrcmpiA(first, second) == 0;
}

bool IsOfCluster(const char* library) {
    return IsSame(library, "clusapi.dll") || IsSame(library, "resutils.dll");
}

void* EntryOfCluster(const char* library, const char* name, bool takesChangesByName) {
    const Call* const known = FindCall(name);
    const Call* const call = known == nullptr && takesChangesByName ? FindChangingCall(name) : known;
    return call != nullptr && IsSame(call->library, library) ? call->entry : nullptr;
}

bool TakesChangesByName() {
    const Answerer interceptor;
    return interceptor.Get() != nullptr && interceptor->TakesChangesByName();
}

void* EntryFor(const char* library, const char* name, bool isForLibrary) {
    if (IsOfCluster(library)) {
        return EntryOfCluster(library, name, TakesChangesByName());
    }
    for (const SystemCall& call : SystemCalls) {
        if ((isForLibrary || !call.isOfLibrary) && IsSame(library, call.library) && std::strcmp(name, call.name) == 0) {
            return call.entry;
        }
    }
    return nullptr;
}

template <typename T> T* At(HMODULE module, std::size_t rva) {
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + rva);
}

const IMAGE_DATA_DIRECTORY& Directory(HMODULE module, unsigned index) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(dos->e_lfanew));
    return headers->OptionalHeader.DataDirectory[index];
}

// Calls visit(name, entry) for each function of one DLL that has a name.
template <typename Visit> void ForEachName(HMODULE module, std::size_t names, std::size_t entries, const Visit& visit) {
    const auto* name = At<IMAGE_THUNK_DATA>(module, names);
    auto* entry = At<IMAGE_THUNK_DATA>(module, entries);
    for (; name->u1.AddressOfData != 0; ++name, ++entry) {
        if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
            visit(reinterpret_cast<const char*>(
                      At<IMAGE_IMPORT_BY_NAME>(module, static_cast<std::size_t>(name->u1.AddressOfData))->Name),
                  reinterpret_cast<void**>(&entry->u1.Function));
        }
    }
}

// What a linker writes for DLLs that are loaded with their first call.
struct DelayDescriptor {
    DWORD attributes; // 1: addresses are relative
    DWORD library;
    DWORD module;
    DWORD entries;
    DWORD names;
    DWORD bound;
    DWORD unload;
    DWORD time;
};

// Calls visit(dll, name, entry) for each import that has a name, those of DLLs that are loaded late too.
template <typename Visit> void ForEachImport(HMODULE module, const Visit& visit) {
    const auto visitLibrary = [&](DWORD library, DWORD names, DWORD entries) {
        ForEachName(module, names, entries,
                    [&](const char* name, void** entry) { visit(At<const char>(module, library), name, entry); });
    };
    const IMAGE_DATA_DIRECTORY& imports = Directory(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
    if (imports.VirtualAddress != 0) {
        const auto* descriptor = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
        for (; descriptor->Name != 0; ++descriptor) {
            if (descriptor->OriginalFirstThunk != 0) {
                visitLibrary(descriptor->Name, descriptor->OriginalFirstThunk, descriptor->FirstThunk);
            }
        }
    }
    const IMAGE_DATA_DIRECTORY& delayed = Directory(module, IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT);
    if (delayed.VirtualAddress != 0) {
        const auto* descriptor = At<DelayDescriptor>(module, delayed.VirtualAddress);
        for (; descriptor->library != 0; ++descriptor) {
            if ((descriptor->attributes & 1) != 0) {
                visitLibrary(descriptor->library, descriptor->names, descriptor->entries);
            }
        }
    }
}

void Write(void** entry, void* value) {
    DWORD old = 0;
    VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &old);
    *entry = value;
    VirtualProtect(entry, sizeof(*entry), old, &old);
}

// Somebody may have freed it since: what was patched is gone with it then.
bool IsLoaded(HMODULE module) {
    HMODULE there = nullptr;
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              reinterpret_cast<LPCWSTR>(module), &there) != 0 &&
           there == module;
}

void PutBack(const std::vector<Patch>& patches) {
    for (auto patch = patches.rbegin(); patch != patches.rend(); ++patch) {
        if (IsLoaded(patch->module) && *patch->entry == patch->replacement) {
            Write(patch->entry, patch->original);
        }
    }
}

void FindOriginals() {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    for (Call& call : CallTable()) {
        if (call.original != nullptr) {
            continue;
        }
        const HMODULE library = GetModuleHandleA(call.library);
        call.original = library == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(library, call.name));
    }
}

} // namespace

Slot Intercept(const Call& call, const Slot* slots, Invocation invoke) {
    const Answerer interceptor;
    return interceptor.Get() == nullptr ? invoke(OriginalOf(call), slots) : interceptor->Answer(call, slots, invoke);
}

// A module that loads the DLL with its first call has left that to the function in its place.
void* OriginalOf(const Call& call) {
    if (call.original == nullptr) {
        const DWORD lastError = GetLastError();
        LoadLibraryA(call.library);
        FindOriginals();
        SetLastError(lastError);
    }
    return call.original;
}

BOOL StartTool(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
               PROCESS_INFORMATION* information) {
    const Answerer interceptor;
    return interceptor.Get() == nullptr ? CreateProcessW(program, commandLine, nullptr, nullptr, TRUE, flags, nullptr,
                                                         nullptr, startup, information)
                                        : interceptor->StartProcess(program, commandLine, flags, startup, information);
}

BOOL ExitCodeOfTool(HANDLE process, DWORD* exitCode) {
    return ExitCodeOf(process, exitCode);
}

Interceptor* Interception::Current() {
    return g_interceptor;
}

Interception::Interception(Interceptor& interceptor, const std::vector<HMODULE>& modules) : m_former(g_interceptor) {
    const DWORD lastError = GetLastError();
    FindOriginals();
    g_interceptor = &interceptor;
    for (const HMODULE module : modules) {
        PatchModule(module == nullptr ? GetModuleHandleW(nullptr) : module);
    }
    SetLastError(lastError);
}

Interception::~Interception() {
    PutBack(m_patches);
    g_interceptor = m_former;
}

void Interception::AwaitCalls() {
    while (g_inside != 0) {
        Sleep(1);
    }
}

void Interception::PatchModule(HMODULE module) {
    const bool isLibrary = module == GetModuleHandleW(L"clusutil.dll");
    ForEachImport(module, [this, isLibrary, module](const char* library, const char* name, void** entry) {
        void* const replacement = EntryFor(library, name, isLibrary);
        if (replacement != nullptr) {
            m_patches.push_back({entry, replacement, *entry, module});
            Write(entry, replacement);
        }
    });
}

GivenComputerName::GivenComputerName(const std::wstring& name, const std::vector<HMODULE>& modules) {
    g_computerName = name;
    void* const replacement = reinterpret_cast<void*>(&NameOfComputer);
    for (const HMODULE module : modules) {
        const HMODULE named = module == nullptr ? GetModuleHandleW(nullptr) : module;
        ForEachImport(named, [&](const char* library, const char* function, void** entry) {
            if (EntryFor(library, function, false) == replacement) {
                m_patches.push_back({entry, replacement, *entry, named});
                Write(entry, replacement);
            }
        });
    }
}

GivenComputerName::~GivenComputerName() {
    PutBack(m_patches);
    g_computerName.clear();
}

std::vector<std::string> Interception::UnknownOf(const std::vector<HMODULE>& modules, bool takesChangesByName) {
    std::set<std::string> names;
    for (const HMODULE module : modules) {
        ForEachImport(module == nullptr ? GetModuleHandleW(nullptr) : module,
                      [&](const char* library, const char* name, void**) {
                          const bool isOfSimulator = std::strncmp(name, "ClusSim", 7) == 0;
                          if (IsOfCluster(library) && !isOfSimulator &&
                              EntryOfCluster(library, name, takesChangesByName) == nullptr) {
                              names.insert(name);
                          }
                      });
    }
    return std::vector<std::string>(names.begin(), names.end());
}

FARPROC Interception::Replacement(const char* library, const char* name) {
    if (!IsOfCluster(library)) {
        return nullptr;
    }
    FindOriginals();
    return reinterpret_cast<FARPROC>(EntryFor(library, name, false));
}

} // namespace recording
