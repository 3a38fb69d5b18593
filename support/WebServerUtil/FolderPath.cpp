#include "FolderPath.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/Text.h"

namespace {

bool IsAbsolute(const std::wstring& path) {
    return path.size() >= 2 &&
           ((path[1] == L':' && (path.size() == 2 || path[2] == L'\\')) || path.compare(0, 2, L"\\\\") == 0);
}

} // namespace

std::wstring ComparableFolder(const std::wstring& path) {
    std::wstring folder = common::ExpandVariables(path);
    for (wchar_t& c : folder) {
        if (c == L'/') {
            c = L'\\';
        }
    }
    if (!IsAbsolute(folder)) {
        return std::wstring();
    }
    if (folder.size() == 2) {
        folder += L'\\'; // a bare "C:" would mean that drive's current folder
    }
    folder = common::FullPath(folder);
    while (!folder.empty() && folder.back() == L'\\') {
        folder.pop_back();
    }
    return common::Folded(folder);
}

bool IsSameOrAbove(const std::wstring& outer, const std::wstring& inner) {
    return !outer.empty() && inner.compare(0, outer.size(), outer) == 0 &&
           (inner.size() == outer.size() || inner[outer.size()] == L'\\');
}
