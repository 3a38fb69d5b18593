#include "Options.h"

#include "../cluster/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <sstream>
#include <stdexcept>

namespace vcssim {

namespace {

std::wstring Variable(const wchar_t* name) {
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(name, &value[0], static_cast<DWORD>(value.size())));
    return value;
}

} // namespace

Options ParseOptions(const std::string& list) {
    Options options;
    std::istringstream stream(list);
    std::string entry;
    while (std::getline(stream, entry, ',')) {
        if (entry == "no-match=warning" || entry == "no-match=nothing") {
            options.warnsOfNoMatch = entry == "no-match=warning";
        } else if (entry == "separator=tabs" || entry == "separator=blanks") {
            options.blanksInLists = entry == "separator=blanks";
        } else if (entry == "empty=padded" || entry == "empty=bare") {
            options.bareEmptyValues = entry == "empty=bare";
        } else if (entry == "encrypt=bare" || entry == "encrypt=prompt") {
            options.encryptPrompts = entry == "encrypt=prompt";
        } else if (entry == "lineend=crlf" || entry == "lineend=lf" || entry == "lineend=cr") {
            options.lineEnd = entry == "lineend=crlf" ? "\r\n" : entry == "lineend=lf" ? "\n" : "\r";
        } else if (entry == "engine=down" || entry == "engine=up") {
            options.engineIsUp = entry == "engine=up";
        } else {
            throw std::invalid_argument("VCSSIM_OPTIONS: there is no switch '" + entry + "'");
        }
    }
    return options;
}

Environment ReadEnvironment() {
    Environment environment;
    environment.mainCf = Variable(L"VCSSIM_MAIN_CF");
    environment.journal = Variable(L"VCSSIM_JOURNAL");
    environment.faults = Variable(L"VCSSIM_FAULTS");
    environment.options = ParseOptions(clussim::Utf8(Variable(L"VCSSIM_OPTIONS")));
    return environment;
}

} // namespace vcssim
