#include "ChildMain.h"

#include <winsock2.h>
#include <windows.h>

#include <shellapi.h>

#include <string>

#include <gmock/gmock.h>

namespace harness {

int RunChildOrTests(int argc, char** argv, int (*child)(int argc, wchar_t** argv)) {
    if (argc > 2 && std::string(argv[1]) == "--child") {
        int count = 0;
        wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
        return child(count - 2, arguments + 2);
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}

} // namespace harness
