#include "PropertyLists.h"

#include "common/Environment.h"
#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <cstring>

namespace clussim {

using common::Folded;

namespace {

enum Syntax : std::uint32_t {
    SyntaxEndMark = 0x00000000,
    SyntaxName = 0x00040003,
    SyntaxBinary = 0x00010001,
    SyntaxDword = 0x00010002,
    SyntaxSz = 0x00010003,
    SyntaxExpandSz = 0x00010004,
    SyntaxMultiSz = 0x00010005,
    SyntaxExpandedSz = 0x00010008,
    SyntaxDiskSignature = 0x00050002,
    SyntaxScsiAddress = 0x00060002,
    SyntaxDiskNumber = 0x00070002,
    SyntaxPartitionInfo = 0x00080001,
    SyntaxDiskGuid = 0x000B0003,
    SyntaxDiskSize = 0x000C0006
};

const std::size_t PartitionInfoSize = 1120;

void AppendDword(Bytes& bytes, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
}

Bytes DwordBytes(std::uint32_t value) {
    Bytes bytes;
    AppendDword(bytes, value);
    return bytes;
}

void AppendEntry(Bytes& bytes, std::uint32_t syntax, const Bytes& value) {
    AppendDword(bytes, syntax);
    AppendDword(bytes, static_cast<std::uint32_t>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
    bytes.resize((bytes.size() + 3) & ~static_cast<std::size_t>(3));
}

void AppendValue(Bytes& bytes, const PropertyValue& value) {
    switch (value.kind) {
    case PropertyValue::Sz:
        AppendEntry(bytes, SyntaxSz, TextBytes(value.text));
        break;
    case PropertyValue::Dword:
        AppendEntry(bytes, SyntaxDword, DwordBytes(value.number));
        break;
    case PropertyValue::MultiSz: {
        Bytes texts;
        for (const std::wstring& text : value.texts) {
            const Bytes one = TextBytes(text);
            texts.insert(texts.end(), one.begin(), one.end());
        }
        texts.resize(texts.size() + 2);
        AppendEntry(bytes, SyntaxMultiSz, texts);
        break;
    }
    case PropertyValue::ExpandSz:
        AppendEntry(bytes, SyntaxExpandSz, TextBytes(value.text));
        AppendEntry(bytes, SyntaxExpandedSz, TextBytes(common::ExpandVariables(value.text)));
        break;
    case PropertyValue::Binary:
        AppendEntry(bytes, SyntaxBinary, value.bytes);
        break;
    }
    AppendDword(bytes, SyntaxEndMark); // after each property
}

void PutText(Bytes& bytes, std::size_t offset, const std::wstring& text) {
    std::memcpy(&bytes[offset], text.c_str(), text.size() * sizeof(wchar_t));
}

// Reads a list front to back, with every length checked against what is left.
class Reader {
public:
    Reader(const void* data, std::size_t cb) : m_next(static_cast<const unsigned char*>(data)), m_left(cb) {
    }

    bool Dword(std::uint32_t& value) {
        if (m_left < 4) {
            return false;
        }
        value = static_cast<std::uint32_t>(m_next[0]) | static_cast<std::uint32_t>(m_next[1]) << 8 |
                static_cast<std::uint32_t>(m_next[2]) << 16 | static_cast<std::uint32_t>(m_next[3]) << 24;
        m_next += 4;
        m_left -= 4;
        return true;
    }

    // A value's bytes and their padding, of which the last may be missing.
    bool Value(std::size_t cb, Bytes& bytes) {
        if (cb > m_left) {
            return false;
        }
        bytes.assign(m_next, m_next + cb);
        const std::size_t padded = (cb + 3) & ~static_cast<std::size_t>(3);
        const std::size_t taken = padded < m_left ? padded : m_left;
        m_next += taken;
        m_left -= taken;
        return true;
    }

private:
    const unsigned char* m_next;
    std::size_t m_left;
};

// The texts in the bytes, each up to its terminator.
std::vector<std::wstring> Texts(const Bytes& bytes) {
    std::vector<std::wstring> texts;
    std::wstring text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const wchar_t c = static_cast<wchar_t>(bytes[i] | bytes[i + 1] << 8);
        if (c != L'\0') {
            text += c;
            continue;
        }
        texts.push_back(text);
        text.clear();
    }
    if (!text.empty()) {
        texts.push_back(text);
    }
    return texts;
}

std::wstring FirstText(const Bytes& bytes) {
    const std::vector<std::wstring> texts = Texts(bytes);
    return texts.empty() ? std::wstring() : texts.front();
}

bool ToPropertyValue(std::uint32_t syntax, const Bytes& bytes, PropertyValue& value) {
    switch (syntax) {
    case SyntaxSz:
        value.kind = PropertyValue::Sz;
        value.text = FirstText(bytes);
        return true;
    case SyntaxExpandSz:
        value.kind = PropertyValue::ExpandSz;
        value.text = FirstText(bytes);
        return true;
    case SyntaxDword:
        if (bytes.size() != 4) {
            return false;
        }
        value.kind = PropertyValue::Dword;
        return Reader(bytes.data(), bytes.size()).Dword(value.number);
    case SyntaxMultiSz:
        value.kind = PropertyValue::MultiSz;
        value.texts = Texts(bytes);
        while (!value.texts.empty() && value.texts.back().empty()) {
            value.texts.pop_back();
        }
        return true;
    case SyntaxBinary:
        value.kind = PropertyValue::Binary;
        value.bytes = bytes;
        return true;
    default:
        return false;
    }
}

// A property as a list has it: its name and the first of its values.
struct ListedProperty {
    std::wstring name;
    bool hasValue = false;
    std::uint32_t syntax = 0;
    Bytes bytes;
};

Code ReadListed(Reader& reader, ListedProperty& property) {
    std::uint32_t syntax = 0;
    std::uint32_t length = 0;
    Bytes bytes;
    if (!reader.Dword(syntax) || !reader.Dword(length)) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    if (syntax != SyntaxName) {
        return ERROR_INVALID_DATA;
    }
    if (!reader.Value(length, bytes)) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    property.name = FirstText(bytes);
    for (;;) {
        if (!reader.Dword(syntax)) {
            return ERROR_INSUFFICIENT_BUFFER;
        }
        if (syntax == SyntaxEndMark) {
            return ERROR_SUCCESS;
        }
        if (!reader.Dword(length) || !reader.Value(length, bytes)) {
            return ERROR_INSUFFICIENT_BUFFER;
        }
        if (!property.hasValue) {
            property.hasValue = true;
            property.syntax = syntax;
            property.bytes = bytes;
        }
    }
}

} // namespace

Bytes TextBytes(const std::wstring& text) {
    Bytes bytes((text.size() + 1) * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.c_str(), bytes.size());
    return bytes;
}

Bytes PropertyList(const PropertySet& properties) {
    Bytes bytes;
    AppendDword(bytes, static_cast<std::uint32_t>(properties.Items().size()));
    for (const PropertySet::Item& item : properties.Items()) {
        AppendEntry(bytes, SyntaxName, TextBytes(item.name));
        AppendValue(bytes, item.value);
    }
    return bytes;
}

Bytes NameList(const PropertySet& properties) {
    Bytes names;
    for (const PropertySet::Item& item : properties.Items()) {
        const Bytes name = TextBytes(item.name);
        names.insert(names.end(), name.begin(), name.end());
    }
    names.resize(names.size() + sizeof(wchar_t));
    return names;
}

Bytes RequiredDependencies(const std::vector<const wchar_t*>& types) {
    Bytes bytes;
    for (const wchar_t* type : types) {
        AppendEntry(bytes, SyntaxName, TextBytes(type));
    }
    AppendDword(bytes, SyntaxEndMark);
    return bytes;
}

Bytes DiskInformation(const Disk& disk) {
    Bytes bytes;
    if (disk.guid.empty()) {
        AppendEntry(bytes, SyntaxDiskSignature, DwordBytes(disk.signature));
    } else {
        AppendEntry(bytes, SyntaxDiskGuid, TextBytes(disk.guid));
    }
    AppendEntry(bytes, SyntaxScsiAddress, DwordBytes(disk.number << 16)); // target
    AppendEntry(bytes, SyntaxDiskNumber, DwordBytes(disk.number));
    if (disk.size != 0) {
        Bytes size = DwordBytes(static_cast<std::uint32_t>(disk.size));
        AppendDword(size, static_cast<std::uint32_t>(disk.size >> 32));
        AppendEntry(bytes, SyntaxDiskSize, size);
    }
    for (const Partition& partition : disk.partitions) {
        const bool hasLetter = partition.device.size() == 2 && partition.device[1] == L':';
        Bytes info(PartitionInfoSize);
        info[0] = hasLetter ? 5 : 4;                // sticky, usable
        PutText(info, 4, partition.device);         // 260 characters
        PutText(info, 4 + 520, partition.label);    // 260 characters
        info[4 + 520 + 520 + 4] = 255;              // longest name component
        PutText(info, 4 + 520 + 520 + 12, L"NTFS"); // 32 characters
        AppendEntry(bytes, SyntaxPartitionInfo, info);
    }
    AppendDword(bytes, SyntaxEndMark);
    return bytes;
}

Code ParsePropertyList(const void* data, std::size_t cb, PropertySet& properties) {
    Reader reader(data, cb);
    std::uint32_t count = 0;
    if (!reader.Dword(count)) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    for (; count > 0; --count) {
        ListedProperty property;
        const Code code = ReadListed(reader, property);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        PropertyValue value;
        if (!property.hasValue || property.name.empty() || !ToPropertyValue(property.syntax, property.bytes, value)) {
            return ERROR_INVALID_DATA;
        }
        properties.Set(property.name, value);
    }
    return ERROR_SUCCESS;
}

Code FindListedProperty(const void* data, std::size_t cb, const std::wstring& name, PropertyValue& value) {
    Reader reader(data, cb);
    std::uint32_t count = 0;
    if (!reader.Dword(count)) {
        return ERROR_INVALID_DATA;
    }
    const std::wstring wanted = Folded(name);
    for (; count > 0; --count) {
        ListedProperty property;
        if (ReadListed(reader, property) != ERROR_SUCCESS) {
            return ERROR_INVALID_DATA;
        }
        if (Folded(property.name) == wanted) {
            const bool isKnown = property.hasValue && ToPropertyValue(property.syntax, property.bytes, value);
            return isKnown ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_INVALID_DATA);
        }
    }
    return ERROR_FILE_NOT_FOUND;
}

} // namespace clussim
