// Many names in few blocks of memory.
#ifndef CLUS_CORE_NAMESTORE_H
#define CLUS_CORE_NAMESTORE_H

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <memory>
#include <vector>

namespace clus {

// Names in their order, for the loops over all resources of a cluster: a list of strings would take two allocations for
// each. What was stored stays where it is.
class NameStore {
public:
    NameStore() = default;
    NameStore(const NameStore&) = delete;
    NameStore& operator=(const NameStore&) = delete;

    void emplace_back(const wchar_t* name) {
        const std::size_t count = std::wcslen(name) + 1;
        if (count > m_room) {
            StartBlock(count);
        }
        m_names.push_back(m_next);
        std::copy_n(name, count, m_next);
        m_next += count;
        m_room -= count;
    }
    std::size_t size() const {
        return m_names.size();
    }
    // Terminated texts.
    std::vector<const wchar_t*>::const_iterator begin() const {
        return m_names.begin();
    }
    std::vector<const wchar_t*>::const_iterator end() const {
        return m_names.end();
    }

private:
    static const std::size_t FirstBlock = 512; // characters; each block doubles up to the largest
    static const std::size_t LargestBlock = 32768;

    void StartBlock(std::size_t count) {
        const std::size_t size = std::max(count, m_blockSize);
        m_blocks.push_back(std::unique_ptr<wchar_t[]>(new wchar_t[size]));
        m_next = m_blocks.back().get();
        m_room = size;
        m_blockSize = 2 * m_blockSize < LargestBlock ? 2 * m_blockSize : LargestBlock;
    }

    std::vector<std::unique_ptr<wchar_t[]>> m_blocks;
    std::vector<const wchar_t*> m_names;
    wchar_t* m_next = nullptr; // in the last block
    std::size_t m_room = 0;    // characters left there
    std::size_t m_blockSize = FirstBlock;
};

} // namespace clus

#endif
