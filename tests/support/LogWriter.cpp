// Logs what its command line says. Exit code 0: everything was as expected inside this process.
#include "DebugLog.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <thread>
#include <vector>

namespace {

const char Source[] = "C:\\build\\src\\Writer.cpp";

void Log(unsigned int level, const wchar_t* text) {
    DBG::DebugLogEx(GetModuleHandleW(nullptr), level, Source, 7, L"%s", text);
}

// One line of every level.
int Levels() {
    Log(DBG::LEVEL_ENTRY, L"level entry");
    Log(DBG::LEVEL_LEAVING, L"level leaving");
    Log(DBG::LEVEL_INFORMATION, L"level information");
    Log(DBG::LEVEL_ERROR, L"level error");
    Log(DBG::LEVEL_WARNING, L"level warning");
    return 0;
}

// Many lines of different lengths from two threads: "<tag>.<thread>.<number> xxxx". Tells by the semaphore that it is
// ready and begins with the event, so that several processes write at the same time.
int Many(const wchar_t* tag, int count, const wchar_t* readyName, const wchar_t* goName) {
    const HANDLE ready = OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, readyName);
    const HANDLE go = OpenEventW(SYNCHRONIZE, FALSE, goName);
    DBG::DebugLogEx(nullptr, DBG::LEVEL_INFORMATION, Source, 0, L"%s ready", tag);
    if (!ReleaseSemaphore(ready, 1, nullptr) || WaitForSingleObject(go, 30000) != WAIT_OBJECT_0) {
        return 1;
    }
    const auto write = [&](int thread) {
        for (int i = 0; i < count; ++i) {
            const std::wstring filler(static_cast<size_t>(i * 37 % 400), L'x');
            DBG::DebugLogEx(nullptr, DBG::LEVEL_INFORMATION, Source, i, L"%s.%d.%d %s|", tag, thread, i,
                            filler.c_str());
        }
    };
    std::thread first(write, 1);
    std::thread second(write, 2);
    first.join();
    second.join();
    return 0;
}

int Texts() {
    const HMODULE module = GetModuleHandleW(L"DebugLog.dll");
    for (const size_t length : {1022u, 1023u, 1024u, 1025u, 8191u, 8192u, 100000u}) {
        Log(DBG::LEVEL_ERROR, (L"long " + std::wstring(length, L'a') + L" end").c_str());
    }
    Log(DBG::LEVEL_ERROR, L"line end\r\n");
    Log(DBG::LEVEL_ERROR, L"one\ntwo\rthree\tfour\x1b five\x2028six\x85");
    Log(DBG::LEVEL_ERROR, L"Gr\u00fc\u00dfe \u65e5\u672c \xd83d\xde00");
    const wchar_t* const volatile nothing = nullptr;
    DBG::DebugLogEx(module, DBG::LEVEL_ERROR, nullptr, 0, L"null %s argument", nothing);
    DBG::DebugLogEx(module, DBG::LEVEL_ERROR, Source, 1, nothing);
    DBG::DebugLogEx(module, DBG::LEVEL_ERROR, "", -1, L"");
    DBG::DebugLogEx(module, 0x1042, Source, 2, L"unknown 100%% serious");
    DBG::DebugLogEx(module, 0x42, Source, 3, L"unknown level, %d %x", 12, 255);
    return 0;
}

// Logs at a level that is off, with arguments that cannot be read.
int Disabled() {
    Log(DBG::LEVEL_ERROR, L"before"); // reads the configuration
    void* const page = VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_NOACCESS);
    if (page == nullptr) {
        return 1;
    }
    const wchar_t* const unreadable = static_cast<const wchar_t*>(page);
    for (int i = 0; i < 1000; ++i) {
        DBG::DebugLogEx(nullptr, DBG::LEVEL_ENTRY, static_cast<const char*>(page), 0, L"%s", unreadable);
        DBG::DebugLogEx(nullptr, DBG::LEVEL_INFORMATION, static_cast<const char*>(page), 0, unreadable);
    }
    Log(DBG::LEVEL_ERROR, L"after");
    return 0;
}

int LastError() {
    const DWORD code = 0xE0BADC0D;
    for (const unsigned int level : {DBG::LEVEL_ERROR, DBG::LEVEL_ENTRY, DBG::LEVEL_ERROR}) {
        SetLastError(code);
        Log(level, L"last error");
        if (GetLastError() != code) {
            return 1;
        }
    }
    SetLastError(code);
    DebugLogSetSink(nullptr, nullptr);
    return GetLastError() == code ? 0 : 2;
}

// Moves HKEY_LOCAL_MACHINE of this process to a key of HKEY_CURRENT_USER.
int Registry(const wchar_t* keyName) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, keyName, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS ||
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, key) != ERROR_SUCCESS) {
        return 1;
    }
    RegCloseKey(key);
    return Levels();
}

int s_writesAllowed = 0;

BOOL WINAPI FullDisk(HANDLE file, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    if (s_writesAllowed-- > 0) {
        return WriteFile(file, data, size, written, overlapped);
    }
    *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

// Replaces an import of DebugLog.dll.
bool ReplaceImport(const char* name, ULONGLONG function) {
    BYTE* const base = reinterpret_cast<BYTE*>(GetModuleHandleW(L"DebugLog.dll"));
    const auto* const dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto* module = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(
        base + nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (; module->Name != 0; ++module) {
        const auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + module->OriginalFirstThunk);
        auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + module->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                continue;
            }
            const auto* const import = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0) {
                DWORD protection = 0;
                if (!VirtualProtect(addresses, sizeof(*addresses), PAGE_READWRITE, &protection)) {
                    return false;
                }
                addresses->u1.Function = function;
                VirtualProtect(addresses, sizeof(*addresses), protection, &protection);
                return true;
            }
        }
    }
    return false;
}

// The disk is full after two lines.
int DiskFull() {
    s_writesAllowed = 2;
    if (!ReplaceImport("WriteFile", reinterpret_cast<ULONGLONG>(&FullDisk))) {
        return 1;
    }
    for (int i = 1; i <= 4; ++i) {
        DBG::DebugLogEx(nullptr, DBG::LEVEL_ERROR, Source, i, L"number %d", i);
    }
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    const std::wstring command = argc > 1 ? argv[1] : L"";
    if (command == L"levels") {
        return Levels();
    }
    if (command == L"many" && argc == 6) {
        return Many(argv[2], _wtoi(argv[3]), argv[4], argv[5]);
    }
    if (command == L"texts") {
        return Texts();
    }
    if (command == L"disabled") {
        return Disabled();
    }
    if (command == L"lasterror") {
        return LastError();
    }
    if (command == L"registry" && argc == 3) {
        return Registry(argv[2]);
    }
    if (command == L"diskfull") {
        return DiskFull();
    }
    return 64;
}
