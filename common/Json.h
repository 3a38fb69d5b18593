// JSON as this project's files hold it: members in order, errors with their place.
#ifndef COMMON_JSON_H
#define COMMON_JSON_H

#include <nlohmann/json.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Compiled once, in Json.cpp: else every file that uses a document would hold some hundred of its functions.
extern template class nlohmann::basic_json<nlohmann::ordered_map>;

namespace common {

typedef nlohmann::ordered_json Json;

// "groups[1].owner: a text is expected".
class JsonError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    JsonError(const std::string& place, const std::string& what) : std::runtime_error(place + ": " + what) {
    }
};

// Malformed text throws JsonError with line and column, a member that stands twice in its object with its place.
Json ParseJson(const std::string& text);

// For files and reports: two blanks per level, a line end at the end. Bytes that are no UTF-8 become U+FFFD.
std::string DumpJson(const Json& json);

// The same on one line, without the line end.
std::string DumpJsonLine(const Json& json);

// The text of an item of a list or the like; anything else throws JsonError.
std::string TextItem(const Json& item, const std::string& place);

// Reads the members of one object. All of it throws JsonError.
class ObjectReader {
public:
    // `place` is the object's own, empty for the outermost. The object must outlive the reader.
    ObjectReader(const Json& object, const std::string& place);

    std::string Place(const std::string& member) const;

    // Null when there is none. Names are literals.
    const Json* Member(const char* name);

    std::string Text(const char* name);
    std::string TextOr(const char* name, const std::string& fallback);
    // A whole number from 0 to `most`.
    std::uint64_t NumberOr(const char* name, std::uint64_t fallback, std::uint64_t most);
    bool FlagOr(const char* name, bool fallback);

    // Calls `read(item, place)` for each item of a list, which may be absent.
    template <typename Read> void Each(const char* name, Read read) {
        const Json* const list = List(name);
        for (std::size_t i = 0; list && i < list->size(); ++i) {
            read((*list)[i], Place(name) + "[" + std::to_string(i) + "]");
        }
    }

    // Members that nobody asked for are an error.
    void Done() const;

private:
    const Json* List(const char* name);

    const Json& m_object;
    std::string m_place;
    std::vector<std::string_view> m_known;
};

} // namespace common

#endif
