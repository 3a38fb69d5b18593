// The runs of the cluster's command-line tools, as the library's debug log tells them.
#ifndef CLUSCTL_TOOLRUNS_H
#define CLUSCTL_TOOLRUNS_H

#include <mutex>
#include <string>
#include <vector>

struct ToolRun {
    std::string command; // "hares -list Type=Lanman", without secrets; "vcsencrypt" when it carries one
    bool isStarted = false;
    bool isDone = false;
    int exitCode = 0;      // of a started one
    std::string firstLine; // of its output, standard error included; empty when there is none
};

class ToolRuns {
public:
    // One line of the log, secrets masked.
    void Take(const std::string& line);

    size_t Count() const;
    std::vector<ToolRun> Since(size_t first) const;

    // The last one. Other threads may ask while tools run.
    ToolRun Last() const;

private:
    mutable std::mutex m_mutex;
    std::vector<ToolRun> m_runs;
};

#endif
