#include "PropertySet.h"

#include "common/Text.h"

namespace clussim {

using common::Folded;

const PropertyValue* PropertySet::Find(const std::wstring& name) const {
    const std::wstring wanted = Folded(name);
    for (const Item& item : m_items) {
        if (Folded(item.name) == wanted) {
            return &item.value;
        }
    }
    return nullptr;
}

void PropertySet::Set(const std::wstring& name, const PropertyValue& value) {
    const std::wstring wanted = Folded(name);
    for (Item& item : m_items) {
        if (Folded(item.name) == wanted) {
            item.value = value;
            return;
        }
    }
    m_items.push_back({name, value});
}

} // namespace clussim
