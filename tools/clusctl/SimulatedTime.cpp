#include "SimulatedTime.h"

#include "Failure.h"

#include <winsock2.h>
#include <windows.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace {

std::function<void(unsigned)> g_advance;
std::atomic<std::int64_t> g_passed(0); // milliseconds
std::mutex g_turn;

void WINAPI PassInstead(DWORD milliseconds) {
    SimulatedTime::Pass(std::chrono::milliseconds(milliseconds));
}

template <typename Record> const Record* At(const BYTE* base, DWORD offset) {
    return reinterpret_cast<const Record*>(base + offset);
}

// Replaces what the module calls under this address; how many entries that were.
int ReplaceImport(HMODULE module, void* function, void* replacement) {
    const auto* const base = reinterpret_cast<const BYTE*>(module);
    const auto* const dosHeader = At<IMAGE_DOS_HEADER>(base, 0);
    const auto* const headers = At<IMAGE_NT_HEADERS>(base, static_cast<DWORD>(dosHeader->e_lfanew));
    const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    int count = 0;
    for (const auto* dll = At<IMAGE_IMPORT_DESCRIPTOR>(base, table); table != 0 && dll->Name != 0; ++dll) {
        for (const auto* entry = At<void*>(base, dll->FirstThunk); *entry != nullptr; ++entry) {
            auto* const place = const_cast<void**>(entry);
            DWORD protection = 0;
            if (*entry == function && VirtualProtect(place, sizeof(*place), PAGE_READWRITE, &protection)) {
                *place = replacement;
                VirtualProtect(place, sizeof(*place), protection, &protection);
                ++count;
            }
        }
    }
    return count;
}

template <typename Function> void* AddressOf(Function* function) {
    void* address = nullptr;
    static_assert(sizeof(address) == sizeof(function));
    std::memcpy(&address, &function, sizeof(address));
    return address;
}

} // namespace

namespace SimulatedTime {

void Begin(const std::function<void(unsigned)>& advance) {
    const HMODULE library = GetModuleHandleW(L"clusutil.dll");
    void* const sleep = AddressOf(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "Sleep"));
    g_advance = advance;
    if (library == nullptr || ReplaceImport(library, sleep, AddressOf(&PassInstead)) == 0) {
        throw Failure("the time that the library waits cannot be simulated");
    }
}

bool IsInForce() {
    return g_advance != nullptr;
}

void Pass(std::chrono::milliseconds time) {
    const DWORD lastError = GetLastError();
    const std::lock_guard<std::mutex> lock(g_turn);
    g_passed += time.count();
    g_advance(static_cast<unsigned>(time.count()));
    SetLastError(lastError);
}

std::chrono::milliseconds Passed() {
    return std::chrono::milliseconds(g_passed);
}

} // namespace SimulatedTime
