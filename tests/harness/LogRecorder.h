// Takes DBG::DebugLogEx's place for clusutil.dll and keeps its lines.
//
// One line of text per log line, led by its level: `> ` entry, `< ` leaving, `I ` information, `W ` warning, `E `
// error.
#ifndef HARNESS_LOGRECORDER_H
#define HARNESS_LOGRECORDER_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace harness {

struct LogLine {
    unsigned level;
    std::string sourceTag;
    int line;
    std::string text;

    std::string Compact() const;
};

class LogRecorder {
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    const std::vector<LogLine>& Entries() const {
        return m_lines;
    }
    // The log since the last call in compact form.
    std::string TakeLog();
    // The same without entries and leavings, line by line.
    std::vector<std::string> TakeMessages();

    // Lines with another module handle than clusutil.dll's, without a source line, or with an unknown source tag:
    // described, empty when all is well.
    std::string Misuse() const {
        return m_misuse;
    }

    void Add(LogLine line, const void* module);

private:
    struct Patch;

    std::unique_ptr<Patch> m_patch;
    std::mutex m_mutex; // several threads of clusutil.dll may log at once
    std::vector<LogLine> m_lines;
    std::string m_misuse;
};

} // namespace harness

#endif
