#include "BundleParts.h"

#include "BundleFiles.h"

#include "archive/Sha256.h"
#include "archive/ZipArchive.h"

#include <utility>

void BundleParts::Add(const char* name, const char* what, Json document) {
    m_parts.push_back({name, what, std::move(document), std::string()});
}

void BundleParts::AddText(const std::string& name, const char* what, const std::string& text) {
    m_parts.push_back({name, what, Json(), text});
}

void BundleParts::TellMasked(const std::string& what, const char* why) {
    m_parts.back().masked.push_back({{"what", what}, {"why", why}});
}

void BundleParts::TellMissing(const std::string& what, const std::string& why) {
    m_missing.push_back({{"what", what}, {"why", why}});
}

void BundleParts::TellUnread(const std::string& what, const std::vector<std::string>& reasons) {
    const std::string lead = "not in the bundle: " + what + ": ";
    for (const std::string& reason : reasons) {
        TellMissing(what, reason);
        m_unread.push_back(lead + reason);
    }
}

std::string BundleParts::Pack(Json& manifest) const {
    std::vector<archive::File> files = {{BundleFiles::Manifest, std::string()}};
    Json listed = Json::array();
    for (const BundlePart& part : m_parts) {
        files.push_back({part.name, part.document.is_null() ? part.text : common::DumpJson(part.document)});
        listed.push_back({{"name", part.name},
                          {"what", part.what},
                          {"bytes", files.back().bytes.size()},
                          {"sha256", archive::Sha256(files.back().bytes)},
                          {"masked", part.masked}});
    }
    manifest["files"] = std::move(listed);
    manifest["missing"] = m_missing;
    files.front().bytes = common::DumpJson(manifest);
    try {
        return archive::WriteZip(files);
    } catch (const archive::ArchiveError& error) {
        throw Failure(std::string("cannot make the archive: ") + error.what());
    }
}
