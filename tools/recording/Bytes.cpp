#include "Bytes.h"

#include "SecretNames.h"

#include "core/ValueList.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace recording {

namespace {

const unsigned long ObjectBits = 0xFF000000;
const unsigned long ModifyBit = 0x00400000;
const unsigned long WriteBit = 0x00000002;
const std::size_t UnitSize = 2; // of UTF-16

const std::uint32_t SyntaxListValueExpandSz = 0x00010004;
const std::uint32_t SyntaxListValueMultiSz = 0x00010005;
const std::uint32_t SyntaxListValueULargeInteger = 0x00010006;
const std::uint32_t SyntaxListValueLong = 0x00010007;
const std::uint32_t SyntaxListValueExpandedSz = 0x00010008;
const std::uint32_t SyntaxListValueLargeInteger = 0x0001000A;
const std::uint32_t SyntaxListValueWord = 0x0001000B;
const std::uint32_t SyntaxListValueFileTime = 0x0001000C;
const std::size_t PartitionSerialOffset = clus::PartitionLabelOffset + clus::PartitionTextSize;

int DigitOf(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

std::uint32_t NumberAt(const unsigned char* bytes) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

void Erase(unsigned char* bytes, std::size_t size) {
    std::fill(bytes, bytes + size, static_cast<unsigned char>(0));
}

// Replaces the text that begins there, of the length that it has.
std::size_t ReplaceText(unsigned char* bytes, std::size_t size, const Rename& rename) {
    const std::wstring text = clus::TextInBuffer(bytes, size, 0);
    if (rename && !text.empty()) {
        std::wstring other = rename(text);
        other.resize(text.size(), L'x');
        for (std::size_t i = 0; i < other.size(); ++i) {
            const auto unit = static_cast<std::uint16_t>(other[i]);
            std::memcpy(bytes + i * UnitSize, &unit, UnitSize);
        }
    }
    return text.size();
}

bool IsText(std::uint32_t syntax) {
    return syntax == clus::SyntaxListValueSz || syntax == SyntaxListValueExpandSz || syntax == SyntaxListValueMultiSz ||
           syntax == SyntaxListValueExpandedSz;
}

void HideValue(std::uint32_t syntax, unsigned char* value, std::size_t size) {
    if (!IsText(syntax)) {
        Erase(value, size);
        return;
    }
    for (std::size_t at = 0; at + UnitSize <= size; at += UnitSize) {
        std::uint16_t unit = 0;
        std::memcpy(&unit, value + at, UnitSize);
        unit = unit == 0 ? 0 : '*';
        std::memcpy(value + at, &unit, UnitSize);
    }
    Erase(value + size / UnitSize * UnitSize, size % UnitSize);
}

bool IsNumber(std::uint32_t syntax) {
    for (const std::uint32_t number : {clus::SyntaxListValueDword, SyntaxListValueULargeInteger, SyntaxListValueLong,
                                       SyntaxListValueLargeInteger, SyntaxListValueWord, SyntaxListValueFileTime}) {
        if (syntax == number) {
            return true;
        }
    }
    return false;
}

// What is in binary values nobody knows: a network name keeps its account's password in one. What lies behind a text
// may be the rest of another one.
void CleanValue(std::uint32_t syntax, unsigned char* value, std::size_t size, const Rename& rename) {
    if (!IsText(syntax)) {
        Erase(value, IsNumber(syntax) && (!rename || syntax == clus::SyntaxListValueDword) ? 0 : size);
        return;
    }
    if (!rename) {
        return;
    }
    std::size_t at = 0;
    bool isText = false;
    do {
        const std::size_t length = ReplaceText(value + at, size - at, rename);
        isText = length > 0;
        at = std::min(size, at + (length + 1) * UnitSize);
    } while (syntax == SyntaxListValueMultiSz && isText && at < size);
    Erase(value + at, size - at);
}

// One entry after the other: a syntax, and but for the end mark a length and a value.
class Entries {
public:
    Entries(unsigned char* bytes, std::size_t size) : m_bytes(bytes), m_size(size) {
    }

    // False where the bytes end.
    bool Next() {
        if (m_size - m_next < sizeof(std::uint32_t)) {
            return false;
        }
        m_syntax = NumberAt(m_bytes + m_next);
        m_value = m_next + clus::EntryHeaderSize;
        m_length = 0;
        if (m_syntax == clus::SyntaxEndMark) {
            m_next += sizeof(std::uint32_t);
            return true;
        }
        if (m_size - m_next < clus::EntryHeaderSize) {
            return false;
        }
        m_length = NumberAt(m_bytes + m_next + sizeof(std::uint32_t));
        if (m_length > m_size - m_value) {
            return false;
        }
        m_next = std::min(m_size, m_value + clus::PaddedLength(m_length)); // the last one's padding may be missing
        return true;
    }

    std::uint32_t Syntax() const {
        return m_syntax;
    }
    unsigned char* Value() const {
        return m_bytes + m_value;
    }
    std::size_t Length() const {
        return m_length;
    }
    // Behind the value, up to the next entry.
    std::size_t Padding() const {
        return m_next - std::min(m_next, m_value + m_length);
    }
    // The bytes behind the entry.
    std::size_t End() const {
        return m_next;
    }
    void SkipTo(std::size_t at) {
        m_next = at;
    }

private:
    unsigned char* m_bytes;
    std::size_t m_size;
    std::size_t m_next = 0;
    std::size_t m_value = 0;
    std::size_t m_length = 0;
    std::uint32_t m_syntax = 0;
};

std::string AsciiOf(const std::wstring& text) {
    std::string ascii;
    for (const wchar_t c : text) {
        ascii += c < 0x80 ? static_cast<char>(c) : '?';
    }
    return ascii;
}

// Calls visit(property's name, entry) for each value. How far the list can be read; `isWhole` whether to its end.
template <typename Visit>
std::size_t WalkProperties(unsigned char* bytes, std::size_t size, bool& isWhole, const Visit& visit) {
    isWhole = false;
    if (size < sizeof(std::uint32_t)) {
        return 0;
    }
    const std::uint32_t count = NumberAt(bytes);
    Entries entries(bytes, size);
    entries.SkipTo(sizeof(std::uint32_t));
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t begin = entries.End();
        if (!entries.Next() || entries.Syntax() != clus::SyntaxName) {
            return begin;
        }
        const std::wstring name = clus::TextInBuffer(entries.Value(), entries.Length(), 0);
        for (;;) {
            const std::size_t value = entries.End();
            if (!entries.Next()) {
                return value;
            }
            if (entries.Syntax() == clus::SyntaxEndMark) {
                break;
            }
            visit(name, entries);
        }
    }
    isWhole = true;
    return entries.End();
}

void CleanProperties(Bytes& bytes, const Rename& rename) {
    bool isWhole = false;
    const std::size_t end =
        WalkProperties(bytes.data(), bytes.size(), isWhole, [&rename](const std::wstring& name, const Entries& entry) {
            if (IsSecretProperty(name)) {
                HideValue(entry.Syntax(), entry.Value(), entry.Length());
            } else {
                CleanValue(entry.Syntax(), entry.Value(), entry.Length(), rename);
            }
            Erase(entry.Value() + entry.Length(), entry.Padding());
        });
    Erase(bytes.data() + end, bytes.size() - end);
}

void CleanDisk(Bytes& bytes, const Rename& rename) {
    Entries entries(bytes.data(), bytes.size());
    std::size_t end = 0;
    bool isEnd = false;
    while (!isEnd && entries.Next()) {
        end = entries.End();
        isEnd = entries.Syntax() == clus::SyntaxEndMark;
        const std::size_t length = entries.Length();
        if (rename && entries.Syntax() == clus::SyntaxPartitionInfo && length > PartitionSerialOffset) {
            ReplaceText(entries.Value() + clus::PartitionLabelOffset, clus::PartitionTextSize, rename);
            Erase(entries.Value() + PartitionSerialOffset,
                  std::min(sizeof(std::uint32_t), length - PartitionSerialOffset));
        }
    }
    Erase(bytes.data() + end, bytes.size() - end);
}

} // namespace

bool FromHex(const std::string& digits, Bytes& bytes) {
    bytes.clear();
    if (digits.size() % 2 != 0) {
        return false;
    }
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = DigitOf(digits[i]);
        const int low = DigitOf(digits[i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        bytes.push_back(static_cast<unsigned char>(high * 16 + low));
    }
    return true;
}

ControlData InputOf(unsigned long controlCode) {
    switch (controlCode & ~ObjectBits & ~ModifyBit) {
    case 0x5E: // SET_COMMON_PROPERTIES
    case 0x61: // VALIDATE_COMMON_PROPERTIES
    case 0x86: // SET_PRIVATE_PROPERTIES
    case 0x89: // VALIDATE_PRIVATE_PROPERTIES
        return ControlData::Properties;
    default:
        return OutputOf(controlCode) == ControlData::Unknown ? ControlData::Unknown : ControlData::None;
    }
}

ControlData OutputOf(unsigned long controlCode) {
    switch (controlCode & ~ObjectBits & ~ModifyBit) {
    case 0x29:  // GET_NAME
    case 0x2D:  // GET_RESOURCE_TYPE
    case 0x169: // GET_NETWORK_NAME
        return ControlData::Name;
    case 0x05: // GET_CHARACTERISTICS
    case 0x09: // GET_FLAGS
    case 0x0D: // GET_CLASS_INFO
    case 0x39: // GET_ID
        return ControlData::Kept;
    case 0x55: // GET_RO_COMMON_PROPERTIES
    case 0x59: // GET_COMMON_PROPERTIES
    case 0x7D: // GET_RO_PRIVATE_PROPERTIES
    case 0x81: // GET_PRIVATE_PROPERTIES
        return ControlData::Properties;
    case 0x191: // STORAGE_GET_DISK_INFO
        return ControlData::Disk;
    case 0x5E: // SET_COMMON_PROPERTIES
    case 0x61: // VALIDATE_COMMON_PROPERTIES
    case 0x86: // SET_PRIVATE_PROPERTIES
    case 0x89: // VALIDATE_PRIVATE_PROPERTIES
        return ControlData::None;
    default:
        return ControlData::Unknown;
    }
}

bool IsChangingControl(unsigned long controlCode) {
    return (controlCode & (ModifyBit | WriteBit)) != 0;
}

void Clean(Bytes& bytes, ControlData data, const Rename& rename) {
    switch (data) {
    case ControlData::Kept:
        break;
    case ControlData::Name:
        CleanValue(clus::SyntaxListValueSz, bytes.data(), bytes.size(), rename);
        break;
    case ControlData::Properties:
        CleanProperties(bytes, rename);
        break;
    case ControlData::Disk:
        CleanDisk(bytes, rename);
        break;
    case ControlData::None:
    case ControlData::Unknown:
        Erase(bytes.data(), bytes.size());
        break;
    }
}

std::size_t PropertyListSize(const void* list, std::size_t size) {
    bool isWhole = false;
    Bytes copy(static_cast<const unsigned char*>(list), static_cast<const unsigned char*>(list) + size);
    const std::size_t end = WalkProperties(copy.data(), size, isWhole, [](const std::wstring&, const Entries&) {});
    return isWhole ? end : size;
}

bool IsSecretProperty(const std::wstring& name) {
    return IsSecretPropertyName(AsciiOf(name));
}

std::wstring CleanProperty(const std::wstring& property, std::wstring value, const Rename& rename) {
    if (IsSecretProperty(property)) {
        return std::wstring(value.size(), L'*');
    }
    if (rename) {
        const std::size_t length = value.size();
        value = rename(value);
        value.resize(length, L'x');
    }
    return value;
}

} // namespace recording
