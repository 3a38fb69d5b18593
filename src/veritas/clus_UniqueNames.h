// Appends names to a list, each once, in time linear to their number.
#ifndef CLUS_UNIQUENAMES_H
#define CLUS_UNIQUENAMES_H

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace clus {

class UniqueNames {
public:
    // The names already in the list count.
    explicit UniqueNames(std::vector<std::wstring>& names) : m_names(names), m_known(0, Hash{&names}, Equal{&names}) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            m_known.insert(i);
        }
    }
    UniqueNames(const UniqueNames&) = delete;
    UniqueNames& operator=(const UniqueNames&) = delete;

    // Appends the name unless an equal one, letter case included, is there.
    void Append(std::wstring&& name) {
        if (!m_names.empty() && m_names.back() == name) {
            return; // lists show a name once per system, in rows that follow one another
        }
        m_names.push_back(std::move(name));
        if (!m_known.insert(m_names.size() - 1).second) {
            m_names.pop_back();
        }
    }

private:
    // The set holds positions in the list and no copies of the names.
    struct Hash {
        const std::vector<std::wstring>* names;
        std::size_t operator()(std::size_t index) const {
            return std::hash<std::wstring>()((*names)[index]);
        }
    };
    struct Equal {
        const std::vector<std::wstring>* names;
        bool operator()(std::size_t left, std::size_t right) const {
            return (*names)[left] == (*names)[right];
        }
    };

    std::vector<std::wstring>& m_names;
    std::unordered_set<std::size_t, Hash, Equal> m_known;
};

} // namespace clus

#endif
