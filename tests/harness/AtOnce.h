// Callers on threads of their own that begin together, and a log that any thread may write.
#ifndef HARNESS_ATONCE_H
#define HARNESS_ATONCE_H

#include "ImportPatch.h"

#include <DebugLog.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace harness {

inline void RunAtOnce(const std::vector<std::function<void()>>& callers) {
    std::atomic<std::size_t> waiting(0);
    std::vector<std::thread> threads;
    for (const std::function<void()>& caller : callers) {
        threads.emplace_back([&] {
            ++waiting;
            while (waiting < callers.size()) {
                ::Sleep(0);
            }
            caller();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Counts the library's log lines; the log recorder is made for one thread.
class LogCounter {
public:
    LogCounter() {
        Lines() = 0;
    }
    int Count() const {
        return Lines();
    }

private:
    static std::atomic<int>& Lines() {
        static std::atomic<int> lines(0);
        return lines;
    }
    static void CountLine(HMODULE, unsigned int, const char*, int, const wchar_t*, ...) {
        ++Lines();
    }

    ImportEntryPatch m_patch{FindImportsByAddress(LibraryModule(), reinterpret_cast<const void*>(&DBG::DebugLogEx)),
                             reinterpret_cast<void*>(&CountLine)};
};

} // namespace harness

#endif
