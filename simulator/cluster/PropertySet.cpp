#include "PropertySet.h"

#include "common/Text.h"

#include <algorithm>

namespace clussim {

using common::Folded;

bool PropertyValue::operator==(const PropertyValue& other) const {
    return kind == other.kind && text == other.text && number == other.number && texts == other.texts &&
           bytes == other.bytes;
}

const PropertyValue* PropertySet::Find(const std::wstring& name) const {
    const std::wstring key = Folded(name);
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [&key](const Item& item) { return item.key == key; });
    return found == m_items.end() ? nullptr : &found->value;
}

bool PropertySet::Set(const std::wstring& name, const PropertyValue& value) {
    const std::wstring key = Folded(name);
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [&key](const Item& item) { return item.key == key; });
    if (found == m_items.end()) {
        m_items.push_back({name, value, key});
        return true;
    }
    if (found->value == value) {
        return false;
    }
    found->value = value;
    return true;
}

void PropertySet::Remove(const std::wstring& name) {
    const std::wstring key = common::Folded(name);
    m_items.erase(std::remove_if(m_items.begin(), m_items.end(), [&key](const Item& item) { return item.key == key; }),
                  m_items.end());
}

} // namespace clussim
