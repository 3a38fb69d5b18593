// A small command-line tool to be started by the benchmark: prints a list of two systems, or loads a DLL and prints how
// long that took.
#include <winsock2.h>
#include <windows.h>

#include <cstdio>
#include <cwchar>

namespace {

// "load NAME": milliseconds on the wall.
int LoadAndTell(const wchar_t* name) {
    LARGE_INTEGER frequency, begin, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&begin);
    const HMODULE module = LoadLibraryW(name);
    QueryPerformanceCounter(&end);
    std::printf("%.4f\n",
                static_cast<double>(end.QuadPart - begin.QuadPart) * 1e3 / static_cast<double>(frequency.QuadPart));
    return module ? 0 : 1;
}

} // namespace

int wmain(int argumentCount, wchar_t** arguments) {
    if (argumentCount == 3 && std::wcscmp(arguments[1], L"load") == 0) {
        return LoadAndTell(arguments[2]);
    }
    const char text[] = "NODE1\r\nNODE2\r\n";
    DWORD written = 0;
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    return WriteFile(output, text, sizeof(text) - 1, &written, nullptr) && written == sizeof(text) - 1 ? 0 : 1;
}
