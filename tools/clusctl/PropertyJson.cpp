#include "PropertyJson.h"

#include "ClusterApi.h"
#include "Secrets.h"
#include "Text.h"

#include "common/Text.h"
#include "core/ToolSecrets.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace {

typedef std::vector<unsigned char> Bytes;

// Reads a list front to back. Values are padded to 4 bytes; the padding is not in their length.
class ListReader {
public:
    explicit ListReader(const Bytes& bytes) : m_bytes(bytes) {
    }

    DWORD Number() {
        DWORD number = 0;
        const unsigned char* at = Take(sizeof(number));
        std::memcpy(&number, at, sizeof(number));
        return number;
    }

    Bytes Value() {
        const DWORD length = Number();
        const unsigned char* at = Take(length);
        Bytes value(at, at + length);
        const size_t padding = (4 - length % 4) % 4;
        m_at += padding < m_bytes.size() - m_at ? padding : m_bytes.size() - m_at; // the last value's may be missing
        return value;
    }

private:
    const unsigned char* Take(size_t count) {
        if (count > m_bytes.size() - m_at) {
            throw Failure("the cluster gave a list that ends in the middle of a value");
        }
        const unsigned char* at = m_bytes.data() + m_at;
        m_at += count;
        return at;
    }

    const Bytes& m_bytes;
    size_t m_at = 0;
};

DWORD NumberOf(const Bytes& value) {
    DWORD number = 0;
    if (value.size() < sizeof(number)) {
        throw Failure("the cluster gave a number that is too short");
    }
    std::memcpy(&number, value.data(), sizeof(number));
    return number;
}

std::wstring WideText(const Bytes& value) {
    std::wstring text(value.size() / sizeof(wchar_t), L'\0');
    std::memcpy(&text[0], value.data(), text.size() * sizeof(wchar_t));
    return text;
}

// The text up to its terminator, which may be missing.
std::wstring TextOf(const Bytes& value) {
    const std::wstring text = WideText(value);
    return text.substr(0, text.find(L'\0'));
}

Json TextsOf(const Bytes& value) {
    Json texts = Json::array();
    std::wstring rest = WideText(value);
    while (!rest.empty() && rest[0] != L'\0') {
        const size_t end = rest.find(L'\0');
        texts.push_back(rest.substr(0, end));
        rest.erase(0, end == std::wstring::npos ? end : end + 1);
    }
    return texts;
}

// The model knows fewer types than the cluster: the others become numbers of 32 bits, or bytes.
Json ValueJson(DWORD syntax, const Bytes& value) {
    switch (syntax) {
    case CLUSPROP_SYNTAX_LIST_VALUE_SZ:
        return TextOf(value);
    case CLUSPROP_SYNTAX_LIST_VALUE_DWORD:
    case CLUSPROP_SYNTAX_LIST_VALUE_LONG:
        return NumberOf(value);
    case CLUSPROP_SYNTAX_LIST_VALUE_MULTI_SZ:
        return TextsOf(value);
    case CLUSPROP_SYNTAX_LIST_VALUE_EXPAND_SZ:
        return {{"expandSz", TextOf(value)}};
    default:
        return {{"binary", common::HexDigits(value.data(), value.size())}};
    }
}

// CLUSPROP_SYNTAX_DISK_GUID, which older platform headers lack.
const DWORD SyntaxDiskGuid = 0x000B0003;

// Offsets in CLUS_PARTITION_INFO.
const size_t PartitionDeviceAt = 4;
const size_t PartitionLabelAt = 524;
const size_t PartitionTextBytes = MAX_PATH * sizeof(wchar_t);

std::wstring TextAt(const Bytes& value, size_t offset) {
    if (value.size() < offset + PartitionTextBytes) {
        throw Failure("the cluster gave a partition record that is too short");
    }
    const auto begin = value.begin() + static_cast<Bytes::difference_type>(offset);
    return TextOf(Bytes(begin, begin + static_cast<Bytes::difference_type>(PartitionTextBytes)));
}

Json PartitionJson(const Bytes& value) {
    Json partition;
    partition["device"] = TextAt(value, PartitionDeviceAt);
    const std::wstring label = TextAt(value, PartitionLabelAt);
    if (!label.empty()) {
        partition["label"] = label;
    }
    return partition;
}

bool IsEmptyValue(const Json& value) {
    const Json empties[] = {"", {{"binary", ""}}, {{"expandSz", ""}}};
    return value.empty() || std::find(std::begin(empties), std::end(empties), value) != std::end(empties);
}

} // namespace

Json PropertiesJson(const std::vector<unsigned char>& propertyList) {
    Json properties = Json::object();
    ListReader reader(propertyList);
    const DWORD count = reader.Number();
    for (DWORD i = 0; i < count; ++i) {
        if (reader.Number() != CLUSPROP_SYNTAX_NAME) {
            throw Failure("the cluster gave a property without a name");
        }
        const std::string name = common::ToUtf8(TextOf(reader.Value()));
        // A text to be expanded has its expanded form behind it: the stored one is the first.
        bool isFirst = true;
        for (DWORD syntax = reader.Number(); syntax != CLUSPROP_SYNTAX_ENDMARK; syntax = reader.Number()) {
            const Bytes value = reader.Value();
            if (isFirst) {
                properties[name] = ValueJson(syntax, value);
                isFirst = false;
            }
        }
    }
    return properties;
}

size_t MaskSecretProperties(Json& properties) {
    size_t count = 0;
    for (const auto& property : properties.items()) {
        if (IsSecretProperty(property.key()) && !IsEmptyValue(property.value())) {
            property.value() = common::ToUtf8(clus::SecretMask);
            ++count;
        }
    }
    return count;
}

Json DiskJson(const std::vector<unsigned char>& valueList) {
    Json disk = Json::object();
    Json partitions = Json::array();
    ListReader reader(valueList);
    for (DWORD syntax = reader.Number(); syntax != CLUSPROP_SYNTAX_ENDMARK; syntax = reader.Number()) {
        const Bytes value = reader.Value();
        switch (syntax) {
        case CLUSPROP_SYNTAX_DISK_SIGNATURE:
            disk["signature"] = NumberOf(value);
            break;
        case SyntaxDiskGuid:
            disk["guid"] = TextOf(value);
            break;
        case CLUSPROP_SYNTAX_DISK_NUMBER:
            disk["number"] = NumberOf(value);
            break;
        case CLUSPROP_SYNTAX_PARTITION_INFO:
            partitions.push_back(PartitionJson(value));
            break;
        default: // the simulator makes up the rest
            break;
        }
    }
    disk["partitions"] = partitions;
    return disk;
}
