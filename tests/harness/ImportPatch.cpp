#include "ImportPatch.h"

#include "OpenDispatch.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string>

namespace harness {

namespace {

template <typename T> T* At(HMODULE module, std::size_t rva) {
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + rva);
}

// Calls visit(dll, name, ordinal, entry) for every import; the name is null for an import by ordinal, and without a
// table of names, when the ordinal is 0, too.
template <typename Visit> void ForEachImport(HMODULE module, Visit visit) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(dos->e_lfanew));
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) {
        return;
    }
    for (const auto* descriptor = At<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress); descriptor->Name != 0;
         ++descriptor) {
        auto* entry = At<IMAGE_THUNK_DATA>(module, descriptor->FirstThunk);
        const auto* name =
            descriptor->OriginalFirstThunk ? At<IMAGE_THUNK_DATA>(module, descriptor->OriginalFirstThunk) : nullptr;
        for (; entry->u1.Function != 0; ++entry) {
            const char* text = nullptr;
            WORD ordinal = 0;
            if (name) {
                if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                    ordinal = static_cast<WORD>(IMAGE_ORDINAL(name->u1.Ordinal));
                } else {
                    text = reinterpret_cast<const char*>(
                        At<IMAGE_IMPORT_BY_NAME>(module, static_cast<std::size_t>(name->u1.AddressOfData))->Name);
                }
                ++name;
            }
            visit(At<char>(module, descriptor->Name), text, ordinal, reinterpret_cast<void**>(&entry->u1.Function));
        }
    }
}

bool StartsWith(const std::string& text, const char* lead) {
    return text.compare(0, std::strlen(lead), lead) == 0;
}

bool IsCRuntime(const char* dll) {
    std::string name(dll);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name == "msvcrt.dll" || StartsWith(name, "ucrtbase") || StartsWith(name, "api-ms-win-crt-");
}

bool IsDll(const char* entryDll, const char* dll) {
    return std::strcmp(dll, AnyCRuntime) == 0 ? IsCRuntime(entryDll) : lstrcmpiA(entryDll, dll) == 0;
}

// 0 when the DLL is not loaded or exports no such name. Visual Studio's import library of Winsock names ordinals.
WORD ExportOrdinal(const char* dll, const char* name) {
    const HMODULE module = GetModuleHandleA(dll);
    if (!module) {
        return 0;
    }
    const auto* headers =
        At<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (directory.VirtualAddress == 0) {
        return 0;
    }
    const auto* exports = At<IMAGE_EXPORT_DIRECTORY>(module, directory.VirtualAddress);
    const DWORD* names = At<DWORD>(module, exports->AddressOfNames);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        if (std::strcmp(At<char>(module, names[i]), name) == 0) {
            return static_cast<WORD>(exports->Base + At<WORD>(module, exports->AddressOfNameOrdinals)[i]);
        }
    }
    return 0;
}

} // namespace

void WriteImport(void** entry, void* value) {
    DWORD old = 0;
    VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &old);
    *entry = value;
    VirtualProtect(entry, sizeof(*entry), old, &old);
}

const char AnyCRuntime[] = "(any C runtime)";

std::vector<void**> FindImports(HMODULE module, const char* dll, const char* name) {
    std::vector<void**> found;
    ForEachImport(module, [&](const char* entryDll, const char* entryName, WORD ordinal, void** entry) {
        const bool isThis =
            entryName ? std::strcmp(entryName, name) == 0 : ordinal != 0 && ordinal == ExportOrdinal(entryDll, name);
        if (isThis && IsDll(entryDll, dll)) {
            found.push_back(entry);
        }
    });
    if (found.empty() && std::strcmp(dll, AnyCRuntime) == 0 && std::strcmp(name, "_wsopen") == 0) {
        found = OpensThroughDispatch(FindImports(module, dll, "_wsopen_dispatch"));
    }
    return found;
}

std::vector<void**> FindImportsByAddress(HMODULE module, const void* address) {
    std::vector<void**> found;
    ForEachImport(module, [&](const char*, const char*, WORD, void** entry) {
        if (*entry == address) {
            found.push_back(entry);
        }
    });
    return found;
}

HMODULE LibraryModule() {
    const HMODULE module = GetModuleHandleW(L"clusutil.dll");
    if (!module) {
        throw std::runtime_error("clusutil.dll is not loaded");
    }
    return module;
}

ImportEntryPatch::ImportEntryPatch(std::vector<void**> entries, void* replacement)
    : m_entries(std::move(entries)), m_original(nullptr), m_replacement(replacement) {
    if (m_entries.empty()) {
        throw std::runtime_error("the module does not import this function");
    }
    m_original = *m_entries.front();
    for (void** entry : m_entries) {
        WriteImport(entry, replacement);
    }
}

ImportEntryPatch::~ImportEntryPatch() {
    for (void** entry : m_entries) {
        if (*entry != m_replacement) {
            OutputDebugStringA("import patches ended in the wrong order");
            std::abort();
        }
        WriteImport(entry, m_original);
    }
}

} // namespace harness
