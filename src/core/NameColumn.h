// The names in a list that a VCS tool prints.
#ifndef CLUS_CORE_NAMECOLUMN_H
#define CLUS_CORE_NAMECOLUMN_H

#include "core/UniqueNames.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace clus {

// Takes a list of two columns, name and system, line by line as it is read: rows are counted by tokens and not by
// lines. Each name is kept once, and nothing else of the text.
class NameColumn {
public:
    // Of a line as of one for SplitOutput.
    void AddLine(std::wstring_view line);

    // Whether the list is an error report, as IsErrorList says of its tokens; there are no names then.
    bool IsError() const {
        return m_isError;
    }

    // Appends the names that the list does not hold yet, in the order of their first rows. Once, behind the last line.
    void MoveTo(std::vector<std::wstring>& names);

private:
    void AddToken(std::wstring_view token);

    std::vector<std::wstring> m_names;
    UniqueNames m_unique{m_names};
    std::size_t m_tokens = 0;
    bool m_isError = false;
};

} // namespace clus

#endif
