#include "common/Json.h"

#include <vector>

namespace common {

namespace {

// Follows the parser and notes where it is.
class DuplicateCheck {
public:
    bool operator()(Json::parse_event_t event, const Json& parsed) {
        switch (event) {
        case Json::parse_event_t::object_start:
        case Json::parse_event_t::array_start:
            Item();
            m_levels.push_back({event == Json::parse_event_t::array_start});
            break;
        case Json::parse_event_t::object_end:
        case Json::parse_event_t::array_end:
            m_levels.pop_back();
            break;
        case Json::parse_event_t::key:
            m_levels.back().key = parsed.get<std::string>();
            if (!m_levels.back().keys.insert(m_levels.back().key).second) {
                throw JsonError(Place(), "the member stands twice");
            }
            break;
        default:
            Item();
            break;
        }
        return true;
    }

private:
    struct Level {
        bool isList;
        std::size_t items = 0;
        std::string key = std::string();
        std::set<std::string> keys = {};
    };

    void Item() {
        if (!m_levels.empty()) {
            ++m_levels.back().items;
        }
    }

    std::string Place() const {
        std::string place;
        for (const Level& level : m_levels) {
            if (level.isList) {
                place += "[" + std::to_string(level.items - 1) + "]";
            } else {
                place += (place.empty() ? "" : ".") + level.key;
            }
        }
        return place;
    }

    std::vector<Level> m_levels;
};

} // namespace

Json ParseJson(const std::string& text) {
    DuplicateCheck check;
    try {
        return Json::parse(text,
                           [&check](int, Json::parse_event_t event, Json& parsed) { return check(event, parsed); });
    } catch (const Json::exception& error) {
        throw JsonError(error.what()); // names line and column
    }
}

std::string DumpJson(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string DumpJsonLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string TextItem(const Json& item, const std::string& place) {
    if (!item.is_string()) {
        throw JsonError(place, "a text is expected");
    }
    return item.get<std::string>();
}

ObjectReader::ObjectReader(const Json& object, const std::string& place) : m_object(object), m_place(place) {
    if (!object.is_object()) {
        throw JsonError(place, "an object is expected");
    }
}

std::string ObjectReader::Place(const std::string& member) const {
    return m_place.empty() ? member : m_place + "." + member;
}

const Json* ObjectReader::Member(const char* name) {
    m_known.insert(name);
    const auto found = m_object.find(name);
    return found == m_object.end() ? nullptr : &*found;
}

std::string ObjectReader::Text(const char* name) {
    const Json* const value = Member(name);
    return TextItem(value ? *value : Json(), Place(name));
}

std::string ObjectReader::TextOr(const char* name, const std::string& fallback) {
    return Member(name) ? Text(name) : fallback;
}

std::uint64_t ObjectReader::NumberOr(const char* name, std::uint64_t fallback, std::uint64_t most) {
    const Json* const value = Member(name);
    if (!value) {
        return fallback;
    }
    // Numbers built by a program may be signed ones that are not negative.
    if (!value->is_number_integer() || (!value->is_number_unsigned() && value->get<std::int64_t>() < 0) ||
        value->get<std::uint64_t>() > most) {
        throw JsonError(Place(name), "a whole number from 0 to " + std::to_string(most) + " is expected");
    }
    return value->get<std::uint64_t>();
}

bool ObjectReader::FlagOr(const char* name, bool fallback) {
    const Json* const value = Member(name);
    if (value && !value->is_boolean()) {
        throw JsonError(Place(name), "true or false is expected");
    }
    return value ? value->get<bool>() : fallback;
}

void ObjectReader::Done() const {
    for (const auto& member : m_object.items()) {
        if (!m_known.count(member.key())) {
            throw JsonError(Place(member.key()), "unknown member");
        }
    }
}

const Json* ObjectReader::List(const char* name) {
    const Json* const value = Member(name);
    if (value && !value->is_array()) {
        throw JsonError(Place(name), "a list is expected");
    }
    return value;
}

} // namespace common
