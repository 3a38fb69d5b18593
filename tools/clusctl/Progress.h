// A line on the terminal while the library waits: what for, and for how long.
#ifndef CLUSCTL_PROGRESS_H
#define CLUSCTL_PROGRESS_H

#include "ClusterObjects.h"
#include "Stream.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

class LogCapture;

// While it lives the line of the whole command is not shown: the terminal is needed for something else.
class OtherShown {
public:
    OtherShown();
    ~OtherShown();
    OtherShown(const OtherShown&) = delete;
    OtherShown& operator=(const OtherShown&) = delete;
};

// Draws while it lives, on a thread of its own; the line is gone afterwards. Silent when
// standard error is no terminal, and when --verbose shows the library's own steps there.
class Progress {
public:
    // Whether there is anybody to draw for. What is only read for a progress line need not be read otherwise.
    static bool IsWanted(const LogCapture& log);

    // Shows the resource that is on its way and its state, asking the cluster itself.
    Progress(const LogCapture& log, const Names& resources);
    // Shows what `describe` says, which is called on the drawing thread.
    Progress(const LogCapture& log, const std::function<std::string()>& describe);
    // The same of a whole command, once nothing else has been shown for two seconds, and until something is.
    enum class Patience {
        None,
        UntilNothingElseIsShown
    };
    Progress(const LogCapture& log, const std::function<std::string()>& describe, Patience patience);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    friend class OtherShown;

    void Run();
    void Draw(const std::string& line);
    void Erase();

    const std::function<std::string()> m_describe;
    const Patience m_patience;
    const Stream m_errors;
    size_t m_drawn = 0; // characters
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isDone = false;
    std::unique_ptr<const OtherShown> m_shown; // of a line that does not wait for others
    std::thread m_thread;
};

// How far a long list is read: "reading resources: 1200 of 10000".
class CountedProgress {
public:
    CountedProgress(const LogCapture& log, const char* objects, size_t total);
    // One more is read.
    void Next();

private:
    std::atomic<size_t> m_done{0};
    const Progress m_progress; // last: it reads the number
};

#endif
