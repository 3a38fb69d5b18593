// JSON as this tool writes it. A text of the platform or the library becomes UTF-8 when a document takes it.
#ifndef CLUSCTL_JSON_H
#define CLUSCTL_JSON_H

#include "common/Json.h"
#include "common/Text.h"

#include <cstddef>
#include <string>

using common::Json;

// Without these a UTF-16 text would become a list of numbers.
template <> struct nlohmann::adl_serializer<std::wstring> {
    static void to_json(Json& json, const std::wstring& text) {
        json = common::ToUtf8(text);
    }
};

template <> struct nlohmann::adl_serializer<const wchar_t*> {
    static void to_json(Json& json, const wchar_t* text) {
        json = common::ToUtf8(text);
    }
};

template <std::size_t Size> struct nlohmann::adl_serializer<wchar_t[Size]> {
    static void to_json(Json& json, const wchar_t* text) {
        json = common::ToUtf8(text);
    }
};

// The text, or null when it is empty.
inline Json TextOrNull(const std::wstring& text) {
    return text.empty() ? Json() : Json(text);
}

#endif
