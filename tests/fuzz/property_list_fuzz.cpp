// Writes property lists with arbitrary names and values into blocks of the promised size and reads them back.
#include "FuzzInput.h"

#include "core/PropertyList.h"
#include "core/ValueList.h"

#include <string>
#include <vector>

namespace {

std::uint32_t LittleEndian(const unsigned char* data) {
    return data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
}

std::wstring TextFrom(const std::uint8_t* data, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        text += static_cast<wchar_t>(data[i] | data[i + 1] << 8);
    }
    return text;
}

// Checks one text entry at `position` and returns where the next entry starts.
std::size_t CheckText(const unsigned char* block, std::size_t position, std::uint32_t syntax,
                      const std::wstring& text) {
    const std::size_t length = (text.size() + 1) * 2;
    FUZZ_CHECK(LittleEndian(block + position) == syntax);
    FUZZ_CHECK(LittleEndian(block + position + 4) == length);
    position += 8;
    for (const wchar_t character : text) {
        FUZZ_CHECK((block[position] | block[position + 1] << 8) == static_cast<int>(character));
        position += 2;
    }
    std::size_t zeros = 2 + (4 - length % 4) % 4;
    for (; zeros > 0; --zeros) {
        FUZZ_CHECK(block[position++] == 0);
    }
    return position;
}

void CheckDwordList(const std::wstring& name, std::uint32_t value) {
    const std::size_t size = clus::DwordPropertyListSize(name.size());
    const std::unique_ptr<unsigned char[]> block(new unsigned char[size]());
    clus::WriteDwordPropertyList(block.get(), name.c_str(), name.size(), value);

    FUZZ_CHECK(LittleEndian(block.get()) == 1);
    std::size_t position = CheckText(block.get(), 4, 0x00040003, name);
    FUZZ_CHECK(LittleEndian(block.get() + position) == 0x00010002);
    FUZZ_CHECK(LittleEndian(block.get() + position + 4) == 4);
    FUZZ_CHECK(LittleEndian(block.get() + position + 8) == value);
    FUZZ_CHECK(LittleEndian(block.get() + position + 12) == 0);
    FUZZ_CHECK(position + 16 == size);

    // After its count a property list is a value list.
    clus::ValueListReader reader(block.get() + 4, size - 4);
    FUZZ_CHECK(reader.Next() && reader.Syntax() == clus::SyntaxName);
    FUZZ_CHECK(reader.TextAt(clus::EntryHeaderSize) == std::wstring(name.c_str()));
    FUZZ_CHECK(reader.Next() && reader.Syntax() == clus::SyntaxListValueDword);
    FUZZ_CHECK(!reader.Next());
}

void CheckTextList(const std::wstring& name, const std::wstring& value) {
    const std::size_t size = clus::TextPropertyListSize(name.size(), value.size());
    const std::unique_ptr<unsigned char[]> block(new unsigned char[size]());
    clus::WriteTextPropertyList(block.get(), name.c_str(), name.size(), value.c_str(), value.size());

    FUZZ_CHECK(LittleEndian(block.get()) == 1);
    std::size_t position = CheckText(block.get(), 4, 0x00040003, name);
    position = CheckText(block.get(), position, 0x00010003, value);
    FUZZ_CHECK(LittleEndian(block.get() + position) == 0);
    FUZZ_CHECK(position + 4 == size);

    clus::ValueListReader reader(block.get() + 4, size - 4);
    FUZZ_CHECK(reader.Next() && reader.Syntax() == clus::SyntaxName);
    FUZZ_CHECK(reader.TextAt(clus::EntryHeaderSize) == std::wstring(name.c_str()));
    FUZZ_CHECK(reader.Next() && reader.Syntax() == clus::SyntaxListValueSz);
    FUZZ_CHECK(reader.TextAt(clus::EntryHeaderSize) == std::wstring(value.c_str()));
    FUZZ_CHECK(!reader.Next());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) {
        return 0;
    }
    const std::wstring text = TextFrom(data + 4, size - 4);
    CheckDwordList(text, LittleEndian(data));
    // The number also says where the text is divided into a name and a value.
    const std::size_t cchName = LittleEndian(data) % (text.size() + 1);
    CheckTextList(text.substr(0, cchName), text.substr(cchName));
    return 0;
}
