// The program of each tool; VCSSIM_TOOL is its name.
#include "Run.h"

#include "../cluster/Text.h"

#include <string>
#include <vector>

int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(clussim::Utf8(argv[i]));
    }
    return vcssim::RunTool(VCSSIM_TOOL, arguments);
}
