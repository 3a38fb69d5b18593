#include "ModelValues.h"

#include "common/Text.h"

namespace clussim {

using common::Json;
using common::ObjectReader;
using common::TextItem;
using common::ToUtf16;

void Fail(const std::string& place, const std::string& what) {
    throw common::JsonError(place, what);
}

std::wstring WideItem(const Json& item, const std::string& place) {
    return ToUtf16(TextItem(item, place));
}

std::wstring WideText(ObjectReader& reader, const char* member) {
    return ToUtf16(reader.Text(member));
}

std::wstring Name(ObjectReader& reader, const char* member) {
    const std::string name = reader.Text(member);
    if (name.find_first_not_of(' ') == std::string::npos) {
        Fail(reader.Place(member), "a name is expected");
    }
    return ToUtf16(name);
}

std::uint32_t DwordOr(ObjectReader& reader, const char* member, std::uint32_t fallback) {
    return static_cast<std::uint32_t>(reader.NumberOr(member, fallback, 0xFFFFFFFF));
}

namespace {

// What follows from it later still is a time.
const std::uint64_t LatestTime = INT64_MAX / 2; // clock milliseconds

} // namespace

std::int64_t Time(ObjectReader& reader, const char* member) {
    return static_cast<std::int64_t>(reader.NumberOr(member, 0, LatestTime));
}

std::vector<std::int64_t> Times(ObjectReader& reader, const char* member) {
    std::vector<std::int64_t> times;
    reader.Each(member, [&](const Json& item, const std::string& place) {
        if (!item.is_number_unsigned() || item.get<std::uint64_t>() > LatestTime) {
            Fail(place, "a time is expected");
        }
        times.push_back(item.get<std::int64_t>());
    });
    return times;
}

namespace {

int HexDigit(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

PropertyValue ReadProperty(const Json& json, const std::string& place) {
    PropertyValue value;
    if (json.is_string()) {
        value.text = ToUtf16(json.get<std::string>());
    } else if (json.is_number_unsigned() && json.get<std::uint64_t>() <= 0xFFFFFFFF) {
        value.kind = PropertyValue::Dword;
        value.number = json.get<std::uint32_t>();
    } else if (json.is_array()) {
        value.kind = PropertyValue::MultiSz;
        for (const Json& item : json) {
            value.texts.push_back(WideItem(item, place));
        }
    } else if (json.is_object() && json.size() == 1 && json.count("expandSz")) {
        value.kind = PropertyValue::ExpandSz;
        value.text = WideItem(json["expandSz"], place + ".expandSz");
    } else if (json.is_object() && json.size() == 1 && json.count("binary")) {
        value.kind = PropertyValue::Binary;
        const std::string hex = TextItem(json["binary"], place + ".binary");
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            const int high = HexDigit(hex[i]);
            const int low = i + 1 < hex.size() ? HexDigit(hex[i + 1]) : -1;
            if (high < 0 || low < 0) {
                Fail(place + ".binary", "pairs of hexadecimal digits are expected");
            }
            value.bytes.push_back(static_cast<unsigned char>(high * 16 + low));
        }
    } else {
        Fail(place,
             "a text, a number of 32 bits, a list of texts, {\"expandSz\": text} or {\"binary\": hex} is expected");
    }
    return value;
}

} // namespace

void ReadProperties(const Json* json, const std::string& place, PropertySet& properties) {
    if (!json) {
        return;
    }
    if (!json->is_object()) {
        Fail(place, "an object is expected");
    }
    for (const auto& member : json->items()) {
        const std::string itemPlace = place + "." + member.key();
        const std::wstring name = ToUtf16(member.key());
        if (properties.Find(name)) {
            Fail(itemPlace, "the property stands twice");
        }
        properties.Set(name, ReadProperty(member.value(), itemPlace));
    }
}

void ReadUnread(ObjectReader& reader, std::initializer_list<const char*> parts, Unread& unread) {
    const Json* const json = reader.Member("unread");
    if (!json) {
        return;
    }
    ObjectReader codes(*json, reader.Place("unread"));
    for (const char* const part : parts) {
        const std::uint32_t code = DwordOr(codes, part, 0);
        if (code != 0) {
            unread[part] = code;
        } else if (codes.Member(part)) {
            Fail(codes.Place(part), "a code other than 0 is expected");
        }
    }
    codes.Done();
}

} // namespace clussim
