// The record of every cluster call: counters always, JSON lines on demand.
#ifndef CLUSSIM_JOURNAL_H
#define CLUSSIM_JOURNAL_H

#include "common/AppendFile.h"

#include <map>
#include <string>

namespace clussim {

// A value in a journal line. Pointers are only looked at when lines are recorded.
struct JournalValue {
    enum Kind {
        Number,
        Text,
        Bytes,
        Null
    };

    const char* name = nullptr;
    Kind kind = Null;
    long long number = 0;
    const wchar_t* text = nullptr;
    const void* bytes = nullptr;
    std::size_t cb = 0;

    static JournalValue Of(const char* name, long long number);
    static JournalValue Of(const char* name, const wchar_t* text);
    static JournalValue Of(const char* name, const void* bytes, std::size_t cb);
};

class Journal {
public:
    // Lines in memory, for tests.
    bool recording = false;

    // Appends every line to this file too; empty for none.
    void SetFile(const std::wstring& path);

    bool WantsLines() const {
        return recording || m_hasFile;
    }

    void Count(const char* call);
    void Add(const char* call, const std::string& argumentsJson, const std::string& resultJson);
    // Of a call that begins to wait.
    void AddDelay(const char* call, unsigned long milliseconds);
    // Of something that happens to the cluster just before a call.
    void AddEvent(const char* call, const std::string& event);
    void Clear();

    const std::string& Lines() const {
        return m_lines;
    }
    std::size_t Calls(const char* call) const;

    static std::string ToJson(const JournalValue& value); // the value alone

private:
    void AddLine(const char* call, const std::string& members);

    std::map<const char*, std::size_t> m_counts; // by the address of the literal: cheap, summed up by text when asked
    std::size_t m_sequence = 0;
    std::string m_lines;
    bool m_hasFile = false;
    common::AppendFile m_file;
};

} // namespace clussim

#endif
