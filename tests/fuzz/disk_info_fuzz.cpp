// Reads arbitrary bytes as a disk's information, the way from the list to the digits of a partition's name, and
// compares with a plain reading of bytes and characters.
#include "FuzzInput.h"

#include "core/DiskDeviceName.h"
#include "core/ValueList.h"

#include <string>
#include <vector>

namespace {

std::uint32_t LittleEndian(const std::uint8_t* data) {
    return data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
}

// The text behind syntax, length and flags of the entry at `start`.
std::wstring DeviceNameOf(const std::uint8_t* data, std::uint64_t size, std::uint64_t start) {
    std::wstring name;
    for (std::uint64_t i = start + 12; i + 2 <= size && (data[i] | data[i + 1]) != 0; i += 2) {
        name += static_cast<wchar_t>(data[i] + data[i + 1] * 256);
    }
    return name;
}

std::vector<std::wstring> DeviceNames(const std::uint8_t* data, std::uint64_t size) {
    std::vector<std::wstring> names;
    for (std::uint64_t start = 0; start + 8 <= size && LittleEndian(data + start) != 0;) {
        if (LittleEndian(data + start) == 0x00080001) {
            names.push_back(DeviceNameOf(data, size, start));
        }
        start += 8 + (std::uint64_t{LittleEndian(data + start + 4)} + 3) / 4 * 4;
    }
    return names;
}

bool IsDigit(wchar_t character) {
    return character >= L'0' && character <= L'9';
}

void CheckName(const std::wstring& given) {
    const std::wstring name = clus::WithTrailingBackslash(given);
    if (given.empty()) {
        FUZZ_CHECK(name.empty());
    } else {
        FUZZ_CHECK(name.back() == L'\\');
        FUZZ_CHECK(name.compare(0, given.size(), given) == 0);
        FUZZ_CHECK(name.size() == given.size() + (given.back() == L'\\' ? 0 : 1));
    }
    wchar_t disk = L'?';
    wchar_t partition = L'?';
    const bool result = clus::IsDiskPartitionName(name, disk, partition);
    const bool wanted = name.size() == 16 && name.compare(0, 4, L"Disk") == 0 && IsDigit(name[4]) &&
                        name.compare(5, 9, L"Partition") == 0 && IsDigit(name[14]) && name[15] == L'\\';
    FUZZ_CHECK(result == wanted);
    FUZZ_CHECK(disk == (wanted ? name[4] : L'?'));
    FUZZ_CHECK(partition == (wanted ? name[14] : L'?'));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ExactBlock block(data, size);
    clus::ValueListReader reader(block.Data(), block.Size());
    std::vector<std::wstring> names;
    while (reader.Next()) {
        if (reader.Syntax() == clus::SyntaxPartitionInfo) {
            names.push_back(reader.TextAt(12));
        }
    }
    FUZZ_CHECK(names == DeviceNames(data, size));
    // Entries without length overlap: as many names as entries, each to the end of the bytes.
    for (std::size_t i = 0; i < names.size() && i < 16; ++i) {
        CheckName(names[i]);
    }
    // A name need not stand in a list to be looked at.
    CheckName(clus::TextInBuffer(block.Data(), block.Size(), 0));
    return 0;
}
