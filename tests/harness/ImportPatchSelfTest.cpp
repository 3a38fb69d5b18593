#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace harness;

namespace {

BOOL CallComputerName(HMODULE module) {
    wchar_t text[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    void** entry = FindImports(module, "KERNEL32.dll", "GetComputerNameW").at(0);
    return reinterpret_cast<decltype(&GetComputerNameW)>(*entry)(text, &cch);
}

TEST(ImportPatch, ReplacesWithACapturingLambdaAndRestores) {
    int calls = 0;
    {
        auto patch = PatchImport(kernel32, GetComputerNameW, [&](LPWSTR, LPDWORD) -> BOOL {
            ++calls;
            return FALSE;
        });
        EXPECT_FALSE(CallComputerName(LibraryModule()));
    }
    EXPECT_TRUE(CallComputerName(LibraryModule()));
    EXPECT_EQ(calls, 1);
}

TEST(ImportPatch, PassesOnToWhatItReplaced) {
    auto lower = PatchImport(kernel32, GetComputerNameW, [](LPWSTR, LPDWORD) -> BOOL { return 17; });
    struct UpperTag;
    ImportPatch<BOOL(LPWSTR, LPDWORD), UpperTag>* self = nullptr;
    ImportPatch<BOOL(LPWSTR, LPDWORD), UpperTag> upper(
        FindImports(LibraryModule(), "kernel32.dll", "GetComputerNameW"),
        [&](LPWSTR text, LPDWORD cch) { return self->Next(text, cch) + 1; });
    self = &upper;
    EXPECT_EQ(CallComputerName(LibraryModule()), 18);
}

TEST(ImportPatch, ASecondPatchInTheSameSlotIsAnError) {
    const auto patchIt = [] {
        return PatchImport(kernel32, GetComputerNameW, [](LPWSTR, LPDWORD) -> BOOL { return TRUE; });
    };
    const auto first = patchIt();
    EXPECT_THROW(patchIt(), std::logic_error);
}

TEST(ImportPatch, ExportNamesCompareExactlyAndDllNamesWithoutCase) {
    EXPECT_FALSE(FindImports(LibraryModule(), "KERNEL32.DLL", "GetComputerNameW").empty());
    EXPECT_TRUE(FindImports(LibraryModule(), "kernel32.dll", "getcomputernamew").empty());
    EXPECT_TRUE(FindImports(LibraryModule(), "kernel32.dll", "GetComputerName").empty());
}

// What a loader sees of a module that imports _read, or this ordinal, from each of these DLLs.
class ModuleImage {
public:
    explicit ModuleImage(const std::vector<std::string>& dlls, WORD ordinal = 0)
        : m_bytes(sizeof(IMAGE_NT_HEADERS) + 4096) {
        Take(sizeof(IMAGE_DOS_HEADER));
        const std::size_t start = Take(sizeof(IMAGE_NT_HEADERS));
        At<IMAGE_DOS_HEADER>(0).e_lfanew = static_cast<LONG>(start);
        IMAGE_NT_HEADERS& headers = At<IMAGE_NT_HEADERS>(start);
        const std::size_t function = TakeText("\0\0_read", 8); // a hint, then the name
        const std::size_t descriptors = Take(sizeof(IMAGE_IMPORT_DESCRIPTOR) * (dlls.size() + 1));
        headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress =
            static_cast<DWORD>(descriptors);
        for (std::size_t i = 0; i < dlls.size(); ++i) {
            const std::size_t thunks = Take(sizeof(IMAGE_THUNK_DATA) * 4); // names, entries, each with its end
            At<IMAGE_THUNK_DATA>(thunks).u1.AddressOfData = ordinal ? IMAGE_ORDINAL_FLAG64 | ordinal : function;
            At<IMAGE_THUNK_DATA>(thunks + sizeof(IMAGE_THUNK_DATA) * 2).u1.Function = i + 1;
            auto& descriptor = At<IMAGE_IMPORT_DESCRIPTOR>(descriptors + sizeof(IMAGE_IMPORT_DESCRIPTOR) * i);
            descriptor.OriginalFirstThunk = static_cast<DWORD>(thunks);
            descriptor.FirstThunk = static_cast<DWORD>(thunks + sizeof(IMAGE_THUNK_DATA) * 2);
            descriptor.Name = static_cast<DWORD>(TakeText(dlls[i].c_str(), dlls[i].size() + 1));
        }
    }

    HMODULE Handle() {
        return reinterpret_cast<HMODULE>(m_bytes.data());
    }

private:
    template <typename T> T& At(std::size_t offset) {
        return *reinterpret_cast<T*>(m_bytes.data() + offset);
    }
    std::size_t Take(std::size_t size) {
        return std::exchange(m_used, m_used + (size + 15) / 16 * 16);
    }
    std::size_t TakeText(const char* text, std::size_t size) {
        const std::size_t offset = Take(size);
        std::memcpy(m_bytes.data() + offset, text, size);
        return offset;
    }

    std::vector<unsigned char> m_bytes;
    std::size_t m_used = 0;
};

TEST(ImportPatch, AnyCRuntimeIsWhicheverDllHoldsIt) {
    const std::vector<std::string> runtimes = {"msvcrt.dll", "MSVCRT.dll", "ucrtbase.dll", "UCRTBASED.dll",
                                               "api-ms-win-crt-stdio-l1-1-0.dll"};
    const std::vector<std::string> others = {"kernel32.dll", "msvcrt-old.dll", "api-ms-win-core-file-l1-1-0.dll",
                                             "my-ucrtbase.dll"};
    for (const std::string& dll : runtimes) {
        EXPECT_EQ(FindImports(ModuleImage({dll}).Handle(), AnyCRuntime, "_read").size(), 1u) << dll;
        EXPECT_TRUE(FindImports(ModuleImage({dll}).Handle(), AnyCRuntime, "_write").empty()) << dll;
    }
    for (const std::string& dll : others) {
        EXPECT_EQ(FindImports(ModuleImage({dll}).Handle(), dll.c_str(), "_read").size(), 1u) << dll;
        EXPECT_TRUE(FindImports(ModuleImage({dll}).Handle(), AnyCRuntime, "_read").empty()) << dll;
    }
    ModuleImage both({"kernel32.dll", "api-ms-win-crt-stdio-l1-1-0.dll", "ucrtbase.dll"});
    EXPECT_EQ(FindImports(both.Handle(), AnyCRuntime, "_read").size(), 2u);
}

TEST(ImportPatch, AnImportByOrdinalIsFoundByTheNameThatItsDllExports) {
    const WORD startupOrdinal = 115; // WSAStartup, on every Windows
    ModuleImage module({"ws2_32.dll", "clusutil-none.dll"}, startupOrdinal);
    EXPECT_EQ(FindImports(module.Handle(), "WS2_32.dll", "WSAStartup").size(), 1u);
    EXPECT_TRUE(FindImports(module.Handle(), "ws2_32.dll", "WSACleanup").empty());
    EXPECT_TRUE(FindImports(module.Handle(), "ws2_32.dll", "NoSuchFunction").empty());
    EXPECT_TRUE(FindImports(module.Handle(), "clusutil-none.dll", "WSAStartup").empty());
}

TEST(ImportPatch, AnyCRuntimeHoldsTheLibrarysFileFunctions) {
    for (const char* function : {"_wfopen", "_wsopen", "_read", "_close"}) {
        EXPECT_FALSE(FindImports(LibraryModule(), AnyCRuntime, function).empty()) << function;
    }
    EXPECT_TRUE(FindImports(LibraryModule(), AnyCRuntime, "GetComputerNameW").empty());
}

TEST(ImportPatch, AnImportThatTheModuleLacksIsAnError) {
    const auto patchIt = [] { return PatchImport(kernel32, GetTickCount, []() -> DWORD { return 0; }); };
    EXPECT_THROW(patchIt(), std::runtime_error);
}

} // namespace
