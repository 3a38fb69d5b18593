// The program of each tool: the name of its file says which one it is.
#include "Run.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

namespace {

std::string ToolName() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
    std::wstring name(path);
    name.erase(0, name.find_last_of(L"\\/") + 1); // npos + 1 is 0
    name.erase(std::min(name.rfind(L'.'), name.size()));
    std::string tool = common::ToUtf8(name);
    for (char& c : tool) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return tool;
}

int OutOfMemory() {
    const char message[] = "VCS ERROR V-16-1-99001 (simulated) there is not enough memory\r\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), message, sizeof(message) - 1, &written, nullptr);
    return 1;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < argc; ++i) {
            arguments.push_back(common::ToUtf8(argv[i]));
        }
        return vcssim::RunTool(ToolName(), arguments);
    } catch (const std::bad_alloc&) {
        return OutOfMemory();
    }
}
