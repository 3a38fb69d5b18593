#include "EventRecords.h"

namespace {

// Where the numbers of a record stand (EVENTLOGRECORD).
const std::size_t TimeAt = 12;
const std::size_t IdAt = 20;
const std::size_t TypeAt = 24;
const std::size_t TextCountAt = 26;
const std::size_t TextsAt = 36;
const std::size_t HeadSize = 56; // then the source

const std::uint32_t ErrorType = 1;
const std::uint32_t WarningType = 2;
const std::uint32_t AuditFailureType = 16;

// One record, which ends where the next one begins.
class Reader {
public:
    Reader(const unsigned char* begin, std::size_t size) : m_begin(begin), m_size(size) {
    }

    std::uint32_t Number(std::size_t at, std::size_t bytes) const {
        std::uint32_t number = 0;
        for (std::size_t i = bytes; i-- > 0;) {
            number = (number << 8) | m_begin[at + i];
        }
        return number;
    }
    // Up to its terminator, or the record's end; `at` is behind it then.
    std::wstring Text(std::size_t& at) const {
        std::wstring text;
        while (at + 2 <= m_size) {
            const auto unit = static_cast<wchar_t>(Number(at, 2));
            at += 2;
            if (unit == L'\0') {
                break;
            }
            text += unit;
        }
        return text;
    }

    EventRecord Record() const {
        EventRecord record;
        record.time = Number(TimeAt, 4);
        record.id = static_cast<std::uint16_t>(Number(IdAt, 2));
        record.level = Level();
        std::size_t at = HeadSize;
        record.source = Text(at);
        at = Number(TextsAt, 4);
        for (std::uint32_t left = Number(TextCountAt, 2); left != 0 && at < m_size; --left) {
            record.texts.push_back(Text(at));
        }
        return record;
    }

private:
    const char* Level() const {
        switch (Number(TypeAt, 2)) {
        case ErrorType:
        case AuditFailureType:
            return "error";
        case WarningType:
            return "warning";
        default:
            return "information";
        }
    }

    const unsigned char* m_begin;
    std::size_t m_size;
};

} // namespace

bool ReadEventRecords(const std::vector<unsigned char>& bytes, std::vector<EventRecord>& records) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t left = bytes.size() - at;
        if (left < HeadSize) {
            return false;
        }
        const std::size_t size = Reader(bytes.data() + at, left).Number(0, 4);
        if (size < HeadSize || size > left) {
            return false;
        }
        records.push_back(Reader(bytes.data() + at, size).Record());
        at += size;
    }
    return true;
}
