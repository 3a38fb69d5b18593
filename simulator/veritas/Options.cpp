#include "Options.h"

#include "common/Environment.h"
#include "common/Text.h"

#include <sstream>
#include <stdexcept>

namespace vcssim {

using common::EnvironmentVariable;

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
        } else if (entry == "engine=down" || entry == "engine=up" || entry == "engine=starting") {
            options.engineIsUp = entry != "engine=down";
            options.engineStarts = entry == "engine=starting";
        } else if (entry == "node=RUNNING" || entry == "node=LEAVING" || entry == "node=REMOTE_BUILD" ||
                   entry == "node=ADMIN_WAIT") {
            options.nodeState = entry.substr(entry.find('=') + 1);
        } else if (entry == "summary=full" || entry == "summary=known") {
            options.shortSummary = entry == "summary=known";
        } else if (entry == "cluster-state=table" || entry == "cluster-state=bare") {
            options.bareClusterState = entry == "cluster-state=bare";
        } else if (entry == "unfreeze=acts" || entry == "unfreeze=waits") {
            options.actsOnUnfreeze = entry == "unfreeze=acts";
        } else if (entry == "slow-offline=fault" || entry == "slow-offline=stuck") {
            options.faultsSlowOffline = entry == "slow-offline=fault";
        } else if (entry == "registration=accepted" || entry == "registration=refused") {
            options.refusesRegistration = entry == "registration=refused";
        } else if (entry == "scope=follows" || entry == "scope=keeps") {
            options.keepsScope = entry == "scope=keeps";
        } else {
            throw std::invalid_argument("VCSSIM_OPTIONS: there is no switch '" + entry + "'");
        }
    }
    return options;
}

Environment ReadEnvironment() {
    Environment environment;
    environment.mainCf = EnvironmentVariable(L"VCSSIM_MAIN_CF");
    environment.journal = EnvironmentVariable(L"VCSSIM_JOURNAL");
    environment.faults = EnvironmentVariable(L"VCSSIM_FAULTS");
    environment.options = ParseOptions(common::ToUtf8(EnvironmentVariable(L"VCSSIM_OPTIONS")));
    return environment;
}

} // namespace vcssim
