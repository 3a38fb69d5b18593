#include "core/ValueList.h"

namespace clus {

namespace {

std::uint32_t DwordAt(const unsigned char* data) {
    return static_cast<std::uint32_t>(data[0]) | static_cast<std::uint32_t>(data[1]) << 8 |
           static_cast<std::uint32_t>(data[2]) << 16 | static_cast<std::uint32_t>(data[3]) << 24;
}

} // namespace

ValueListReader::ValueListReader(const void* data, std::size_t size)
    : m_data(static_cast<const unsigned char*>(data)), m_size(size) {
}

bool ValueListReader::Next() {
    // The end mark is a bare syntax without a length.
    if (m_next >= m_size || m_size - m_next < EntryHeaderSize || DwordAt(m_data + m_next) == SyntaxEndMark) {
        m_next = m_size;
        return false;
    }
    m_entry = m_next;
    const std::size_t length = PaddedLength(DwordAt(m_data + m_entry + 4));
    const std::size_t left = m_size - m_entry - EntryHeaderSize;
    m_next = length < left ? m_entry + EntryHeaderSize + length : m_size;
    return true;
}

std::uint32_t ValueListReader::Syntax() const {
    return DwordAt(m_data + m_entry);
}

std::wstring ValueListReader::TextAt(std::size_t offset) const {
    return TextInBuffer(m_data, m_size, m_entry + offset);
}

std::wstring TextInBuffer(const void* data, std::size_t size, std::size_t offset) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    const std::size_t limit = offset < size ? (size - offset) / 2 : 0;
    std::size_t length = 0;
    while (length < limit && (bytes[offset + 2 * length] != 0 || bytes[offset + 2 * length + 1] != 0)) {
        ++length;
    }
    std::wstring text(length, L'\0');
    for (std::size_t i = 0; i < length; ++i) {
        text[i] = static_cast<wchar_t>(bytes[offset + 2 * i] | bytes[offset + 2 * i + 1] << 8);
    }
    return text;
}

} // namespace clus
