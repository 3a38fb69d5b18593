#include "common/Json.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

template class nlohmann::basic_json<nlohmann::ordered_map>;

namespace common {

namespace {

// An object that grows copies the names of its members: most have no more than this.
const std::size_t UsualMembers = 8;

// Builds the document while the parser reads it.
class DocumentBuilder : public nlohmann::json_sax<Json> {
public:
    DocumentBuilder() noexcept(false) {
    } // as its values, whose constructors may throw
    DocumentBuilder(const DocumentBuilder&) = delete;
    DocumentBuilder& operator=(const DocumentBuilder&) = delete;

    bool null() override {
        Add(nullptr);
        return true;
    }
    bool boolean(bool value) override {
        Add(value);
        return true;
    }
    bool number_integer(number_integer_t value) override {
        Add(value);
        return true;
    }
    bool number_unsigned(number_unsigned_t value) override {
        Add(value);
        return true;
    }
    bool number_float(number_float_t value, const string_t&) override {
        Add(value);
        return true;
    }
    bool string(string_t& value) override {
        Add(std::move(value));
        return true;
    }
    bool binary(binary_t&) override {
        return false; // not in texts
    }
    bool start_object(std::size_t) override {
        m_open.push_back(&Add(Json::object()));
        m_open.back()->get_ref<Json::object_t&>().reserve(UsualMembers);
        return true;
    }
    bool key(string_t& name) override {
        Json& object = *m_open.back();
        const std::size_t before = object.size();
        m_value = &object[name];
        if (object.size() == before) {
            throw JsonError(Place(name), "the member stands twice");
        }
        return true;
    }
    bool end_object() override {
        m_open.pop_back();
        return true;
    }
    bool start_array(std::size_t) override {
        m_open.push_back(&Add(Json::array()));
        return true;
    }
    bool end_array() override {
        m_open.pop_back();
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const Json::exception& error) override {
        throw JsonError(error.what()); // names line and column
    }

    Json Document() {
        return std::move(m_document);
    }

private:
    Json& Add(Json&& value) {
        if (m_open.empty()) {
            return m_document = std::move(value);
        }
        if (m_open.back()->is_array()) {
            m_open.back()->push_back(std::move(value));
            return m_open.back()->back();
        }
        return *m_value = std::move(value);
    }

    // Of a member of the innermost object.
    std::string Place(const std::string& member) const {
        std::string place;
        for (const Json* level : m_open) {
            if (level->is_array()) {
                place += "[" + std::to_string(level->size() - 1) + "]";
            } else {
                const std::string& name = level == m_open.back() ? member : std::prev(level->end()).key();
                place += (place.empty() ? "" : ".") + name;
            }
        }
        return place;
    }

    Json m_document;
    std::vector<Json*> m_open; // objects and lists, the innermost last
    Json* m_value = nullptr;   // of the innermost object's last member
};

} // namespace

Json ParseJson(const std::string& text) {
    DocumentBuilder builder;
    Json::sax_parse(text, &builder);
    return builder.Document();
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
    if (std::find(m_known.begin(), m_known.end(), name) == m_known.end()) {
        m_known.emplace_back(name);
    }
    const auto found = m_object.find(name);
    return found == m_object.end() ? nullptr : &*found;
}

std::string ObjectReader::Text(const char* name) {
    const Json* const value = Member(name);
    if (!value || !value->is_string()) {
        throw JsonError(Place(name), "a text is expected");
    }
    return value->get<std::string>();
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
        if (std::find(m_known.begin(), m_known.end(), member.key()) == m_known.end()) {
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
