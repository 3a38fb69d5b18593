// Sets who may do what with the product's registry key: "read" leaves everybody the rights to read it and to set this
// back, "full" gives all rights. It stays so until the key is deleted or the registry is loaded anew.
#include <winsock2.h>
#include <windows.h>

#include <sddl.h>

#include <cstdio>
#include <cwchar>

namespace {

const wchar_t Key[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";
const wchar_t ReadOnly[] = L"D:P(A;;KR;;;WD)(A;;WD;;;WD)";
const wchar_t Full[] = L"D:(A;;KA;;;WD)";

LSTATUS SetAccess(const wchar_t* list) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(list, SDDL_REVISION_1, &descriptor, nullptr)) {
        return static_cast<LSTATUS>(GetLastError());
    }
    HKEY key = nullptr;
    LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, Key, 0, WRITE_DAC, &key);
    if (code == ERROR_SUCCESS) {
        code = RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor);
        RegCloseKey(key);
    }
    LocalFree(descriptor);
    return code;
}

} // namespace

int wmain(int argumentCount, wchar_t** arguments) {
    const bool isRestricting = argumentCount == 2 && std::wcscmp(arguments[1], L"read") == 0;
    if (!isRestricting && (argumentCount != 2 || std::wcscmp(arguments[1], L"full") != 0)) {
        std::fputs("usage: access-tool read|full\n", stderr);
        return 2;
    }
    const LSTATUS code = SetAccess(isRestricting ? ReadOnly : Full);
    if (code != ERROR_SUCCESS) {
        std::fprintf(stderr, "access-tool: error %ld\n", static_cast<long>(code));
        return 1;
    }
    return 0;
}
