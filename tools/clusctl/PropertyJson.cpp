#include "PropertyJson.h"

#include "ClusterApi.h"
#include "Secrets.h"

#include "common/Text.h"
#include "core/ToolSecrets.h"
#include "core/ValueList.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>

namespace {

// A value within the list's bytes.
struct Value {
    const unsigned char* data;
    size_t size;
};

// Reads a list front to back, and refuses one that is cut: no snapshot is made of half a list.
class ListReader {
public:
    explicit ListReader(const std::vector<unsigned char>& bytes) : m_bytes(bytes) {
    }

    DWORD Number() {
        DWORD number = 0;
        const unsigned char* at = Take(sizeof(number));
        std::memcpy(&number, at, sizeof(number));
        return number;
    }

    Value Next() {
        const DWORD length = Number();
        const Value value = {Take(length), length};
        m_at += std::min(clus::PaddedLength(length) - length, m_bytes.size() - m_at); // the last one's may be missing
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

    const std::vector<unsigned char>& m_bytes;
    size_t m_at = 0;
};

DWORD NumberOf(const Value& value) {
    DWORD number = 0;
    if (value.size < sizeof(number)) {
        throw Failure("the cluster gave a number that is too short");
    }
    std::memcpy(&number, value.data, sizeof(number));
    return number;
}

// The text up to its terminator, which may be missing.
std::wstring TextOf(const Value& value) {
    return clus::TextInBuffer(value.data, value.size, 0);
}

Json TextsOf(const Value& value) {
    Json texts = Json::array();
    size_t at = 0;
    for (std::wstring text = TextOf(value); !text.empty(); text = clus::TextInBuffer(value.data, value.size, at)) {
        at += (text.size() + 1) * sizeof(wchar_t);
        texts.push_back(text);
    }
    return texts;
}

// The model knows fewer types than the cluster: the others become numbers of 32 bits, or bytes.
Json ValueJson(DWORD syntax, const Value& value) {
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
        return {{"binary", common::HexDigits(value.data, value.size)}};
    }
}

// CLUSPROP_SYNTAX_DISK_GUID, which older platform headers lack.
const DWORD SyntaxDiskGuid = 0x000B0003;
const DWORD SyntaxDiskSize = 0x000C0006;

std::uint64_t LargeNumberOf(const Value& value) {
    std::uint64_t number = 0;
    if (value.size < sizeof(number)) {
        throw Failure("the cluster gave a number that is too short");
    }
    std::memcpy(&number, value.data, sizeof(number));
    return number;
}

std::wstring PartitionText(const Value& value, size_t offset) {
    if (value.size < offset + clus::PartitionTextSize) {
        throw Failure("the cluster gave a partition record that is too short");
    }
    return clus::TextInBuffer(value.data, offset + clus::PartitionTextSize, offset);
}

Json PartitionJson(const Value& value) {
    Json partition;
    partition["device"] = PartitionText(value, clus::PartitionDeviceOffset);
    const std::wstring label = PartitionText(value, clus::PartitionLabelOffset);
    if (!label.empty()) {
        partition["label"] = label;
    }
    return partition;
}

// An object that grows copies the names of its members again and again.
void Reserve(Json& object, size_t members) {
    object.get_ref<Json::object_t&>().reserve(members);
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
    // The count is the cluster's word only.
    Reserve(properties, std::min<size_t>(count, propertyList.size() / clus::EntryHeaderSize));
    for (DWORD i = 0; i < count; ++i) {
        if (reader.Number() != CLUSPROP_SYNTAX_NAME) {
            throw Failure("the cluster gave a property without a name");
        }
        const std::string name = common::ToUtf8(TextOf(reader.Next()));
        // A text to be expanded has its expanded form behind it: the stored one is the first.
        bool isFirst = true;
        for (DWORD syntax = reader.Number(); syntax != CLUSPROP_SYNTAX_ENDMARK; syntax = reader.Number()) {
            const Value value = reader.Next();
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
        const Value value = reader.Next();
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
        case SyntaxDiskSize:
            disk["size"] = LargeNumberOf(value);
            break;
        case CLUSPROP_SYNTAX_PARTITION_INFO:
            partitions.push_back(PartitionJson(value));
            break;
        default: // the simulator makes up the rest
            break;
        }
    }
    if (disk.contains("guid")) {
        disk.erase("signature"); // a model has one of them
    }
    disk["partitions"] = std::move(partitions);
    return disk;
}

bool IsCore(const std::vector<unsigned char>& flags) {
    return !flags.empty() && (flags.front() & 1) != 0; // CLUS_FLAG_CORE
}

bool MarkCore(Json& resource, const std::vector<unsigned char>& flags) {
    const bool isCore = IsCore(flags);
    if (isCore) {
        resource[resource.contains("disk") ? "quorum" : "core"] = true;
    }
    return isCore;
}
