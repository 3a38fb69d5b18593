// The VCS tools: processes that start or not, and what the library reads of their output.
#include "Platform.h"

#include <algorithm>
#include <cwchar>
#include <string>

namespace hostile {

namespace {

Chance& TheChance() {
    return TheAttack().chance;
}

// What the tool that was started last has put out, and how far each reader of it has come.
std::string output;
struct Reader {
    std::size_t position;
};
std::map<int, Reader> readers;
int lastFile = 100;

const char* SomeWord() {
    const char* const words[] = {"EVS1",
                                 "EVS2",
                                 "EVS1-Lanman",
                                 "EVS1-MountV",
                                 "EVS1-MountV2",
                                 "EVS1-RegRep",
                                 "MountV1",
                                 "SYS1",
                                 "SYS2",
                                 "|ONLINE|",
                                 "|PARTIAL|",
                                 "|OFFLINE|",
                                 "global",
                                 "Group",
                                 "State",
                                 "VCS",
                                 "WARNING",
                                 "ERROR",
                                 "V-16-1",
                                 "F:\\data",
                                 "HKLM\\X",
                                 "\"\"",
                                 "",
                                 "localclus",
                                 "\xe4\xff",
                                 "#Group",
                                 "Parent",
                                 "Child",
                                 "EVS1-OXAHostService"};
    return TheChance().Of(words);
}

std::string Row(std::size_t columns) {
    const char* const blanks[] = {" ", "\t", "  ", "    "};
    std::string row;
    for (; columns > 0; --columns) {
        row += SomeWord();
        row += columns > 1 ? TheChance().Of(blanks) : "";
    }
    return row;
}

// Lines like those of the tool asked, more or less.
std::string SomeOutput(const wchar_t* commandLine) {
    const std::wstring command(commandLine);
    std::string text;
    if (TheChance().OneIn(12)) {
        text = TheChance().OneIn(2) ? "VCS ERROR V-16-1-10600 Cannot connect\n" : "VCS WARNING V-16-1-10133 No\n";
    } else if (TheChance().OneIn(12)) {
        text.assign(TheChance().Below(TheChance().OneIn(50) ? 100000 : 700), '\0');
        std::generate(text.begin(), text.end(), [] { return static_cast<char>(TheChance().Next()); });
    } else {
        const bool isList = command.find(L"-list") != std::wstring::npos;
        const std::size_t columns = isList ? 2 : command.find(L"-dep") != std::wstring::npos ? 3 : 4;
        const std::size_t rows = TheChance().Below(TheChance().OneIn(100) ? 500 : 6);
        for (std::size_t row = 0; row < rows; ++row) {
            text += Row(TheChance().OneIn(10) ? TheChance().Below(9) : columns) + (TheChance().OneIn(30) ? "" : "\n");
        }
    }
    if (TheChance().OneIn(20)) {
        text += std::string(TheChance().Below(3000), 'x');
    }
    return text;
}

UINT WINAPI HostileGetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT, LPWSTR name) {
    const PlatformCall call;
    Touch(folder);
    Touch(prefix);
    WriteText(name, MAX_PATH, L".\\ha-1234.tmp");
    return TheAttack().Fails() ? 0 : static_cast<UINT>(TheChance().Below(0xFFFF) + 1);
}

HANDLE WINAPI HostileCreateFileW(LPCWSTR name, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    const PlatformCall call;
    Touch(name);
    if (TheAttack().Fails()) {
        return TheChance().OneIn(20) ? nullptr : INVALID_HANDLE_VALUE;
    }
    return TheAttack().Open(Kind::File);
}

BOOL WINAPI HostileSetHandleInformation(HANDLE handle, DWORD, DWORD) {
    const PlatformCall call;
    TheAttack().Uses(handle, Kind::File);
    return !TheAttack().Fails();
}

BOOL WINAPI HostileCloseHandle(HANDLE handle) {
    const PlatformCall call;
    if (handle != INVALID_HANDLE_VALUE) { // closed where a capture file could not be opened
        const auto found = TheAttack().Handles().find(handle);
        const bool isProcess = found != TheAttack().Handles().end() && found->second == Kind::Process;
        TheAttack().Close(handle, isProcess ? Kind::Process : Kind::File);
    }
    return !TheAttack().Fails();
}

BOOL WINAPI HostileCreateProcessW(LPCWSTR, LPWSTR commandLine, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                                  DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process) {
    const PlatformCall call;
    Touch(startup, sizeof(*startup));
    const std::size_t length = std::wcslen(commandLine);
    if (length >= 16384) {
        TheAttack().Fail("a command line is longer than its array");
    }
    output = SomeOutput(commandLine);
    if (TheChance().OneIn(10)) {
        std::fill_n(commandLine, length, L'?'); // as it may
    }
    if (TheAttack().Fails()) {
        return FALSE;
    }
    process->hProcess = TheAttack().Open(Kind::Process);
    process->hThread = TheAttack().Open(Kind::Process);
    return TRUE;
}

DWORD WINAPI HostileWaitForSingleObject(HANDLE handle, DWORD) {
    const PlatformCall call;
    const DWORD results[] = {WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT, WAIT_FAILED};
    TheAttack().Uses(handle, Kind::Process);
    return TheChance().Of(results);
}

BOOL WINAPI HostileGetExitCodeProcess(HANDLE process, LPDWORD code) {
    const PlatformCall call;
    TheAttack().Uses(process, Kind::Process);
    *code = TheAttack().Code();
    return !TheAttack().Fails();
}

BOOL WINAPI HostileDeleteFileW(LPCWSTR name) {
    const PlatformCall call;
    Touch(name);
    return !TheAttack().Fails();
}

int HostileOpen(const wchar_t* name, int, int, int) {
    const PlatformCall call;
    Touch(name);
    if (TheAttack().Fails()) {
        return -1;
    }
    readers[++lastFile] = {0};
    return lastFile;
}

int HostileRead(int file, void* data, unsigned size) {
    const PlatformCall call;
    const auto reader = readers.find(file);
    if (reader == readers.end()) {
        TheAttack().Fail("a file is read that is not open");
    }
    if (TheAttack().Fails() && TheChance().OneIn(4)) {
        return -1;
    }
    const std::size_t left = output.size() - std::min(output.size(), reader->second.position);
    std::size_t count = std::min<std::size_t>(left, size);
    if (count > 0 && TheChance().OneIn(3)) {
        count = TheChance().Below(count) + 1;
    }
    std::copy_n(output.begin() + static_cast<std::ptrdiff_t>(output.size() - left), count, static_cast<char*>(data));
    reader->second.position += count;
    return static_cast<int>(count);
}

__int64 HostileFileLength(int file) {
    const PlatformCall call;
    if (readers.count(file) == 0) {
        TheAttack().Fail("a file is asked for its length that is not open");
    }
    const __int64 lengths[] = {-1, 0, 1, 1000000};
    return TheChance().OneIn(4) ? TheChance().Of(lengths) : static_cast<__int64>(output.size());
}

int HostileClose(int file) {
    const PlatformCall call;
    if (readers.erase(file) == 0) {
        TheAttack().Fail("a file is closed that is not open");
    }
    return TheAttack().Fails() ? -1 : 0;
}

} // namespace

std::size_t OpenReaders() {
    return readers.size();
}

#define HOSTILE(dll, function) replacements.Add(dll ".dll", #function, &Hostile##function)

void ReplaceTools(Replacements& replacements) {
    HOSTILE("kernel32", GetTempFileNameW);
    HOSTILE("kernel32", CreateFileW);
    HOSTILE("kernel32", SetHandleInformation);
    HOSTILE("kernel32", CloseHandle);
    HOSTILE("kernel32", CreateProcessW);
    HOSTILE("kernel32", WaitForSingleObject);
    HOSTILE("kernel32", GetExitCodeProcess);
    HOSTILE("kernel32", DeleteFileW);
    replacements.Add(harness::AnyCRuntime, "_wsopen", &HostileOpen);
    replacements.Add(harness::AnyCRuntime, "_read", &HostileRead);
    replacements.Add(harness::AnyCRuntime, "_filelengthi64", &HostileFileLength);
    replacements.Add(harness::AnyCRuntime, "_close", &HostileClose);
}

} // namespace hostile
