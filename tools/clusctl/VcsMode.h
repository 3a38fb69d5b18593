// The mode of the configuration around a change.
#ifndef CLUSCTL_VCSMODE_H
#define CLUSCTL_VCSMODE_H

#include <CLI/App.hpp>

// The configuration is open for writing while it lives, if asked for; then it is written to disk and read-only.
class OpenConfiguration {
public:
    explicit OpenConfiguration(bool isWanted);
    ~OpenConfiguration();
    OpenConfiguration(const OpenConfiguration&) = delete;
    OpenConfiguration& operator=(const OpenConfiguration&) = delete;

    // Adds --rw to a command.
    static void AddOption(CLI::App& command, bool& isWanted);

private:
    const bool m_isWanted;
};

#endif
