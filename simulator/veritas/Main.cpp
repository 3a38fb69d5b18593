// The program of each tool: the name of its file says which one it is.
#include "Run.h"

#include "../cluster/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

std::string ToolName() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
    std::wstring name(path);
    name.erase(0, name.find_last_of(L"\\/") + 1); // npos + 1 is 0
    name.erase(std::min(name.rfind(L'.'), name.size()));
    std::string tool = clussim::Utf8(name);
    for (char& c : tool) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return tool;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(clussim::Utf8(argv[i]));
    }
    return vcssim::RunTool(ToolName(), arguments);
}
