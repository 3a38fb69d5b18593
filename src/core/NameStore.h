// Many names in few blocks of memory.
#ifndef CLUS_CORE_NAMESTORE_H
#define CLUS_CORE_NAMESTORE_H

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace clus {

// Names in their order, for the loops over all resources of a cluster: a list of strings would take two allocations for
// each. They stand behind one another, so that a loop reads nothing but names. What was stored stays where it is.
class NameStore {
    struct Block {
        std::unique_ptr<wchar_t[]> text;
        wchar_t* end; // of its last name
    };

public:
    // Over terminated texts.
    class const_iterator {
    public:
        typedef std::forward_iterator_tag iterator_category;
        typedef const wchar_t* value_type;
        typedef std::ptrdiff_t difference_type;
        typedef const value_type* pointer;
        typedef value_type reference;

        const wchar_t* operator*() const {
            return m_name;
        }
        const_iterator& operator++() {
            m_name += std::wcslen(m_name) + 1;
            if (m_name == m_block->end) {
                ++m_block;
                m_name = m_block != m_last ? m_block->text.get() : nullptr;
            }
            return *this;
        }
        bool operator==(const const_iterator& other) const {
            return m_name == other.m_name;
        }
        bool operator!=(const const_iterator& other) const {
            return m_name != other.m_name;
        }

    private:
        friend class NameStore;
        const_iterator(const Block* block, const Block* last)
            : m_block(block), m_last(last), m_name(block != last ? block->text.get() : nullptr) {
        }

        const Block* m_block;
        const Block* m_last;
        const wchar_t* m_name; // null behind the last one
    };

    NameStore() = default;
    NameStore(const NameStore&) = delete;
    NameStore& operator=(const NameStore&) = delete;

    void emplace_back(const wchar_t* name) {
        const std::size_t count = std::wcslen(name) + 1;
        if (count > m_room) {
            StartBlock(count);
        }
        wchar_t*& end = m_blocks.back().end;
        end = std::copy_n(name, count, end);
        m_room -= count;
        ++m_size;
    }
    std::size_t size() const {
        return m_size;
    }
    const_iterator begin() const {
        return const_iterator(m_blocks.data(), m_blocks.data() + m_blocks.size());
    }
    const_iterator end() const {
        const Block* const last = m_blocks.data() + m_blocks.size();
        return const_iterator(last, last);
    }

private:
    static const std::size_t FirstBlock = 512; // characters; each block doubles up to the largest
    static const std::size_t LargestBlock = 32768;

    void StartBlock(std::size_t count) {
        const std::size_t size = std::max(count, m_blockSize);
        std::unique_ptr<wchar_t[]> text(new wchar_t[size]);
        wchar_t* const start = text.get();
        m_blocks.push_back({std::move(text), start});
        m_room = size;
        m_blockSize = 2 * m_blockSize < LargestBlock ? 2 * m_blockSize : LargestBlock;
    }

    std::vector<Block> m_blocks; // each holds a name at least
    std::size_t m_size = 0;
    std::size_t m_room = 0; // characters left in the last block
    std::size_t m_blockSize = FirstBlock;
};

} // namespace clus

#endif
