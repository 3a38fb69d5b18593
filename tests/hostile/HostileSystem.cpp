// The registry, the computer's names and volumes, Windows Sockets, the log, and the libraries beside clusutil.dll.
#include "Platform.h"

#include <CommonUtil.h>
#include <DebugLog.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace hostile {

bool isCluster = false;

void WriteText(wchar_t* text, DWORD cch, const wchar_t* content) {
    if (cch == 0) {
        return;
    }
    if (TheAttack().chance.OneIn(8)) {
        std::fill_n(text, cch, L'x');
        return;
    }
    const std::size_t length = std::min<std::size_t>(std::wcslen(content), cch - 1);
    std::copy_n(content, length, text);
    text[length] = L'\0';
}

void Touch(const void* data, std::size_t cb) {
    static volatile unsigned char sum = 0;
    for (std::size_t i = 0; i < cb; ++i) {
        sum = static_cast<unsigned char>(sum + static_cast<const unsigned char*>(data)[i]);
    }
}

void Touch(const wchar_t* text) {
    if (text) {
        Touch(text, (std::wcslen(text) + 1) * sizeof(wchar_t));
    }
}

namespace {

Chance& TheChance() {
    return TheAttack().chance;
}

LSTATUS WINAPI HostileRegOpenKeyExW(HKEY, LPCWSTR path, DWORD, REGSAM, PHKEY key) {
    const PlatformCall call;
    Touch(path);
    const DWORD code = TheAttack().Code();
    if (code == ERROR_SUCCESS) {
        *key = static_cast<HKEY>(TheAttack().Open(Kind::Key));
    }
    return static_cast<LSTATUS>(code);
}

LSTATUS WINAPI HostileRegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD cb) {
    const PlatformCall call;
    Touch(name);
    if (!TheAttack().Uses(key, Kind::Key)) {
        return ERROR_INVALID_HANDLE;
    }
    const DWORD types[] = {REG_SZ, REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_MULTI_SZ, 0xFFFFFFFF};
    const DWORD given = *cb;
    DWORD code = TheAttack().Code();
    if (std::wcscmp(name, L"IsCluster") == 0) {
        const DWORD value = isCluster ? 1 : 0;
        std::memcpy(data, &value, sizeof(value));
        *type = REG_DWORD;
        *cb = sizeof(value);
        return ERROR_SUCCESS;
    }
    if (TheChance().OneIn(2)) {
        WriteText(reinterpret_cast<wchar_t*>(data), given / sizeof(wchar_t), SomeName(TheChance()));
    } else {
        std::fill_n(data, given, static_cast<BYTE>(TheChance().Next()));
    }
    if (type) {
        *type = given == sizeof(DWORD) && TheChance().OneIn(2) ? static_cast<DWORD>(REG_DWORD) : TheChance().Of(types);
    }
    if (TheChance().OneIn(4)) {
        *cb = SomeLength(TheChance(), given);
    }
    return static_cast<LSTATUS>(code);
}

LSTATUS WINAPI HostileRegCloseKey(HKEY key) {
    const PlatformCall call;
    TheAttack().Close(key, Kind::Key);
    return static_cast<LSTATUS>(TheAttack().Code());
}

BOOL WINAPI HostileGetComputerNameW(LPWSTR text, LPDWORD cch) {
    const PlatformCall call;
    WriteText(text, *cch, TheChance().OneIn(8) ? SomeName(TheChance()) : L"NODE-A");
    if (TheChance().OneIn(4)) {
        *cch = SomeLength(TheChance(), *cch);
    }
    return !TheAttack().Fails();
}

BOOL WINAPI HostileGetVolumeNameForVolumeMountPointW(LPCWSTR path, LPWSTR volume, DWORD cch) {
    const PlatformCall call;
    Touch(path);
    WriteText(volume, cch, L"\\\\?\\Volume{00000000-0000-0000-0000-000000000001}\\");
    return !TheAttack().Fails();
}

BOOL WINAPI HostileGetVolumePathNames(LPCWSTR volume, LPWCH paths, DWORD cch, PDWORD cchReturned) {
    const PlatformCall call;
    Touch(volume);
    WriteText(paths, cch, TheChance().OneIn(2) ? L"F:\\mount\\" : SomeName(TheChance()));
    *cchReturned = SomeLength(TheChance(), cch);
    return !TheAttack().Fails();
}

HMODULE WINAPI HostileLoadLibraryW(LPCWSTR name) {
    const PlatformCall call;
    Touch(name);
    return TheAttack().Fails() ? nullptr : static_cast<HMODULE>(TheAttack().Open(Kind::Module));
}
FARPROC WINAPI HostileGetProcAddress(HMODULE module, LPCSTR) {
    const PlatformCall call;
    TheAttack().Uses(module, Kind::Module);
    return TheAttack().Fails() ? nullptr
                               : reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&HostileGetVolumePathNames));
}
BOOL WINAPI HostileFreeLibrary(HMODULE module) {
    const PlatformCall call;
    TheAttack().Close(module, Kind::Module);
    return !TheAttack().Fails();
}

void WINAPI HostileSleep(DWORD) {
    const PlatformCall call;
}

int WINAPI HostileWSAStartup(WORD, LPWSADATA data) {
    const PlatformCall call;
    std::memset(data, 'x', sizeof(*data));
    ++TheAttack().winsockStarts;
    return static_cast<int>(TheAttack().Code());
}
int WINAPI HostileWSACleanup() {
    const PlatformCall call;
    --TheAttack().winsockStarts;
    return 0;
}
int WINAPI HostileWSAGetLastError() {
    const PlatformCall call;
    return static_cast<int>(TheAttack().Code());
}
unsigned long WINAPI HostileInetAddr(const char* text) {
    const PlatformCall call;
    Touch(text, std::strlen(text) + 1);
    return static_cast<unsigned long>(TheChance().Next());
}
hostent* WINAPI HostileGetHostByAddr(const char* address, int size, int) {
    const PlatformCall call;
    static char longName[3000];
    static char badName[] = "\xff\xfe\x80name";
    static char name[] = "evs1.example.com";
    static char empty[] = "";
    std::fill_n(longName, sizeof(longName) - 1, 'x');
    char* const names[] = {name, name, longName, badName, empty, nullptr};
    static hostent host;
    host.h_name = TheChance().Of(names);
    Touch(address, static_cast<std::size_t>(size));
    return TheAttack().Fails() ? nullptr : &host;
}

// Formats like the real one, so that all of its arguments are read.
void LogLine(HMODULE, unsigned int, const char* file, int, const wchar_t* format, ...) {
    const PlatformCall call;
    static wchar_t text[2048];
    Touch(file, std::strlen(file) + 1);
    va_list arguments;
    va_start(arguments, format);
    _vsnwprintf(text, 2047, format, arguments);
    va_end(arguments);
}

bool PathIsWellFormed(const wchar_t* path, std::size_t cch) {
    const PlatformCall call;
    Touch(path, cch * sizeof(wchar_t));
    return TheChance().OneIn(2);
}

void* OpenService_(void* self, const wchar_t* service, const wchar_t* machine) {
    const PlatformCall call;
    Touch(service);
    Touch(machine);
    if (TheAttack().Fails()) {
        throw OS::CException(TheAttack().Failure());
    }
    return self;
}
void CloseService(void*) {
    const PlatformCall call;
}
DWORD QueryService(void*) {
    const PlatformCall call;
    if (TheAttack().Fails()) {
        throw OS::CException(TheAttack().Failure());
    }
    return static_cast<DWORD>(TheChance().Below(8));
}

void* OpenWebServer(void* self, const wchar_t* homeDir) {
    const PlatformCall call;
    Touch(homeDir);
    return self;
}
void CloseWebServer(void*) {
    const PlatformCall call;
}
int WebServerNumber(void*) {
    const PlatformCall call;
    const int numbers[] = {0, 0, -1, 1, 0x7FFFFFFF};
    return TheChance().Of(numbers);
}

} // namespace

#define HOSTILE(dll, function) replacements.Add(dll ".dll", #function, &Hostile##function)

void ReplaceSystem(Replacements& replacements) {
    using harness::Decorated;
    HOSTILE("advapi32", RegOpenKeyExW);
    HOSTILE("advapi32", RegQueryValueExW);
    HOSTILE("advapi32", RegCloseKey);
    HOSTILE("kernel32", GetComputerNameW);
    HOSTILE("kernel32", GetVolumeNameForVolumeMountPointW);
    HOSTILE("kernel32", LoadLibraryW);
    HOSTILE("kernel32", GetProcAddress);
    HOSTILE("kernel32", FreeLibrary);
    HOSTILE("kernel32", Sleep);
    HOSTILE("ws2_32", WSAStartup);
    HOSTILE("ws2_32", WSACleanup);
    HOSTILE("ws2_32", WSAGetLastError);
    replacements.Add("ws2_32.dll", "inet_addr", &HostileInetAddr);
    replacements.Add("ws2_32.dll", "gethostbyaddr", &HostileGetHostByAddr);
    replacements.AddAt(reinterpret_cast<const void*>(&DBG::DebugLogEx), reinterpret_cast<void*>(&LogLine));
    replacements.AddAt(reinterpret_cast<const void*>(&CheckPathFormat), reinterpret_cast<void*>(&PathIsWellFormed));
    replacements.Add("CommonUtil.dll", Decorated("_ZN15CServiceManagerC1EPKwS1_", "??0CServiceManager@@QEAA@PEB_W0@Z"),
                     &OpenService_);
    replacements.Add("CommonUtil.dll", Decorated("_ZN15CServiceManagerD1Ev", "??1CServiceManager@@QEAA@XZ"),
                     &CloseService);
    replacements.Add(
        "CommonUtil.dll",
        Decorated("_ZN15CServiceManager18QueryServiceStatusEv", "?QueryServiceStatus@CServiceManager@@QEAAKXZ"),
        &QueryService);
    replacements.Add("WebServerUtil.dll", Decorated("_ZN10CWebServerC1EPKw", "??0CWebServer@@QEAA@PEB_W@Z"),
                     &OpenWebServer);
    replacements.Add("WebServerUtil.dll", Decorated("_ZN10CWebServerD1Ev", "??1CWebServer@@QEAA@XZ"), &CloseWebServer);
    replacements.Add("WebServerUtil.dll",
                     Decorated("_ZN10CWebServer13GetServerTypeEv", "?GetServerType@CWebServer@@QEAAHXZ"),
                     &WebServerNumber);
    replacements.Add("WebServerUtil.dll",
                     Decorated("_ZN10CWebServer12GetIISSiteIDEv", "?GetIISSiteID@CWebServer@@QEAAHXZ"),
                     &WebServerNumber);
}

} // namespace hostile
