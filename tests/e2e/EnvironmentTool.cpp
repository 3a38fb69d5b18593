// Stands in for a VCS tool that lists names: it prints those of the CLUSCTL_ variables that it was started with.
#include <cstdio>
#include <cwchar>

int wmain(int, wchar_t**, wchar_t** environment) {
    for (; *environment != nullptr; ++environment) {
        if (std::wcsncmp(*environment, L"CLUSCTL_", 8) == 0) {
            std::printf("%.*ls\n", static_cast<int>(std::wcscspn(*environment, L"=")), *environment);
        }
    }
    return 0;
}
