// clusctl status --watch: shows the status again and again until it is interrupted.
#ifndef CLUSCTL_STATUSWATCH_H
#define CLUSCTL_STATUSWATCH_H

#include "LogCapture.h"
#include "Report.h"

#include <chrono>

struct WatchOptions {
    std::chrono::seconds interval{5};
    bool isJson = false;
};

// Reads the status whenever the cluster tells of something, and at least once in an interval. On a terminal the page is
// drawn anew, with what changed highlighted; elsewhere it is printed again when something changed, or in JSON a line
// for the status and then one for each change. Ends with Ctrl+C, which is the result. Throws Failure when the first
// reading fails, or the output cannot be written.
Report WatchStatus(const LogCapture& log, const WatchOptions& options);

#endif
