#include "VcsValues.h"

#include "Secrets.h"
#include "Text.h"

#include <algorithm>

Json TextOrNull(const std::wstring& text) {
    return text.empty() ? Json() : Json(ToUtf8(text));
}

Json NamesJson(const VcsNames& names) {
    Json list = Json::array();
    for (const std::wstring& name : names) {
        list.push_back(ToUtf8(name));
    }
    return list;
}

Json NameRecords(const VcsNames& names) {
    Json records = Json::array();
    for (const std::wstring& name : names) {
        records.push_back({{"name", ToUtf8(name)}});
    }
    return records;
}

NameValuePairList Pairs(const std::vector<std::string>& texts) {
    NameValuePairList pairs;
    for (const std::string& text : texts) {
        const size_t equals = text.find('=');
        pairs.emplace_back(ToUtf16(text.substr(0, equals)), ToUtf16(text.substr(equals + 1)));
    }
    return pairs;
}

bool Contains(const VcsNames& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

Json ReadVcsAttribute(const std::wstring& resource, const std::string& attribute) {
    std::wstring value;
    if (!CVeritasCluster().GetResourceAttribute(resource.c_str(), ToUtf16(attribute).c_str(), value)) {
        return Json();
    }
    return IsSecretAttribute(attribute) ? Json(std::string(MaskedSecret)) : Json(ToUtf8(value));
}
