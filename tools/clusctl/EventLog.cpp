#include "EventLog.h"

#include "EventRecords.h"

#include "common/UtcTime.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <memory>

namespace {

const std::size_t MostLookedAt = 50000; // events of all sources
const DWORD MostBytes = 0x7FFFF;        // that the system gives at once

struct LogCloser {
    void operator()(HANDLE log) const {
        CloseEventLog(log);
    }
};

Json EventJson(const EventRecord& record) {
    Json texts = Json::array();
    for (const std::wstring& text : record.texts) {
        texts.push_back(text);
    }
    return {{"time", common::UtcTime(record.time)},
            {"source", record.source},
            {"id", record.id},
            {"level", record.level},
            {"texts", texts}};
}

// The next ones, going back in time. The Win32 code.
DWORD ReadMore(HANDLE log, std::vector<EventRecord>& records) {
    std::vector<unsigned char> bytes(MostBytes);
    DWORD size = 0;
    DWORD needed = 0;
    if (!ReadEventLogW(log, EVENTLOG_SEQUENTIAL_READ | EVENTLOG_BACKWARDS_READ, 0, bytes.data(), MostBytes, &size,
                       &needed)) {
        return GetLastError();
    }
    bytes.resize(size);
    return size != 0 && ReadEventRecords(bytes, records) ? static_cast<DWORD>(ERROR_SUCCESS) : ERROR_INVALID_DATA;
}

} // namespace

unsigned long ReadEvents(const EventQuery& query, Json& events) {
    const std::unique_ptr<void, LogCloser> log(OpenEventLogW(nullptr, query.log));
    if (!log) {
        return GetLastError();
    }
    DWORD code = ERROR_SUCCESS;
    std::size_t taken = 0;
    for (std::size_t seen = 0; code == ERROR_SUCCESS && seen < MostLookedAt && taken < query.most;) {
        std::vector<EventRecord> records;
        code = ReadMore(log.get(), records);
        seen += records.size();
        for (const EventRecord& record : records) {
            const bool isWanted =
                std::find(query.sources.begin(), query.sources.end(), record.source) != query.sources.end();
            if (isWanted && taken < query.most) {
                events.push_back(EventJson(record));
                ++taken;
            }
        }
    }
    return code == ERROR_HANDLE_EOF ? static_cast<DWORD>(ERROR_SUCCESS) : code;
}
