#include "ClusterFiles.h"

#include "CfDocument.h"

#include "common/Files.h"
#include "common/Text.h"

#include <algorithm>

namespace vcssim {

namespace {

std::vector<std::string> IncludesOf(const std::string& configuration) {
    try {
        return CfDocument(configuration).Includes();
    } catch (const CfError&) {
        return {}; // the tools say what is wrong with it
    }
}

} // namespace

std::wstring ClusterFiles::Running() const {
    return common::FileExists(Live()) ? Live() : m_mainCf;
}

std::wstring ClusterFiles::Folder() const {
    return m_mainCf.substr(0, m_mainCf.find_last_of(L"\\/:") + 1); // npos + 1 is 0
}

std::wstring ClusterFiles::Included(const std::string& name) const {
    return Folder() + common::ToUtf16(name);
}

std::vector<std::wstring> ClusterFiles::Names() const {
    const std::wstring folder = Folder();
    std::vector<std::wstring> names;
    const auto add = [&](const std::wstring& path) {
        const std::wstring name = path.substr(folder.size());
        if (common::FileExists(path) && std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    };
    add(m_mainCf);
    add(Live());
    add(State());
    for (const std::string& include : IncludesOf(common::ReadWholeFile(Running()))) {
        add(Included(include));
    }
    return names;
}

} // namespace vcssim
