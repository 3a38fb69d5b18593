// Lists of names that hold each once.
#ifndef CLUS_CORE_UNIQUENAMES_H
#define CLUS_CORE_UNIQUENAMES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
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

// Appends names to a list, each once, in time linear to their number. There is room for 4,294,967,295 of them.
class UniqueNames {
public:
    // The names already in the list count.
    explicit UniqueNames(std::vector<std::wstring>& names) : m_names(names) {
        Reserve(names.size() + 1);
        for (std::size_t i = 0; i < names.size(); ++i) {
            const std::uint32_t hash = HashOf(names[i]);
            Slot& slot = Find(hash, names[i]);
            if (slot.position == 0) {
                slot = {hash, static_cast<std::uint32_t>(i + 1)};
            }
        }
    }
    UniqueNames(const UniqueNames&) = delete;
    UniqueNames& operator=(const UniqueNames&) = delete;

    // Appends the name unless an equal one, letter case included, is there. When memory is short, nothing has changed.
    void Append(std::wstring&& name) {
        AppendAny(std::move(name));
    }
    void Append(std::wstring_view name) {
        AppendAny(name);
    }

private:
    // Of open addressing: no copies of the names and no allocation per name. The hash tells most other names apart
    // without looking at them.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t position = 0; // 1-based, in the list; 0: empty
    };
    using Slots = std::vector<Slot>;

    static std::uint32_t HashOf(std::wstring_view name) {
        const std::size_t hash = std::hash<std::wstring_view>()(name);
        return static_cast<std::uint32_t>(hash ^ hash >> 16 >> 16);
    }

    // A string is made of the name only when it is appended.
    template <typename Name> void AppendAny(Name&& name) {
        if (!m_names.empty() && m_names.back() == name) {
            return; // lists show a name once per system, in rows that follow one another
        }
        Reserve(m_names.size() + 1);
        const std::uint32_t hash = HashOf(name);
        Slot& slot = Find(hash, name);
        if (slot.position == 0) {
            m_names.emplace_back(std::forward<Name>(name));
            slot = {hash, static_cast<std::uint32_t>(m_names.size())};
        }
    }

    // The slot of this name, or the empty one where it belongs. At least half of the slots are empty, so there is one.
    Slot& Find(std::uint32_t hash, std::wstring_view name) {
        std::size_t i = hash & (m_slots.size() - 1);
        while (m_slots[i].position != 0 && (m_slots[i].hash != hash || m_names[m_slots[i].position - 1] != name)) {
            i = (i + 1) & (m_slots.size() - 1);
        }
        return m_slots[i];
    }

    void Reserve(std::size_t count) {
        if (count <= m_slots.size() / 2) {
            return;
        }
        std::size_t size = 64; // a power of two
        while (size < 2 * count) {
            size *= 2;
        }
        Slots slots(size);
        for (const Slot& slot : m_slots) {
            if (slot.position != 0) {
                std::size_t i = slot.hash & (size - 1);
                while (slots[i].position != 0) {
                    i = (i + 1) & (size - 1);
                }
                slots[i] = slot;
            }
        }
        m_slots.swap(slots);
    }

    std::vector<std::wstring>& m_names;
    Slots m_slots;
};

} // namespace clus

#endif
