// The mode of the configuration around a change.
#ifndef CLUSCTL_VCSMODE_H
#define CLUSCTL_VCSMODE_H

#include "LogCapture.h"
#include "Report.h"
#include "VcsTools.h"

#include <CLI/App.hpp>

#include <functional>
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

    // What `tell` reports of a change that `watch` saw, with the configuration closed behind it if it was opened.
    // Throws FailureWithReport when it is not read-only again, with what was `done`: "X" depends on "Y". When `tell`
    // throws Failure that is said with it.
    static Report Tell(const LogCapture& log, const ToolWatch& watch, bool isWanted, const std::string& done,
                       const std::function<Report()>& tell);

    // Adds --rw to a command.
    static void AddOption(CLI::App& command, bool& isWanted);

private:
    void Close() const;

    const LogCapture& m_log;
    const bool m_isWanted;
};

#endif
