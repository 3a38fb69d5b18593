// The records of the system's event log, as it gives them in one piece.
#ifndef CLUSCTL_EVENTRECORDS_H
#define CLUSCTL_EVENTRECORDS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct EventRecord {
    std::uint32_t time = 0; // seconds since the beginning of 1970
    std::uint16_t id = 0;   // without severity and facility
    const char* level = ""; // "error", "warning" or "information"
    std::wstring source;
    std::vector<std::wstring> texts; // what the event's message is made of
};

// Adds the records to `records`. False when the bytes are malformed; what stood before is added.
bool ReadEventRecords(const std::vector<unsigned char>& bytes, std::vector<EventRecord>& records);

#endif
