#include "ObjectReader.h"

namespace clussim {

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
                Fail(Place(), "the member stands twice");
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
        throw ModelError(error.what()); // names line and column
    }
}

std::wstring TextItem(const Json& item, const std::string& place) {
    if (!item.is_string()) {
        Fail(place, "a text is expected");
    }
    return Wide(item.get<std::string>());
}

} // namespace clussim
