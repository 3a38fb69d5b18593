// A small command-line tool to be started by the benchmark: prints a list of two systems.
#include <winsock2.h>
#include <windows.h>

int main() {
    const char text[] = "NODE1\r\nNODE2\r\n";
    DWORD written = 0;
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    return WriteFile(output, text, sizeof(text) - 1, &written, nullptr) && written == sizeof(text) - 1 ? 0 : 1;
}
