// Lists of names that hold each once.
#ifndef CLUS_CORE_UNIQUENAMES_H
#define CLUS_CORE_UNIQUENAMES_H

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace clus {

inline bool Contains(const std::vector<std::wstring>& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// For the few names of one resource; long lists take UniqueNames.
inline void AppendNew(std::vector<std::wstring>& names, const std::wstring& name) {
    if (!Contains(names, name)) {
        names.push_back(name);
    }
}

// Appends names to a list, each once, in time linear to their number.
class UniqueNames {
public:
    // The names already in the list count.
    explicit UniqueNames(std::vector<std::wstring>& names) : m_names(names) {
        Reserve(names.size());
    }
    UniqueNames(const UniqueNames&) = delete;
    UniqueNames& operator=(const UniqueNames&) = delete;

    // Appends the name unless an equal one, letter case included, is there. When memory is short, nothing has changed.
    void Append(std::wstring&& name) {
        if (!m_names.empty() && m_names.back() == name) {
            return; // lists show a name once per system, in rows that follow one another
        }
        Reserve(m_names.size() + 1);
        std::size_t& position = Slot(m_slots, name);
        if (position == 0) {
            m_names.push_back(std::move(name));
            position = m_names.size();
        }
    }

private:
    // Open addressing; 1-based positions in the list: no copies of the names and no allocation per name.
    using Slots = std::vector<std::size_t>;

    // The slot of this name, or the empty one where it belongs. At least half of the slots are empty, so there is one.
    std::size_t& Slot(Slots& slots, const std::wstring& name) const {
        const std::size_t mask = slots.size() - 1;
        std::size_t i = std::hash<std::wstring>()(name) & mask;
        while (slots[i] != 0 && m_names[slots[i] - 1] != name) {
            i = (i + 1) & mask;
        }
        return slots[i];
    }

    void Reserve(std::size_t count) {
        if (!m_slots.empty() && count <= m_slots.size() / 2) {
            return;
        }
        std::size_t size = 64; // a power of two
        while (size < 4 * count) {
            size *= 2;
        }
        Slots slots(size);
        for (std::size_t i = 0; i < m_names.size(); ++i) {
            std::size_t& position = Slot(slots, m_names[i]);
            if (position == 0) {
                position = i + 1;
            }
        }
        m_slots.swap(slots);
    }

    std::vector<std::wstring>& m_names;
    Slots m_slots;
};

} // namespace clus

#endif
