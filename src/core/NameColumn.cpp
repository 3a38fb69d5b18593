#include "core/NameColumn.h"

#include "core/ToolOutput.h"

#include <utility>

namespace clus {

namespace {

const std::size_t Columns = 2;

} // namespace

void NameColumn::AddLine(std::wstring_view line) {
    LineTokens tokens(line);
    while (tokens.Next()) {
        AddToken(tokens.Token());
    }
}

void NameColumn::AddToken(std::wstring_view token) {
    const std::size_t index = m_tokens++;
    if (index == 1) {
        m_isError = IsErrorList({m_names.front(), std::wstring(token)});
    }
    if (index % Columns == 0 && !m_isError) {
        m_unique.Append(token);
    }
}

void NameColumn::MoveTo(std::vector<std::wstring>& names) {
    if (names.empty()) {
        names.swap(m_names);
        return;
    }
    UniqueNames unique(names);
    for (std::wstring& name : m_names) {
        unique.Append(std::move(name));
    }
}

} // namespace clus
