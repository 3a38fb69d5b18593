// Loading and unloading clusutil.dll: what comes with it, and what stays.
#include "OpenHandles.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <cwctype>
#include <set>
#include <string>

namespace {

std::wstring Lower(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(), [](wchar_t c) { return std::towlower(c); });
    return text;
}

std::set<std::wstring> LoadedModules() {
    std::set<std::wstring> names;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    MODULEENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL found = Module32FirstW(snapshot, &entry); found; found = Module32NextW(snapshot, &entry)) {
        names.insert(Lower(entry.szModule));
    }
    CloseHandle(snapshot);
    return names;
}

DWORD Threads() {
    DWORD count = 0;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL found = Thread32First(snapshot, &entry); found; found = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}

// The bytes in use on all heaps of the process.
std::size_t HeapBytes() {
    HANDLE heaps[64];
    const DWORD count = (std::min)(GetProcessHeaps(64, heaps), 64ul);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

void LoadAndUnload(int times) {
    for (int i = 0; i < times; ++i) {
        const HMODULE library = LoadLibraryW(L"clusutil.dll");
        ASSERT_NE(library, nullptr) << GetLastError();
        ASSERT_TRUE(FreeLibrary(library));
    }
}

// The platform's DLLs and the compiler's run-time, which this program holds, belong to the process.
TEST(Loading, LeavesNothingBehindInAThousandTurns) {
    for (const wchar_t* platform : {L"clusapi.dll", L"resutils.dll", L"ws2_32.dll", L"advapi32.dll"}) {
        ASSERT_NE(LoadLibraryW(platform), nullptr) << platform;
    }
    LoadAndUnload(20); // what the system keeps of DLLs that were loaded once
    ASSERT_EQ(LoadedModules().count(L"clusutil.dll"), 0u);
    const DWORD threads = Threads();
    const int handles = harness::CountOpenHandles();
    ASSERT_GT(handles, 0);
    const std::size_t bytes = HeapBytes();
    const int turns = 1000;

    LoadAndUnload(turns);

    const std::size_t bytesAfterwards = HeapBytes();
    EXPECT_EQ(LoadedModules().count(L"clusutil.dll"), 0u);
    EXPECT_EQ(Threads(), threads);
    EXPECT_EQ(harness::CountOpenHandles(), handles);
    EXPECT_LT(bytesAfterwards, bytes + turns) << "not even a byte for each turn";
}

// The loader holds its lock meanwhile. This program needs no user32.dll either.
TEST(Loading, BringsInNeitherCryptographyNorWindows) {
    const HMODULE library = LoadLibraryW(L"clusutil.dll");
    ASSERT_NE(library, nullptr) << GetLastError();
    const std::set<std::wstring> modules = LoadedModules();
    EXPECT_EQ(modules.count(L"clusutil.dll"), 1u);
    for (const wchar_t* name :
         {L"crypt32.dll", L"rsaenh.dll", L"bcrypt.dll", L"cryptsp.dll", L"cryptbase.dll", L"user32.dll"}) {
        EXPECT_EQ(modules.count(name), 0u) << name;
    }
    FreeLibrary(library);
}

} // namespace
