// A line on the terminal while the library waits: what for, and for how long.
#ifndef CLUSCTL_PROGRESS_H
#define CLUSCTL_PROGRESS_H

#include "ClusterObjects.h"
#include "Stream.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

class LogCapture;

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
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void Run();

    const std::function<std::string()> m_describe;
    const Stream m_errors;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isDone = false;
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
