// Runs a program, looks for a text in its memory, and in the environments of all processes meanwhile:
//
//   search-tool TEXT FILE NUMBER PAUSE PROGRAM [ARGUMENT ...]
//
// PAUSE milliseconds after FILE begins with that number. With the environment variable SEARCH_TOOL_VARIABLE the program
// gets the text in the variable of that name, which this tool has then, too. What was found, in 8 or 16 bits a
// character, is told on standard error, with what stands before it. The exit code is the program's; 99 when it ended
// before, or nothing could be done.
#include "EnvironmentWatch.h"
#include "LaunchedProgram.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

namespace {

const std::size_t Before = 32; // bytes that are shown of what stands before

// What can be written, and so may hold what the program has read or made.
bool IsWritable(const MEMORY_BASIC_INFORMATION& region) {
    const DWORD writable = PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    return region.State == MEM_COMMIT && (region.Protect & writable) != 0 && (region.Protect & PAGE_GUARD) == 0;
}

std::string Bytes(const std::wstring& text, std::size_t characterSize) {
    std::string bytes;
    for (const wchar_t c : text) { // of ASCII
        bytes += static_cast<char>(c);
        bytes.append(characterSize - 1, '\0');
    }
    return bytes;
}

// The visible part of it.
std::string Shown(const std::string& bytes) {
    std::string text;
    std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(text), [](char c) { return c >= ' ' && c <= '~'; });
    return text;
}

struct Search {
    std::size_t found = 0;
    std::size_t bytesSearched = 0;

    void Look(const std::string& memory, const std::string& sought) {
        for (std::size_t at = 0; (at = memory.find(sought, at)) != std::string::npos; at += sought.size()) {
            ++found;
            const std::size_t begin = at - std::min(at, Before);
            std::fprintf(stderr, "[memory] behind \"%s\"\n", Shown(memory.substr(begin, at - begin)).c_str());
        }
    }
};

// False when no memory could be read.
bool SearchMemory(HANDLE process, const std::wstring& text) {
    Search search;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* at = nullptr; VirtualQueryEx(process, at, &region, sizeof(region)) == sizeof(region);
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (!IsWritable(region)) {
            continue;
        }
        std::string memory(region.RegionSize, '\0');
        SIZE_T read = 0;
        ReadProcessMemory(process, region.BaseAddress, &memory[0], memory.size(), &read);
        memory.resize(read);
        search.bytesSearched += read;
        search.Look(memory, Bytes(text, 1));
        search.Look(memory, Bytes(text, sizeof(wchar_t)));
    }
    std::fprintf(stderr, "[memory] found %u times\n", static_cast<unsigned>(search.found));
    return search.bytesSearched > 1000000; // less is not all of a program with this library in it
}

} // namespace

int wmain(int argumentCount, wchar_t** arguments) {
    if (argumentCount < 6) {
        return CannotBeDone;
    }
    const std::wstring text = arguments[1];
    wchar_t variable[64] = {};
    if (GetEnvironmentVariableW(L"SEARCH_TOOL_VARIABLE", variable, 64) != 0) {
        SetEnvironmentVariableW(variable, text.c_str());
    }
    EnvironmentWatch watch(text);
    const int exitCode = RunUntil(
        arguments, 0, [&text](const PROCESS_INFORMATION& program) { return SearchMemory(program.hProcess, text); });
    watch.Finish();
    return exitCode;
}
