// Replaces one import in the import table of a loaded module, for as long as the object lives.
//
//     auto patch = PatchImport(kernel32, GetComputerNameW, [&](LPWSTR text, LPDWORD cch) -> BOOL { ... });
//
// The replacement may capture. It calls what it replaced with patch.Next(...), or the real thing with
// ::GetComputerNameW(...): only clusutil.dll's own calls are replaced. Patches stack and must end in the opposite
// order.
#ifndef IMPORTPATCH_H
#define IMPORTPATCH_H

#include <winsock2.h>
#include <windows.h>

#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace harness {

// Stands for the C runtime whichever DLL it is: msvcrt.dll, ucrtbase.dll, or the api-ms-win-crt sets that lead to it.
extern const char AnyCRuntime[];

// The decorated name that this compiler gives an export.
constexpr const char* Decorated(const char* itanium, const char* microsoft) {
#if defined(__MINGW32__)
    static_cast<void>(microsoft);
    return itanium;
#else
    static_cast<void>(itanium);
    return microsoft;
#endif
}

// The entries of a module's import table that hold one function. `dll` may be AnyCRuntime. All import descriptors are
// searched; the DLL name compares without case, the export name exactly. An import by ordinal is found by the name that
// the loaded DLL exports it under; _wsopen of AnyCRuntime also where the runtime has it inline (OpenDispatch.h).
std::vector<void**> FindImports(HMODULE module, const char* dll, const char* name);

// The entries that hold this address now, whatever DLL and name they stand under.
std::vector<void**> FindImportsByAddress(HMODULE module, const void* address);

// clusutil.dll as loaded; throws when it is not.
HMODULE LibraryModule();

// Writes into an entry of an import table, which is read-only.
void WriteImport(void** entry, void* value);

// Writes one function address into import table entries and puts the old one back.
class ImportEntryPatch {
public:
    // Throws std::runtime_error when there is no entry.
    ImportEntryPatch(std::vector<void**> entries, void* replacement);
    ~ImportEntryPatch();
    ImportEntryPatch(const ImportEntryPatch&) = delete;
    ImportEntryPatch& operator=(const ImportEntryPatch&) = delete;

    void* Original() const {
        return m_original;
    }

private:
    std::vector<void**> m_entries;
    void* m_original;
    void* m_replacement;
};

// `Tag` makes the slot of the replacement unique: one patch at a time per slot.
template <typename Function, typename Tag> class ImportPatch;

template <typename R, typename... A, typename Tag> class ImportPatch<R(A...), Tag> {
public:
    ImportPatch(std::vector<void**> entries, std::function<R(A...)> replacement)
        : m_slot(std::move(replacement)), m_patch(std::move(entries), reinterpret_cast<void*>(&Thunk)) {
    }

    R Next(A... args) const {
        return reinterpret_cast<R (*)(A...)>(m_patch.Original())(args...);
    }

private:
    struct Slot {
        explicit Slot(std::function<R(A...)> replacement) {
            if (Current()) {
                throw std::logic_error("this import is patched already");
            }
            Current() = std::move(replacement);
        }
        ~Slot() {
            Current() = nullptr;
        }
        static std::function<R(A...)>& Current() {
            static std::function<R(A...)> current;
            return current;
        }
    };

    static R Thunk(A... args) {
        return Slot::Current()(args...);
    }

    Slot m_slot; // goes after the patch is taken back
    ImportEntryPatch m_patch;
};

} // namespace harness

#define PatchImportOf(module, dll, function, ...)                                                      \
    ::harness::ImportPatch<std::remove_pointer_t<decltype(&::function)>, struct function##_in_##dll> { \
        ::harness::FindImports(module, #dll ".dll", #function), __VA_ARGS__                            \
    }
#define PatchImport(dll, function, ...) PatchImportOf(::harness::LibraryModule(), dll, function, __VA_ARGS__)

#endif
