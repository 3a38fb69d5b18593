#include "RecordedObjects.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>

namespace {

std::string Key(const std::string& name) {
    return common::ToUtf8(common::Folded(common::ToUtf16(name)));
}

} // namespace

const RecordedPart& RecordedObject::Part(const std::string& part) const {
    static const RecordedPart none;
    const auto known = parts.find(part);
    return known == parts.end() ? none : known->second;
}

std::string RecordedObject::Text(const std::string& part) const {
    const Json& value = Part(part).value;
    return value.is_string() ? value.get<std::string>() : std::string();
}

std::size_t RecordedObjects::Named(const std::string& name) {
    const auto added = m_byKey.emplace(Key(name), m_objects.size());
    if (added.second) {
        m_objects.emplace_back();
        m_objects.back().name = name;
        m_forward.push_back(added.first->second);
    }
    RecordedObject& object = At(added.first->second);
    object.name = object.name.empty() ? name : object.name; // one of this name was deleted
    return Resolved(added.first->second);
}

std::size_t RecordedObjects::Unnamed() {
    m_forward.push_back(m_objects.size());
    m_objects.emplace_back();
    return m_objects.size() - 1;
}

std::size_t RecordedObjects::Spell(std::size_t index, const std::string& name) {
    index = Resolved(index);
    const std::size_t other = Resolved(m_byKey.emplace(Key(name), index).first->second);
    if (other != index) { // it was opened by something else
        for (const auto& part : m_objects[index].parts) {
            RecordedPart& known = m_objects[other].parts[part.first];
            known = known.value.is_null() ? part.second : known;
        }
        m_objects[other].isThere = m_objects[other].isThere || m_objects[index].isThere;
        m_objects[index] = RecordedObject();
        m_forward[index] = other;
        index = other;
    }
    m_objects[index].name = name;
    return index;
}

void RecordedObjects::List(const std::string& name) {
    RecordedObject& object = m_objects[Spell(Named(name), name)];
    object.isThere = true;
    object.place = object.place == NotListed ? m_listed++ : object.place;
}

RecordedObject& RecordedObjects::At(std::size_t index) {
    return m_objects[Resolved(index)];
}

void RecordedObjects::JoinByIds() {
    for (std::size_t i = 0; i < m_objects.size(); ++i) {
        const std::string id = m_objects[i].Text("id");
        const auto byId = id.empty() ? m_byKey.end() : m_byKey.find(Key(id));
        if (byId != m_byKey.end() && m_forward[i] == i && !m_objects[i].name.empty()) {
            Spell(byId->second, std::string(m_objects[i].name));
        }
    }
}

std::vector<RecordedObject> RecordedObjects::Take() {
    std::vector<RecordedObject> there;
    std::copy_if(m_objects.begin(), m_objects.end(), std::back_inserter(there),
                 [](const RecordedObject& object) { return object.isThere && !object.name.empty(); });
    std::stable_sort(there.begin(), there.end(), [](const RecordedObject& first, const RecordedObject& second) {
        return first.place < second.place;
    });
    return there;
}

std::size_t RecordedObjects::Resolved(std::size_t index) const {
    while (m_forward[index] != index) {
        index = m_forward[index];
    }
    return index;
}
