// Reading JSON with the place of what is wrong.
#ifndef CLUSSIM_OBJECTREADER_H
#define CLUSSIM_OBJECTREADER_H

#include "ModelJson.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <set>

namespace clussim {

typedef nlohmann::ordered_json Json;

[[noreturn]] inline void Fail(const std::string& place, const std::string& what) {
    throw ModelError(place + ": " + what);
}

// Parses the text; a member that stands twice in its object is an error too. Throws ModelError.
Json ParseJson(const std::string& text);

// A text that is an item of a list or the like.
std::wstring TextItem(const Json& item, const std::string& place);

// Reads the members of one JSON object; members nobody asked for are an error when it is done.
class ObjectReader {
public:
    ObjectReader(const Json& json, const std::string& place) : m_json(json), m_place(place) {
        if (!json.is_object()) {
            Fail(place, "an object is expected");
        }
    }

    std::string Place(const std::string& member) const {
        return m_place.empty() ? member : m_place + "." + member;
    }

    const Json* Member(const char* name) {
        m_known.insert(name);
        const auto found = m_json.find(name);
        return found == m_json.end() ? nullptr : &*found;
    }

    std::wstring Text(const char* name) {
        const Json* value = Member(name);
        if (!value || !value->is_string()) {
            Fail(Place(name), "a text is expected");
        }
        return Wide(value->get<std::string>());
    }

    // Of what is looked up by it: never empty.
    std::wstring Name(const char* name) {
        std::wstring text = Text(name);
        if (text.find_first_not_of(L' ') == std::wstring::npos) {
            Fail(Place(name), "a name is expected");
        }
        return text;
    }

    std::wstring TextOr(const char* name, const wchar_t* fallback) {
        return Member(name) ? Text(name) : std::wstring(fallback);
    }

    std::int64_t NumberOr(const char* name, std::int64_t fallback, std::int64_t most) {
        const Json* value = Member(name);
        if (!value) {
            return fallback;
        }
        if (!value->is_number_integer() || (!value->is_number_unsigned() && value->get<std::int64_t>() < 0) ||
            value->get<std::uint64_t>() > static_cast<std::uint64_t>(most)) {
            Fail(Place(name), "a whole number from 0 to " + std::to_string(most) + " is expected");
        }
        return value->get<std::int64_t>();
    }

    std::uint32_t DwordOr(const char* name, std::uint32_t fallback) {
        return static_cast<std::uint32_t>(NumberOr(name, fallback, 0xFFFFFFFF));
    }

    bool FlagOr(const char* name, bool fallback) {
        const Json* value = Member(name);
        if (value && !value->is_boolean()) {
            Fail(Place(name), "true or false is expected");
        }
        return value ? value->get<bool>() : fallback;
    }

    // Calls `read(item, place)` for each item of an array member, which may be absent.
    template <typename Read> void Each(const char* name, Read read) {
        const Json* value = Member(name);
        if (!value) {
            return;
        }
        if (!value->is_array()) {
            Fail(Place(name), "a list is expected");
        }
        for (std::size_t i = 0; i < value->size(); ++i) {
            read((*value)[i], Place(name) + "[" + std::to_string(i) + "]");
        }
    }

    void Done() const {
        for (const auto& member : m_json.items()) {
            if (!m_known.count(member.key())) {
                Fail(Place(member.key()), "unknown member");
            }
        }
    }

private:
    const Json& m_json;
    std::string m_place;
    std::set<std::string> m_known;
};

} // namespace clussim

#endif
