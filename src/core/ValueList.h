// Cluster value lists: entries of a 4-byte syntax, a 4-byte length and the value padded to a multiple of 4 bytes, ended
// by a zero syntax. The bytes come from the cluster service: nothing is read past their end, whatever the lengths say.
// Pure functions.
#ifndef CLUS_CORE_VALUELIST_H
#define CLUS_CORE_VALUELIST_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace clus {

const std::uint32_t SyntaxEndMark = 0x00000000;
const std::uint32_t SyntaxName = 0x00040003;
const std::uint32_t SyntaxListValueDword = 0x00010002;
const std::uint32_t SyntaxListValueSz = 0x00010003;
const std::uint32_t SyntaxPartitionInfo = 0x00080001;

const std::size_t EntryHeaderSize = 8; // syntax and length

// In the value of a SyntaxPartitionInfo entry, a CLUS_PARTITION_INFO: the flags, the device name, the volume's label,
// each text with its terminator within the size below.
const std::size_t PartitionDeviceOffset = 4;
const std::size_t PartitionTextSize = 520;
const std::size_t PartitionLabelOffset = PartitionDeviceOffset + PartitionTextSize;

// `length` rounded up to a multiple of 4.
constexpr std::size_t PaddedLength(std::size_t length) {
    return (length + 3) & ~static_cast<std::size_t>(3);
}

// Walks the entries of a value list in order.
class ValueListReader {
public:
    ValueListReader(const void* data, std::size_t size);

    // Goes to the next entry; false at the end mark or where the bytes end.
    bool Next();

    // Of the entry that Next went to.
    std::uint32_t Syntax() const;
    // The text that starts `offset` bytes after the entry's start.
    std::wstring TextAt(std::size_t offset) const;

private:
    const unsigned char* m_data;
    std::size_t m_size;
    std::size_t m_entry = 0;
    std::size_t m_next = 0;
};

// The UTF-16 text at the given offset of a buffer: up to its terminator, or up to the end of the buffer.
std::wstring TextInBuffer(const void* data, std::size_t size, std::size_t offset);

} // namespace clus

#endif
