// What the code under test sees around it: environment, registry and files, all in memory and set by the fuzz target.
#ifndef FUZZ_PLATFORM_PROCESS_H
#define FUZZ_PLATFORM_PROCESS_H

#include "windows.h"

#include <map>
#include <string>

namespace platform {

struct RegistryValue {
    DWORD type = REG_SZ;
    std::string bytes;
};

struct Process {
    std::map<std::wstring, std::wstring> environment;
    std::map<std::wstring, RegistryValue> registry; // of the one key there is
    std::map<std::wstring, std::string> files;      // what common/Files.h reads and writes
};

Process& ThisProcess();

} // namespace platform

#endif
