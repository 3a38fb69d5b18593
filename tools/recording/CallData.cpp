#include "CallData.h"

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

Json HexJson(const Bytes& bytes) {
    return common::HexDigits(bytes.data(), bytes.size());
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

Json Named(const wchar_t* text, const Rename& rename) {
    if (text == nullptr) {
        return Json();
    }
    return TextJson(rename ? rename(text) : std::wstring(text));
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
Json RoomJson(const Slot* slots, std::size_t at) {
    if (slots[at] == 0) {
        return Json();
    }
    const auto* const count = PointerAt<DWORD>(slots, at + 1);
    return count == nullptr ? Json(false) : Json(*count);
}

Json InputBytes(const Call& call, const Slot* slots, std::size_t at, const Rename& rename) {
    if (slots[at] == 0) {
        return Json();
    }
    Bytes bytes = BytesAt(PointerAt<unsigned char>(slots, at), NumberAt(slots, at + 1));
    Clean(bytes, InputOf(ControlCode(call, slots)), rename);
    return HexJson(bytes);
}

Json InputProperties(const Slot* slots, std::size_t at, const Rename& rename) {
    const auto* const list = PointerAt<unsigned char>(slots, at);
    if (list == nullptr) {
        return Json();
    }
    Bytes bytes = BytesAt(list, PropertyListSize(list, NumberAt(slots, at + 1)));
    Clean(bytes, ControlData::Properties, rename);
    return HexJson(bytes);
}

// A text and how long it is: the text alone when that says it, the length alone when there is no text.
Json NameJson(const Slot* slots, std::size_t at, const Counts& before, bool hasSucceeded, const Rename& rename) {
    const auto* const buffer = PointerAt<wchar_t>(slots, at);
    const auto* const count = PointerAt<DWORD>(slots, at + 1);
    if (buffer == nullptr || !hasSucceeded) {
        return count == nullptr || (!hasSucceeded && *count == before.At(at + 1)) ? Json() : Json(*count);
    }
    const std::size_t room = count == nullptr ? static_cast<std::size_t>(-1) : before.At(at + 1);
    std::size_t length = 0;
    while (length < room && buffer[length] != L'\0') {
        ++length;
    }
    const std::wstring text(buffer, length);
    Json shown = Named(text.c_str(), rename);
    if (count == nullptr || *count == length) {
        return shown;
    }
    Json both = Json::array();
    both.push_back(std::move(shown));
    both.push_back(*count);
    return both;
}

// The same of bytes.
Json OutputBytes(const Call& call, const Slot* slots, std::size_t at, bool hasSucceeded, const Rename& rename) {
    const auto* const returned = PointerAt<DWORD>(slots, at + 2);
    if (returned == nullptr) {
        return Json();
    }
    if (!hasSucceeded || slots[at] == 0) {
        return *returned;
    }
    Bytes bytes = BytesAt(PointerAt<unsigned char>(slots, at), std::min(*returned, NumberAt(slots, at + 1)));
    const bool isAll = bytes.size() == *returned;
    Clean(bytes, OutputOf(ControlCode(call, slots)), rename);
    if (isAll) {
        return HexJson(bytes);
    }
    Json both = Json::array();
    both.push_back(HexJson(bytes));
    both.push_back(*returned);
    return both;
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

Json Output(const Call& call, const Argument& argument, const Slot* slots, std::size_t at, const Counts& before,
            bool hasSucceeded, const Rename& rename) {
    if (argument.kind == Kind::NameOut) {
        return NameJson(slots, at, before, hasSucceeded, rename);
    }
    if (argument.kind == Kind::BytesOut) {
        return OutputBytes(call, slots, at, hasSucceeded, rename);
    }
    if (!hasSucceeded || slots[at] == 0) {
        return Json();
    }
    switch (argument.kind) {
    case Kind::NumberOut:
        return *PointerAt<DWORD>(slots, at);
    case Kind::KeyOut:
        return *PointerAt<DWORD_PTR>(slots, at);
    case Kind::Version: {
        const auto* const version = PointerAt<DWORD>(slots, at);
        return HexJson(BytesAt(version, std::min<std::size_t>(*version, sizeof(CLUSTERVERSIONINFO))));
    }
    case Kind::TextCopy: {
        const wchar_t* const text = *PointerAt<wchar_t*>(slots, at);
        return text == nullptr ? Json() : TextJson(CleanProperty(PropertyAsked(call, slots), text, rename));
    }
    default:
        return Json();
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

Json TextJson(const std::wstring& text) {
    std::string utf8 = common::ToUtf8(text);
    if (common::ToUtf16(utf8) == text) {
        return utf8;
    }
    return {{Utf16, common::HexDigits(text.data(), text.size() * sizeof(wchar_t))}};
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

Json Inputs(const Call& call, const Slot* slots, const NumberOfHandle& numberOf, const Rename& rename) {
    Json in = Json::object();
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        switch (argument.kind) {
        case Kind::Handle:
            in[argument.name] = numberOf(slots[at]);
            break;
        case Kind::Text:
            in[argument.name] = Named(PointerAt<wchar_t>(slots, at), rename);
            break;
        case Kind::PropertyName:
            in[argument.name] = Named(PointerAt<wchar_t>(slots, at), nullptr);
            break;
        case Kind::Number:
        case Kind::Control:
            in[argument.name] = slots[at];
            break;
        case Kind::NameOut:
            in[argument.name] = RoomJson(slots, at);
            break;
        case Kind::Version: // begins with its size
        case Kind::Class:   // of which the class alone is looked at
            in[argument.name] = slots[at] == 0 ? Json() : Json(*PointerAt<DWORD>(slots, at));
            break;
        case Kind::BytesIn:
            in[argument.name] = InputBytes(call, slots, at, rename);
            break;
        case Kind::BytesOut:
            in[argument.name] = slots[at] == 0 ? Json() : Json(NumberAt(slots, at + 1));
            break;
        case Kind::Properties:
            in[argument.name] = InputProperties(slots, at, rename);
            break;
        case Kind::NumberOut:
        case Kind::KeyOut:
        case Kind::TextCopy:
            break; // whether the caller wants it does not change the answer
        }
        at += SlotsOf(argument.kind);
    }
    return in;
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

Json Outputs(const Call& call, const Slot* slots, const Counts& before, std::int64_t result, const Rename& rename) {
    Json out = Json::object();
    const bool hasSucceeded = HasSucceeded(call, result);
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        Json item = Output(call, argument, slots, at, before, hasSucceeded, rename);
        if (!item.is_null()) {
            out[argument.name] = std::move(item);
        }
        at += SlotsOf(argument.kind);
    }
    return out;
}

void WriteOutputs(const RecordedCall& recorded, const Call& call, const Slot* slots) {
    std::size_t at = 0;
    for (const Argument& argument : call.arguments) {
        const auto item = recorded.out.find(argument.name);
        const bool isWanted = slots[at] != 0 || SlotsOf(argument.kind) > 1;
        if (item != recorded.out.end() && isWanted) {
            WriteOutput(*item, argument.kind, slots, at);
        }
        at += SlotsOf(argument.kind);
    }
}

} // namespace recording
