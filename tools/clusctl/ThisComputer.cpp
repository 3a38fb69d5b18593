#include "ThisComputer.h"

#include "Report.h"
#include "Text.h"

#include <winsock2.h>
#include <windows.h>

#include <cwchar>

std::wstring ComputerName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    if (!GetComputerNameW(name, &length)) {
        throw Failure::OfCode("cannot read the computer name", GetLastError());
    }
    return std::wstring(name, length);
}

bool IsThisComputer(const std::wstring& name) {
    return _wcsicmp(ComputerName().c_str(), name.c_str()) == 0;
}
