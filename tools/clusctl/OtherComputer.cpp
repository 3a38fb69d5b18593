#include "OtherComputer.h"

#include <Interception.h>

#include <memory>
#include <vector>

void BearComputerName(const std::wstring& name) {
    static std::unique_ptr<const recording::GivenComputerName> given;
    std::vector<HMODULE> modules = {nullptr}; // the program
    for (const wchar_t* const library : {L"clusutil.dll", L"clusapi.dll", L"resutils.dll"}) {
        const HMODULE module = GetModuleHandleW(library);
        if (module != nullptr) {
            modules.push_back(module);
        }
    }
    given.reset();
    given = std::make_unique<const recording::GivenComputerName>(name, modules);
}
