#include "VcsMode.h"

#include <clus_VeritasCluster.h>

OpenConfiguration::OpenConfiguration(bool isWanted) : m_isWanted(isWanted) {
    if (m_isWanted) {
        CVeritasCluster().SwitchToReadWriteMode();
    }
}

OpenConfiguration::~OpenConfiguration() {
    if (!m_isWanted) {
        return;
    }
    try {
        CVeritasCluster().SwitchToReadOnlyMode();
    } catch (...) {
        // Out of memory, perhaps while another exception is on its way: that one matters.
    }
}

void OpenConfiguration::AddOption(CLI::App& command, bool& isWanted) {
    command.add_flag("--rw", isWanted,
                     "Open the configuration before, write it and close it after; without --rw it must be open");
}
