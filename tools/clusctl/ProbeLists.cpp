#include "ProbeLists.h"

#include "core/ValueList.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwctype>
#include <functional>

namespace {

const std::uint32_t SyntaxDiskSignature = 0x00050002;
const std::uint32_t SyntaxDiskGuid = 0x000B0003;
const std::uint32_t SyntaxExpandText = 0x00010004;
const std::uint32_t SyntaxExpandedText = 0x00010008;
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

// Calls `visit` with the name of each property and its first value, until it answers false.
void VisitProperties(const std::vector<unsigned char>& list,
                     const std::function<bool(const std::wstring& name, const Entries& value)>& visit) {
    if (list.size() < sizeof(std::uint32_t)) {
        return;
    }
    Entries entries(list, sizeof(std::uint32_t));
    for (std::uint32_t left = entries.NumberAt(0); left > 0; --left) {
        if (!entries.Next() || entries.Syntax() != clus::SyntaxName) {
            return;
        }
        const std::wstring name = entries.TextAt(0);
        if (!entries.Next() || (entries.Syntax() != clus::SyntaxEndMark && !visit(name, entries))) {
            return;
        }
        while (entries.Syntax() != clus::SyntaxEndMark) {
            if (!entries.Next()) {
                return;
            }
        }
    }
}

} // namespace

std::wstring TextProperty(const std::vector<unsigned char>& list, const std::wstring& name) {
    std::wstring text;
    VisitProperties(list, [&](const std::wstring& known, const Entries& value) {
        const bool isIt = known == name && value.Syntax() == clus::SyntaxListValueSz;
        text = isIt ? value.TextAt(0) : text;
        return !isIt;
    });
    return text;
}

bool FirstSimpleProperty(const std::vector<unsigned char>& list, std::wstring& name, bool& isText) {
    bool found = false;
    VisitProperties(list, [&](const std::wstring& known, const Entries& value) {
        isText = value.Syntax() == clus::SyntaxListValueSz;
        found = (isText || value.Syntax() == clus::SyntaxListValueDword) && InOtherCase(known) != known;
        name = known;
        return !found;
    });
    return found;
}

std::wstring InOtherCase(std::wstring text) {
    for (wchar_t& c : text) {
        c = std::iswupper(c) ? static_cast<wchar_t>(std::towlower(c)) : static_cast<wchar_t>(std::towupper(c));
    }
    return text;
}

void LookAtPropertyList(const std::vector<unsigned char>& list, const std::wstring& object, ProbeAnswers& answers) {
    Entries entries(list, sizeof(std::uint32_t));
    const std::uint32_t count = entries.NumberAt(0);
    std::uint32_t read = 0;
    bool isWhole = true;
    while (isWhole && read < count) {
        isWhole = entries.Next() && entries.Syntax() == clus::SyntaxName;
        while (isWhole && entries.Syntax() != clus::SyntaxEndMark) {
            const bool isToBeExpanded = entries.Syntax() == SyntaxExpandText;
            isWhole = entries.Next();
            if (isWhole && isToBeExpanded) {
                const bool isExpanded = entries.Syntax() == SyntaxExpandedText;
                answers.Saw("expand-text", isExpanded, isExpanded ? "the expanded one" : "nothing", object);
            }
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
