// The DLL's entry point.
#include <winsock2.h>
#include <windows.h>

// The process-wide values create and destroy themselves; there is nothing else to do.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) {
    return TRUE;
}
