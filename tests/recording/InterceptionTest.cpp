// Functions of the cluster's DLLs that a module imports, and of which no more is known than their names: those that
// change the cluster are refused, the others are named.
#include "Interception.h"

#include "Player.h"
#include "Recorder.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
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
        m_entries = imports.FirstThunk;
    }
    HMODULE Get() {
        return reinterpret_cast<HMODULE>(m_bytes.data());
    }
    // Where its calls of the function lead; null as long as nobody takes the place of it.
    template <typename Function> Function Called(std::size_t number) {
        return reinterpret_cast<Function>(
            At<IMAGE_THUNK_DATA>(m_entries + number * sizeof(IMAGE_THUNK_DATA)).u1.Function);
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
    std::size_t m_entries = 0;
};

typedef std::vector<std::string> Names;

} // namespace

TEST(UnseenCalls, AreThoseOfFunctionsThatTheTableLacks) {
    Module component("CLUSAPI.dll", {"OpenCluster", "ClusterRegOpenKey", "CloseCluster", "AddClusterNode"});
    Module other("resutils.dll", {"ResUtilStartResourceService", "ResUtilFindSzProperty", "OpenCluster"});
    Module stranger("kernel32.dll", {"ClusterRegOpenKey"});
    const std::vector<HMODULE> modules = {component.Get(), other.Get(), stranger.Get()};
    EXPECT_EQ(recording::Interception::UnknownOf(modules, false),
              (Names{"AddClusterNode", "ClusterRegOpenKey", "OpenCluster", "ResUtilStartResourceService"}));
    EXPECT_EQ(recording::Interception::UnknownOf(modules, true),
              (Names{"ClusterRegOpenKey", "OpenCluster", "ResUtilStartResourceService"}));
}

// What the simulator adds for tests is no function of a cluster.
TEST(UnseenCalls, AreNoneOfTheProgramsThatAreRecordedHere) {
    EXPECT_EQ(recording::Interception::UnknownOf({nullptr, GetModuleHandleW(L"clusutil.dll")}, false), Names());
}

namespace {

typedef DWORD(WINAPI* SetPassword)(LPCWSTR cluster, LPCWSTR password, DWORD flags, void* status, DWORD* size);
typedef void*(WINAPI* AddNode)(void* cluster, LPCWSTR name, void* progress, void* argument);
typedef LONG(WINAPI* SetValue)(void* key, LPCWSTR name, DWORD type, const BYTE* bytes, DWORD size);

class ChangesByName : public testing::Test {
protected:
    // What a component gets that calls the three, its last-error value behind the one that gives a handle included.
    std::string Ask() {
        DWORD size = 7;
        const DWORD first = m_component.Called<SetPassword>(1)(L"C", L"new", 0, nullptr, &size);
        SetLastError(ERROR_SUCCESS);
        const void* const node = m_component.Called<AddNode>(3)(nullptr, L"NODE-C", nullptr, nullptr);
        const DWORD lastError = GetLastError();
        const LONG second = m_other.Called<SetValue>(0)(nullptr, L"Value", REG_SZ, nullptr, 0);
        return std::to_string(first) + ", " + (node == nullptr ? "none" : "a node") + " (" + std::to_string(lastError) +
               "), " + std::to_string(second) + ", size " + std::to_string(size);
    }
    std::vector<HMODULE> Modules() {
        return {m_component.Get(), m_other.Get()};
    }

    Module m_component{"clusapi.dll",
                       {"OpenCluster", "SetClusterServiceAccountPassword", "ClusterRegOpenKey", "AddClusterNode"}};
    Module m_other{"resutils.dll", {"ResUtilSetSzValue", "ResUtilStartResourceService", "DestroyCluster"}};
    const common::TemporaryFolder m_folder{L"changes"};
    const std::wstring m_file = m_folder.File(L"a.rec");
};

const char Refusals[] = "5, none (5), 5, size 7";

} // namespace

TEST_F(ChangesByName, AreRefusedWrittenAndAnsweredAgain) {
    recording::Recorder recorder(m_file, recording::Header());
    {
        const recording::Interception interception(recorder, Modules());
        EXPECT_EQ(Ask(), Refusals);
        EXPECT_NE(m_component.Called<void*>(0), nullptr); // of the table
        EXPECT_EQ(m_component.Called<void*>(2), nullptr); // asks, as far as is known
        EXPECT_EQ(m_other.Called<void*>(1), nullptr);
        EXPECT_EQ(m_other.Called<void*>(2), nullptr); // no function of this DLL
        EXPECT_NE(recording::Interception::Replacement("ClusApi.dll", "DestroyCluster"), nullptr);
    }
    recorder.Finish(nullptr);
    recording::Recording written = recording::ReadRecording(common::ReadWholeFile(m_file));
    ASSERT_EQ(written.calls.size(), 3u);
    const char* const names[] = {"SetClusterServiceAccountPassword", "AddClusterNode", "ResUtilSetSzValue"};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(written.calls[i].name, names[i]);
        EXPECT_TRUE(written.calls[i].isRefused);
        EXPECT_EQ(written.calls[i].in, recording::EmptyObject);
        EXPECT_EQ(written.calls[i].result, i == 1 ? 0 : ERROR_ACCESS_DENIED);
    }

    recording::Player player(std::move(written));
    const recording::Interception interception(player, Modules());
    EXPECT_EQ(Ask(), Refusals);
    EXPECT_EQ(player.Missing(), "");
    EXPECT_THROW(Ask(), recording::NotRecorded); // nothing reaches a cluster
}

// Who is about to call when the recording ends is still refused: the function itself is not known here.
TEST_F(ChangesByName, AreRefusedToThoseWhoComeLate) {
    recording::Recorder recorder(m_file, recording::Header());
    SetPassword entry = nullptr;
    AddNode handleEntry = nullptr;
    {
        const recording::Interception interception(recorder, Modules());
        entry = m_component.Called<SetPassword>(1);
        handleEntry = m_component.Called<AddNode>(3);
    }
    EXPECT_EQ(entry(L"C", L"new", 0, nullptr, nullptr), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(handleEntry(nullptr, L"NODE-C", nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(recording::Interception::Replacement("clusapi.dll", "DestroyCluster"), nullptr);
}

TEST_F(ChangesByName, PassByWhereChangesAreAllowed) {
    recording::Header header;
    header.allowsChanges = true;
    recording::Recorder recorder(m_file, header);
    const recording::Interception interception(recorder, Modules());
    EXPECT_NE(m_component.Called<void*>(0), nullptr);
    EXPECT_EQ(m_component.Called<void*>(1), nullptr);
    EXPECT_EQ(m_component.Called<void*>(3), nullptr);
    EXPECT_EQ(m_other.Called<void*>(0), nullptr);
}
