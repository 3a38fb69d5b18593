#include "VcsValues.h"

#include "Text.h"

#include "core/ToolSecrets.h"

Json NameRecords(const VcsNames& names) {
    Json records = Json::array();
    for (const std::wstring& name : names) {
        records.push_back({{"name", name}});
    }
    return records;
}

std::string ListText(const VcsNames& names) {
    std::string text;
    for (const std::wstring& name : names) {
        text += (text.empty() ? "" : ", ") + Printable(name);
    }
    return text;
}

Json ReadVcsAttribute(const std::wstring& resource, const std::wstring& attribute) {
    std::wstring value;
    if (!CVeritasCluster().GetResourceAttribute(resource.c_str(), attribute.c_str(), value)) {
        return Json();
    }
    return Json(clus::IsSecretAttribute(attribute) ? clus::SecretMask : value);
}
