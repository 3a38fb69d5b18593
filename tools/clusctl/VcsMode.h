// The mode of the configuration around a change.
#ifndef CLUSCTL_VCSMODE_H
#define CLUSCTL_VCSMODE_H

#include "LogCapture.h"

#include <CLI/App.hpp>

#include <string>

// The configuration is open for writing while it lives, if asked for; then it is written to disk and read-only, also
// when the command is interrupted.
class OpenConfiguration {
public:
    OpenConfiguration(const LogCapture& log, bool isWanted);
    ~OpenConfiguration();
    OpenConfiguration(const OpenConfiguration&) = delete;
    OpenConfiguration& operator=(const OpenConfiguration&) = delete;

    // Whether VCS says that the configuration is in a mode already, to which it is set again.
    static bool IsWritable(const LogCapture& log);
    static bool IsReadOnly(const LogCapture& log);

    // Throws Failure when it is not read-only again, if it was opened.
    static void RequireClosed(const LogCapture& log, bool isWanted, const std::string& what);

    // Adds --rw to a command.
    static void AddOption(CLI::App& command, bool& isWanted);

private:
    void Close() const;

    const LogCapture& m_log;
    const bool m_isWanted;
};

#endif
