#include "ProbeLists.h"

#include "core/ValueList.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

const std::uint32_t SyntaxDiskSignature = 0x00050002;
const std::uint32_t SyntaxDiskGuid = 0x000B0003;
const size_t PartitionSize = 1120;

// A list of entries, front to back.
class Entries {
public:
    Entries(const std::vector<unsigned char>& list, size_t begin) : m_list(list), m_end(begin) {
    }

    // Goes to the next entry; false where the list is cut.
    bool Next() {
        const size_t header = clus::EntryHeaderSize;
        if (m_end > m_list.size() || m_list.size() - m_end < sizeof(std::uint32_t)) {
            return false;
        }
        m_syntax = NumberAt(m_end);
        if (m_syntax == clus::SyntaxEndMark) {
            m_end += sizeof(std::uint32_t);
            return true;
        }
        if (m_list.size() - m_end < header ||
            NumberAt(m_end + sizeof(std::uint32_t)) > m_list.size() - m_end - header) {
            return false;
        }
        m_length = NumberAt(m_end + sizeof(std::uint32_t));
        m_value = m_end + header;
        m_end = std::min(m_list.size(), m_value + clus::PaddedLength(m_length));
        return true;
    }

    std::uint32_t NumberAt(size_t at) const {
        std::uint32_t number = 0;
        std::memcpy(&number, m_list.data() + at, sizeof(number));
        return number;
    }
    std::uint32_t Syntax() const {
        return m_syntax;
    }
    size_t Length() const {
        return m_length;
    }
    std::wstring TextAt(size_t offset) const {
        return clus::TextInBuffer(m_list.data(), m_value + m_length, m_value + offset);
    }
    size_t Left() const {
        return m_list.size() - m_end;
    }

private:
    const std::vector<unsigned char>& m_list;
    std::uint32_t m_syntax = 0;
    size_t m_value = 0;
    size_t m_length = 0;
    size_t m_end;
};

} // namespace

void LookAtPropertyList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers) {
    Entries entries(list, sizeof(std::uint32_t));
    const std::uint32_t count = entries.NumberAt(0);
    std::uint32_t read = 0;
    bool isWhole = true;
    while (isWhole && read < count) {
        isWhole = entries.Next() && entries.Syntax() == clus::SyntaxName;
        while (isWhole && entries.Syntax() != clus::SyntaxEndMark) {
            isWhole = entries.Next();
        }
        ++read;
    }
    const bool isExact = isWhole && entries.Left() == 0;
    answers.Saw("property-list", isExact,
                isExact   ? "end marks as expected"
                : isWhole ? std::to_string(entries.Left()) + " bytes behind the last property"
                          : "ends in property " + std::to_string(read),
                object);
}

void LookAtDiskList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers) {
    Entries entries(list, 0);
    bool isWhole = entries.Next();
    const bool beginsWell = entries.Syntax() == SyntaxDiskSignature || entries.Syntax() == SyntaxDiskGuid;
    while (isWhole && entries.Syntax() != clus::SyntaxEndMark) {
        if (entries.Syntax() == clus::SyntaxPartitionInfo) {
            const std::wstring device = entries.TextAt(clus::PartitionDeviceOffset);
            const bool isForm = entries.Length() == PartitionSize && !device.empty() && device.back() != L'\\';
            answers.Saw("disk-partition", isForm,
                        std::to_string(entries.Length()) + " bytes" +
                            (isForm ? "" : ", or a backslash behind the device"),
                        object);
        }
        isWhole = entries.Next();
    }
    const bool endsWell = isWhole && entries.Left() == 0;
    answers.Saw("disk-list", beginsWell && endsWell,
                beginsWell && endsWell ? "as expected"
                : beginsWell           ? "does not end with one end mark"
                                       : "begins with another entry",
                object);
}
