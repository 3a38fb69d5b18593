#include "SiteLookup.h"

#include "FolderPath.h"
#include "MarkupCheck.h"
#include "XmlText.h"

#include <algorithm>
#include <cwchar>
#include <utility>

namespace {

typedef std::map<std::wstring, std::wstring> Attributes;

const std::wstring& ValueOf(const Attributes& attributes, const wchar_t* name) {
    static const std::wstring none;
    const Attributes::const_iterator found = attributes.find(name);
    return found == attributes.end() ? none : found->second;
}

bool IsSameWithoutCase(const std::wstring& text, const wchar_t* other) {
    return _wcsicmp(text.c_str(), other) == 0;
}

// A positive decimal number that fits, otherwise -1.
int ParseSiteId(const std::wstring& text) {
    unsigned long long number = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9' || number > 0x7fffffff) {
            return -1;
        }
        number = number * 10 + static_cast<unsigned int>(c - L'0');
    }
    return number == 0 || number > 0x7fffffff ? -1 : static_cast<int>(number);
}

// Keeps the site with the longest path that holds the folder.
class BestSite : public XmlElementHandler {
public:
    explicit BestSite(const std::wstring& folder) : m_folder(ComparableFolder(folder)) {
    }

    int SiteId() const {
        return m_siteId;
    }

protected:
    ~BestSite() = default;

    void Offer(int siteId, const std::wstring& physicalPath) {
        if (siteId < 0 || physicalPath.empty()) {
            return;
        }
        const std::wstring path = ComparableFolder(physicalPath);
        if (path.size() > m_length && IsSameOrAbove(path, m_folder)) {
            m_length = path.size();
            m_siteId = siteId;
        }
    }

private:
    const std::wstring m_folder;
    size_t m_length = 0;
    int m_siteId = -1;
};

class ApplicationHostHandler final : public BestSite {
public:
    using BestSite::BestSite;

    void OnElement(const std::vector<std::wstring>& path, const Attributes& attributes) override {
        static const wchar_t* const names[] = {L"configuration", L"system.applicationHost", L"sites", L"site",
                                               L"application",   L"virtualDirectory"};
        const size_t depth = path.size();
        if (depth != 4 && depth != 6) {
            return;
        }
        for (size_t i = 0; i < depth; ++i) {
            if (path[i] != names[i]) {
                return;
            }
        }
        if (depth == 4) {
            m_currentSite = ParseSiteId(ValueOf(attributes, L"id"));
        } else {
            Offer(m_currentSite, ValueOf(attributes, L"physicalPath"));
        }
    }

private:
    int m_currentSite = -1;
};

class MetaBaseHandler final : public BestSite {
public:
    using BestSite::BestSite;

    void OnElement(const std::vector<std::wstring>& path, const Attributes& attributes) override {
        if (path.back() == L"IIsWebVirtualDir") {
            Offer(SiteOfLocation(ValueOf(attributes, L"Location")), ValueOf(attributes, L"Path"));
        }
    }

private:
    // "/LM/W3SVC/<site>/ROOT", or a place below it.
    static int SiteOfLocation(const std::wstring& location) {
        std::vector<std::wstring> parts;
        for (size_t start = 0; start <= location.size();) {
            const size_t end = std::min(location.find(L'/', start), location.size());
            parts.push_back(location.substr(start, end - start));
            start = end + 1;
        }
        if (parts.size() < 5 || !parts[0].empty() || !IsSameWithoutCase(parts[1], L"LM") ||
            !IsSameWithoutCase(parts[2], L"W3SVC") || !IsSameWithoutCase(parts[4], L"ROOT")) {
            return -1;
        }
        return ParseSiteId(parts[3]);
    }
};

// XmlLite need not know the byte order that Windows itself never writes.
std::string InKnownByteOrder(const std::string& bytes) {
    std::string result = bytes;
    if (bytes.compare(0, 2, "\xfe\xff") == 0) {
        for (size_t i = 0; i + 1 < result.size(); i += 2) {
            std::swap(result[i], result[i + 1]);
        }
    }
    return result;
}

template <class Handler> int Find(const std::string& bytes, const std::wstring& folder) {
    const std::string text = InKnownByteOrder(bytes);
    Handler handler(folder);
    return HasCompleteMarkup(text) && ReadXml(text, handler) ? handler.SiteId() : -1;
}

} // namespace

int FindSiteOfFolder(const std::string& bytes, SiteFileForm form, const std::wstring& folder) {
    return form == SiteFileForm::ApplicationHost ? Find<ApplicationHostHandler>(bytes, folder)
                                                 : Find<MetaBaseHandler>(bytes, folder);
}
