// Named values of a resource.
#ifndef CLUSSIM_PROPERTYSET_H
#define CLUSSIM_PROPERTYSET_H

#include <cstdint>
#include <string>
#include <vector>

namespace clussim {

struct PropertyValue {
    enum Kind {
        Sz,
        Dword,
        MultiSz,
        ExpandSz,
        Binary
    };

    Kind kind = Sz;
    std::wstring text;                // Sz, ExpandSz
    std::uint32_t number = 0;         // Dword
    std::vector<std::wstring> texts;  // MultiSz
    std::vector<unsigned char> bytes; // Binary

    static PropertyValue OfText(const std::wstring& text) {
        PropertyValue value;
        value.text = text;
        return value;
    }
    static PropertyValue OfNumber(std::uint32_t number) {
        PropertyValue value;
        value.kind = Dword;
        value.number = number;
        return value;
    }

    bool operator==(const PropertyValue& other) const;
};

// Named values in the order they were first set. Names compare without case.
class PropertySet {
public:
    struct Item {
        std::wstring name;
        PropertyValue value;
        std::wstring key; // what the name is compared by
    };

    const PropertyValue* Find(const std::wstring& name) const;

    // Whether that changed anything.
    bool Set(const std::wstring& name, const PropertyValue& value);

    void Remove(const std::wstring& name);

    const std::vector<Item>& Items() const {
        return m_items;
    }

private:
    std::vector<Item> m_items;
};

} // namespace clussim

#endif
