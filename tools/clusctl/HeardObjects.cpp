#include "HeardObjects.h"

#include <algorithm>
#include <utility>

namespace {

void SetRow(std::vector<ShownValue>& rows, const ShownValue& row) {
    const auto same =
        std::find_if(rows.begin(), rows.end(), [&row](const ShownValue& known) { return known.system == row.system; });
    if (same == rows.end()) {
        rows.push_back(row);
    } else {
        same->value = row.value;
    }
}

} // namespace

const char AllSystems[] = "global";

const HeardAttribute* HeardObject::Find(const std::string& attribute) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const HeardAttribute& known) { return known.name == attribute; });
    return found == attributes.end() ? nullptr : &*found;
}

HeardAttribute& HeardObject::There(const std::string& attribute) {
    const HeardAttribute* const known = Find(attribute);
    if (known != nullptr) {
        return attributes[static_cast<std::size_t>(known - attributes.data())];
    }
    attributes.emplace_back();
    attributes.back().name = attribute;
    return attributes.back();
}

std::string HeardObject::Value(const std::string& attribute) const {
    const HeardAttribute* const known = Find(attribute);
    return known == nullptr || known->rows.empty() ? std::string() : known->rows.front().value;
}

std::vector<std::string> HeardObject::SystemsOf(const std::string& attribute) const {
    std::vector<std::string> found;
    const HeardAttribute* const known = Find(attribute);
    for (std::size_t i = 0; known != nullptr && i < known->rows.size(); ++i) {
        AddOnce(found, known->rows[i].system);
    }
    return found;
}

void HeardObject::Tell(const std::string& attribute, const std::string& value) {
    There(attribute).rows = {{name, attribute, AllSystems, value}};
}

HeardObject& HeardObjects::There(const std::string& name) {
    const auto place = m_places.emplace(name, m_objects.size());
    if (place.second) {
        m_objects.emplace_back();
        m_objects.back().name = name;
    }
    return m_objects[place.first->second];
}

HeardObject* HeardObjects::Find(const std::string& name) {
    const auto place = m_places.find(name);
    return place == m_places.end() ? nullptr : &m_objects[place->second];
}

void HeardObjects::Remove(const std::string& name) {
    m_objects.erase(std::remove_if(m_objects.begin(), m_objects.end(),
                                   [&name](const HeardObject& object) { return object.name == name; }),
                    m_objects.end());
    Index();
}

void HeardObjects::Tell(const ShownValue& row, std::size_t answer, Told told) {
    HeardObject& object = There(row.object);
    if (told == Told::Object && object.answer != answer) {
        object.attributes.clear();
        object.isShown = true;
    }
    object.answer = answer;
    HeardAttribute& attribute = object.There(row.attribute);
    if (told != Told::Row && attribute.answer != answer) {
        attribute.rows.clear();
    }
    attribute.answer = answer;
    attribute.isAlone = false;
    SetRow(attribute.rows, row);
}

void HeardObjects::TellValue(const ShownValue& value) {
    HeardAttribute& attribute = There(value.object).There(value.attribute);
    std::vector<ShownValue>& rows = attribute.rows;
    const bool isOfAll = !rows.empty() && rows.front().system == AllSystems;
    if (value.system == AllSystems) {
        if (rows.empty() || isOfAll) {
            rows = {value};
        } else {
            rows.front().value = value.value;
        }
        return;
    }
    if (isOfAll && rows.front().value == value.value) {
        return;
    }
    if (isOfAll) {
        rows.clear();
    }
    attribute.isAlone = attribute.isAlone || rows.empty();
    SetRow(rows, value);
}

void HeardObjects::ListAll(const std::vector<std::string>& names, bool listsOnlySome) {
    for (const std::string& name : names) {
        There(name);
    }
    std::vector<HeardObject> listed;
    std::vector<bool> isListed(m_objects.size(), false);
    for (const std::string& name : names) {
        const std::size_t place = m_places.at(name);
        if (!isListed[place]) {
            isListed[place] = true;
            listed.push_back(std::move(m_objects[place]));
        }
    }
    for (std::size_t i = 0; i < m_objects.size(); ++i) {
        const bool wasListed = !m_objects[i].systems.empty() || !m_objects[i].SystemsOf("State").empty();
        if (!isListed[i] && listsOnlySome && !wasListed) {
            listed.push_back(std::move(m_objects[i]));
        }
    }
    m_objects = std::move(listed);
    Index();
    m_isListed = true;
}

std::vector<ShownValue> HeardObjects::Rows() const {
    std::vector<ShownValue> rows;
    for (const HeardObject& object : m_objects) {
        for (const HeardAttribute& attribute : object.attributes) {
            rows.insert(rows.end(), attribute.rows.begin(), attribute.rows.end());
        }
    }
    return rows;
}

void HeardObjects::Index() {
    m_places.clear();
    for (std::size_t i = 0; i < m_objects.size(); ++i) {
        m_places[m_objects[i].name] = i;
    }
}

void AddOnce(std::vector<std::string>& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
    }
}
