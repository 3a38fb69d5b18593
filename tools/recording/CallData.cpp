#include "CallData.h"

#include "CallLine.h"
#include "CallTable.h"

#include "common/Text.h"

#include <clusapi.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace recording {

using common::Json;
using common::JsonError;

namespace {

const char Utf16[] = "utf16";
const char Null[] = "null";
const char Nothing[] = ""; // no member

template <typename T> T* PointerAt(const Slot* slots, std::size_t at) {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(slots[at]));
}

DWORD NumberAt(const Slot* slots, std::size_t at) {
    return static_cast<DWORD>(slots[at]);
}

Bytes BytesAt(const void* bytes, std::size_t count) {
    const auto* const first = static_cast<const unsigned char*>(bytes);
    return bytes == nullptr ? Bytes() : Bytes(first, first + count);
}

std::string HexText(const Bytes& bytes) {
    return '"' + common::HexDigits(bytes.data(), bytes.size()) + '"';
}

std::string Pair(const std::string& first, DWORD second) {
    return "[" + first + "," + std::to_string(second) + "]";
}

Bytes HexOf(const Json& item) {
    Bytes bytes;
    if (!item.is_string() || !FromHex(item.get<std::string>(), bytes)) {
        throw JsonError("hexadecimal digits are expected");
    }
    return bytes;
}

DWORD DwordOf(const Json& item) {
    if (!item.is_number_unsigned() || item.get<std::uint64_t>() > 0xFFFFFFFF) {
        throw JsonError("a number of 32 bits is expected");
    }
    return item.get<DWORD>();
}

std::string Named(const wchar_t* text, const Rename& rename) {
    if (text == nullptr) {
        return Null;
    }
    return JsonOf(rename ? rename(text) : std::wstring(text));
}

DWORD ControlCode(const Call& call, const Slot* slots) {
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        if (argument.kind == Kind::Control) {
            return NumberAt(slots, at);
        }
        at += SlotsOf(argument.kind);
    }
    return 0;
}

// How much room a caller has for a name: null for none, false for some of which it does not say how much.
std::string Room(const Slot* slots, std::size_t at) {
    if (slots[at] == 0) {
        return Null;
    }
    const auto* const count = PointerAt<DWORD>(slots, at + 1);
    return count == nullptr ? "false" : std::to_string(*count);
}

std::string InputBytes(const Call& call, const Slot* slots, std::size_t at, const Rename& rename) {
    if (slots[at] == 0) {
        return Null;
    }
    Bytes bytes = BytesAt(PointerAt<unsigned char>(slots, at), NumberAt(slots, at + 1));
    Clean(bytes, InputOf(ControlCode(call, slots)), rename);
    return HexText(bytes);
}

std::string InputProperties(const Slot* slots, std::size_t at, const Rename& rename) {
    const auto* const list = PointerAt<unsigned char>(slots, at);
    if (list == nullptr) {
        return Null;
    }
    Bytes bytes = BytesAt(list, PropertyListSize(list, NumberAt(slots, at + 1)));
    Clean(bytes, ControlData::Properties, rename);
    return HexText(bytes);
}

// A text and how long it is: the text alone when that says it, the length alone when there is no text.
std::string NameGiven(const Slot* slots, std::size_t at, const Counts& before, bool hasSucceeded,
                      const Rename& rename) {
    const auto* const buffer = PointerAt<wchar_t>(slots, at);
    const auto* const count = PointerAt<DWORD>(slots, at + 1);
    if (buffer == nullptr || !hasSucceeded) {
        return count == nullptr || (!hasSucceeded && *count == before.At(at + 1)) ? Nothing : std::to_string(*count);
    }
    const std::size_t room = count == nullptr ? static_cast<std::size_t>(-1) : before.At(at + 1);
    std::size_t length = 0;
    while (length < room && buffer[length] != L'\0') {
        ++length;
    }
    const std::wstring text(buffer, length);
    const std::string shown = Named(text.c_str(), rename);
    return count == nullptr || *count == length ? shown : Pair(shown, *count);
}

// The same of bytes.
std::string BytesGiven(const Call& call, const Slot* slots, std::size_t at, bool hasSucceeded, const Rename& rename) {
    const auto* const returned = PointerAt<DWORD>(slots, at + 2);
    if (returned == nullptr) {
        return Nothing;
    }
    if (!hasSucceeded || slots[at] == 0) {
        return std::to_string(*returned);
    }
    Bytes bytes = BytesAt(PointerAt<unsigned char>(slots, at), std::min(*returned, NumberAt(slots, at + 1)));
    const bool isAll = bytes.size() == *returned;
    Clean(bytes, OutputOf(ControlCode(call, slots)), rename);
    return isAll ? HexText(bytes) : Pair(HexText(bytes), *returned);
}

std::wstring PropertyAsked(const Call& call, const Slot* slots) {
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        if (argument.kind == Kind::PropertyName && slots[at] != 0) {
            return PointerAt<wchar_t>(slots, at);
        }
        at += SlotsOf(argument.kind);
    }
    return std::wstring();
}

std::string Output(const Call& call, const Argument& argument, const Slot* slots, std::size_t at, const Counts& before,
                   bool hasSucceeded, const Rename& rename) {
    if (argument.kind == Kind::NameOut) {
        return NameGiven(slots, at, before, hasSucceeded, rename);
    }
    if (argument.kind == Kind::BytesOut) {
        return BytesGiven(call, slots, at, hasSucceeded, rename);
    }
    if (!hasSucceeded || slots[at] == 0) {
        return Nothing;
    }
    switch (argument.kind) {
    case Kind::NumberOut:
        return std::to_string(IsSecretProperty(PropertyAsked(call, slots)) ? 0 : *PointerAt<DWORD>(slots, at));
    case Kind::KeyOut:
        return std::to_string(*PointerAt<DWORD_PTR>(slots, at));
    case Kind::Version: {
        const auto* const version = PointerAt<DWORD>(slots, at);
        return HexText(BytesAt(version, std::min<std::size_t>(*version, sizeof(CLUSTERVERSIONINFO))));
    }
    case Kind::TextCopy: {
        const wchar_t* const text = *PointerAt<wchar_t*>(slots, at);
        return text == nullptr ? Nothing : JsonOf(CleanProperty(PropertyAsked(call, slots), text, rename));
    }
    default:
        return Nothing;
    }
}

void WriteName(const Json& item, const Slot* slots, std::size_t at) {
    auto* const buffer = PointerAt<wchar_t>(slots, at);
    auto* const count = PointerAt<DWORD>(slots, at + 1);
    const bool hasText = item.is_string() || item.is_object() || item.is_array();
    if (item.is_array() && item.size() != 2) {
        throw JsonError("a text and its length are expected");
    }
    DWORD length = hasText ? 0 : DwordOf(item);
    if (hasText) {
        const std::wstring text = TextOf(item.is_array() ? item[0] : item);
        if (buffer == nullptr || (count != nullptr && *count <= text.size())) {
            throw JsonError("there is no room for what was answered");
        }
        std::copy(text.c_str(), text.c_str() + text.size() + 1, buffer);
        length = item.is_array() ? DwordOf(item[1]) : static_cast<DWORD>(text.size());
    }
    if (count != nullptr) {
        *count = length;
    }
}

void WriteBytes(const Json& item, const Slot* slots, std::size_t at) {
    auto* const returned = PointerAt<DWORD>(slots, at + 2);
    if (item.is_array() && item.size() != 2) {
        throw JsonError("bytes and their count are expected");
    }
    DWORD count = 0;
    if (item.is_number()) {
        count = DwordOf(item);
    } else {
        const Bytes bytes = HexOf(item.is_array() ? item[0] : item);
        if (slots[at] == 0 || bytes.size() > NumberAt(slots, at + 1)) {
            throw JsonError("there is no room for what was answered");
        }
        std::copy(bytes.begin(), bytes.end(), PointerAt<unsigned char>(slots, at));
        count = item.is_array() ? DwordOf(item[1]) : static_cast<DWORD>(bytes.size());
    }
    if (returned != nullptr) {
        *returned = count;
    }
}

void WriteVersion(const Json& item, const Slot* slots, std::size_t at) {
    auto* const version = PointerAt<unsigned char>(slots, at);
    const Bytes bytes = HexOf(item);
    if (bytes.size() > *PointerAt<DWORD>(slots, at)) {
        throw JsonError("there is no room for what was answered");
    }
    std::copy(bytes.begin(), bytes.end(), version);
}

void WriteCopy(const Json& item, const Slot* slots, std::size_t at) {
    const std::wstring text = TextOf(item);
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    auto* const copy = static_cast<wchar_t*>(LocalAlloc(LMEM_FIXED, size));
    if (copy == nullptr) {
        throw JsonError("there is no memory for what was answered");
    }
    std::memcpy(copy, text.c_str(), size);
    *PointerAt<wchar_t*>(slots, at) = copy;
}

void WriteOutput(const Json& item, Kind kind, const Slot* slots, std::size_t at) {
    if (kind == Kind::NameOut) {
        WriteName(item, slots, at);
    } else if (kind == Kind::BytesOut) {
        WriteBytes(item, slots, at);
    } else if (slots[at] == 0) {
        throw JsonError("there is no room for what was answered");
    } else if (kind == Kind::NumberOut) {
        *PointerAt<DWORD>(slots, at) = DwordOf(item);
    } else if (kind == Kind::KeyOut && item.is_number_unsigned()) {
        *PointerAt<DWORD_PTR>(slots, at) = item.get<DWORD_PTR>();
    } else if (kind == Kind::Version) {
        WriteVersion(item, slots, at);
    } else if (kind == Kind::TextCopy) {
        WriteCopy(item, slots, at);
    } else {
        throw JsonError("the call gives no such answer");
    }
}

} // namespace

std::string JsonOf(const std::wstring& text) {
    if (std::all_of(text.begin(), text.end(), [](wchar_t c) { return c > 0 && c < 0x80; })) {
        return QuotedText(std::string(text.begin(), text.end()));
    }
    const std::string utf8 = common::ToUtf8(text);
    if (common::ToUtf16(utf8) == text) {
        return QuotedText(utf8);
    }
    ObjectText units;
    units.Add(Utf16, '"' + common::HexDigits(text.data(), text.size() * sizeof(wchar_t)) + '"');
    return units.Take();
}

std::wstring TextOf(const Json& text) {
    if (text.is_string()) {
        return common::ToUtf16(text.get<std::string>());
    }
    const auto units = text.is_object() ? text.find(Utf16) : text.end();
    if (!text.is_object() || units == text.end()) {
        throw JsonError("a text is expected");
    }
    const Bytes bytes = HexOf(*units);
    std::wstring result(bytes.size() / sizeof(wchar_t), L'\0');
    std::copy(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(result.size() * sizeof(wchar_t)),
              reinterpret_cast<unsigned char*>(&result[0]));
    return result;
}

bool HasSucceeded(const Call& call, std::int64_t result) {
    switch (call.result) {
    case Result::Code:
        return result == ERROR_SUCCESS;
    case Result::State:
        return result != -1;
    default:
        return result != 0;
    }
}

std::int64_t ResultOf(const Call& call, Slot slot) {
    switch (call.result) {
    case Result::Code:
        return static_cast<std::uint32_t>(slot);
    case Result::Handle:
        return static_cast<std::int64_t>(slot);
    default:
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(slot));
    }
}

bool Changes(const Call& call, const Slot* slots) {
    return call.effect == Effect::Changes ||
           (call.effect == Effect::ByControl && IsChangingControl(ControlCode(call, slots)));
}

std::string Inputs(const Call& call, const Slot* slots, const NumberOfHandle& numberOf, const Rename& rename) {
    ObjectText in;
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        switch (argument.kind) {
        case Kind::Handle:
            in.Add(argument.name, std::to_string(numberOf(slots[at])));
            break;
        case Kind::Text:
            in.Add(argument.name, Named(PointerAt<wchar_t>(slots, at), rename));
            break;
        case Kind::PropertyName:
            in.Add(argument.name, Named(PointerAt<wchar_t>(slots, at), nullptr));
            break;
        case Kind::Number:
        case Kind::Control:
            in.Add(argument.name, std::to_string(slots[at]));
            break;
        case Kind::NameOut:
            in.Add(argument.name, Room(slots, at));
            break;
        case Kind::Version: // begins with its size
        case Kind::Class:   // of which the class alone is looked at
            in.Add(argument.name, slots[at] == 0 ? Null : std::to_string(*PointerAt<DWORD>(slots, at)));
            break;
        case Kind::BytesIn:
            in.Add(argument.name, InputBytes(call, slots, at, rename));
            break;
        case Kind::BytesOut:
            in.Add(argument.name, slots[at] == 0 ? Null : std::to_string(NumberAt(slots, at + 1)));
            break;
        case Kind::Properties:
            in.Add(argument.name, InputProperties(slots, at, rename));
            break;
        case Kind::NumberOut:
        case Kind::KeyOut:
        case Kind::TextCopy:
            break; // whether the caller wants it does not change the answer
        }
        at += SlotsOf(argument.kind);
    }
    return in.Take();
}

Counts::Counts(const Call& call, const Slot* slots) {
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        if (argument.kind == Kind::NameOut && slots[at + 1] != 0 && at + 1 < std::size(m_values)) {
            m_values[at + 1] = *PointerAt<DWORD>(slots, at + 1);
        }
        at += SlotsOf(argument.kind);
    }
}

std::string Outputs(const Call& call, const Slot* slots, const Counts& before, std::int64_t result,
                    const Rename& rename) {
    ObjectText out;
    const bool hasSucceeded = HasSucceeded(call, result);
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        const std::string item = Output(call, argument, slots, at, before, hasSucceeded, rename);
        if (!item.empty()) {
            out.Add(argument.name, item);
        }
        at += SlotsOf(argument.kind);
    }
    return out.Take();
}

void WriteOutputs(const RecordedCall& recorded, const Call& call, const Slot* slots) {
    const Json out = common::ParseJson(recorded.out);
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        const auto item = out.find(argument.name);
        const bool isWanted = slots[at] != 0 || SlotsOf(argument.kind) > 1;
        if (item != out.end() && isWanted) {
            WriteOutput(*item, argument.kind, slots, at);
        }
        at += SlotsOf(argument.kind);
    }
}

} // namespace recording
