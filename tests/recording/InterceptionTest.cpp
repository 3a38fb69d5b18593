// Which functions of the cluster's DLLs a module imports whose calls no recording shows.
#include "Interception.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace {

// What a loaded module has of its imports: one DLL with some functions.
class Module {
public:
    Module(const std::string& library, const std::vector<std::string>& functions) : m_bytes(4096) {
        auto& dos = At<IMAGE_DOS_HEADER>(0);
        dos.e_lfanew = sizeof(dos);
        auto& directories = At<IMAGE_NT_HEADERS>(sizeof(dos)).OptionalHeader.DataDirectory;
        m_end = sizeof(dos) + sizeof(IMAGE_NT_HEADERS);
        directories[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress = Take(2 * sizeof(IMAGE_IMPORT_DESCRIPTOR));
        auto& imports = At<IMAGE_IMPORT_DESCRIPTOR>(directories[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
        imports.Name = Take(library.size() + 1);
        std::memcpy(&m_bytes[imports.Name], library.c_str(), library.size());
        const DWORD size = static_cast<DWORD>((functions.size() + 1) * sizeof(IMAGE_THUNK_DATA));
        imports.OriginalFirstThunk = Take(size);
        imports.FirstThunk = Take(size);
        for (std::size_t i = 0; i < functions.size(); ++i) {
            const DWORD name = Take(sizeof(WORD) + functions[i].size() + 1);
            std::memcpy(&m_bytes[name + sizeof(WORD)], functions[i].c_str(), functions[i].size());
            At<IMAGE_THUNK_DATA>(imports.OriginalFirstThunk + i * sizeof(IMAGE_THUNK_DATA)).u1.AddressOfData = name;
        }
    }
    HMODULE Get() {
        return reinterpret_cast<HMODULE>(m_bytes.data());
    }

private:
    template <typename T> T& At(std::size_t at) {
        return *reinterpret_cast<T*>(&m_bytes[at]);
    }
    DWORD Take(std::size_t size) {
        const auto begin = static_cast<DWORD>(m_end);
        m_end += (size + 15) / 16 * 16;
        return begin;
    }

    std::vector<unsigned char> m_bytes;
    std::size_t m_end = 0;
};

typedef std::vector<std::string> Names;

} // namespace

TEST(UnseenCalls, AreThoseOfFunctionsThatTheTableLacks) {
    Module component("CLUSAPI.dll", {"OpenCluster", "ClusterRegOpenKey", "CloseCluster", "AddClusterNode"});
    Module other("resutils.dll", {"ResUtilStartResourceService", "ResUtilFindSzProperty", "OpenCluster"});
    Module stranger("kernel32.dll", {"ClusterRegOpenKey"});
    EXPECT_EQ(recording::Interception::UnknownOf({component.Get(), other.Get(), stranger.Get()}),
              (Names{"AddClusterNode", "ClusterRegOpenKey", "OpenCluster", "ResUtilStartResourceService"}));
}

// What the simulator adds for tests is no function of a cluster.
TEST(UnseenCalls, AreNoneOfTheProgramsThatAreRecordedHere) {
    EXPECT_EQ(recording::Interception::UnknownOf({nullptr, GetModuleHandleW(L"clusutil.dll")}), Names());
}
