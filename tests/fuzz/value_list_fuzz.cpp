// Walks arbitrary bytes as a value list and compares every entry with a plain byte-by-byte reading.
#include "FuzzInput.h"

#include "core/ValueList.h"

#include <string>
#include <vector>

namespace {

struct Entry {
    std::uint64_t start;
    std::uint32_t syntax;
};

std::uint32_t LittleEndian(const std::uint8_t* data, std::uint64_t offset) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value * 256 + data[offset + static_cast<std::uint64_t>(i)];
    }
    return value;
}

std::vector<Entry> ReadEntries(const std::uint8_t* data, std::uint64_t size) {
    std::vector<Entry> entries;
    std::uint64_t position = 0;
    while (position + 8 <= size) {
        const std::uint32_t syntax = LittleEndian(data, position);
        if (syntax == 0) {
            break;
        }
        entries.push_back({position, syntax});
        const std::uint64_t length = LittleEndian(data, position + 4);
        position += 8 + (length + 3) / 4 * 4;
    }
    return entries;
}

std::wstring ReadText(const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) {
    std::wstring text;
    while (offset + 2 <= size && (data[offset] != 0 || data[offset + 1] != 0)) {
        text += static_cast<wchar_t>(data[offset] + data[offset + 1] * 256);
        offset += 2;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ExactBlock block(data, size);
    clus::ValueListReader reader(block.Data(), block.Size());
    for (const Entry& entry : ReadEntries(data, size)) {
        FUZZ_CHECK(reader.Next());
        FUZZ_CHECK(reader.Syntax() == entry.syntax);
        for (const std::size_t offset : {std::size_t{8}, std::size_t{12}, std::size_t{13}, size}) {
            FUZZ_CHECK(reader.TextAt(offset) == ReadText(data, size, entry.start + offset));
        }
    }
    FUZZ_CHECK(!reader.Next());
    FUZZ_CHECK(!reader.Next());
    for (const std::size_t offset : {std::size_t{0}, size / 2, size - size / 8, size, size + 1}) {
        FUZZ_CHECK(clus::TextInBuffer(block.Data(), block.Size(), offset) == ReadText(data, size, offset));
    }
    return 0;
}
