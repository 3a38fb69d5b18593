// The files of a support bundle while they are gathered, and what could not be had.
#ifndef CLUSCTL_BUNDLEPARTS_H
#define CLUSCTL_BUNDLEPARTS_H

#include "Failure.h"
#include "Interruption.h"
#include "Json.h"

#include "common/Files.h"

#include <string>
#include <vector>

// One file of a bundle.
struct BundlePart {
    std::string name; // "model.json"
    const char* what;
    Json document = Json(); // null: `text` is the file
    std::string text;
    Json masked = Json::array(); // what, why
};

class BundleParts {
public:
    void Add(const char* name, const char* what, Json document);
    void AddText(const std::string& name, const char* what, const std::string& text);
    // Of the part that was added last.
    void TellMasked(const std::string& what, const char* why);

    // What is not in the bundle, and why.
    void TellMissing(const std::string& what, const std::string& why);
    // The same of what should be there and cannot be read.
    void TellUnread(const std::string& what, const std::vector<std::string>& reasons);

    // Does what may fail; what does is unread. Throws Interrupted.
    template <typename Read> void Try(const char* what, const Read& read) {
        try {
            read();
        } catch (const Interrupted&) {
            throw;
        } catch (const Failure& failure) {
            TellUnread(what, {failure.what()});
        } catch (const common::FileError& error) {
            TellUnread(what, {error.what()});
        }
    }

    std::vector<BundlePart>& All() {
        return m_parts;
    }
    Json& Missing() {
        return m_missing;
    }
    const std::vector<std::string>& Unread() const {
        return m_unread;
    }

    // The archive. Adds `files` and `missing` to the manifest, which is its first file. Throws Failure.
    std::string Pack(Json& manifest) const;

private:
    std::vector<BundlePart> m_parts;
    Json m_missing = Json::array(); // what, why
    std::vector<std::string> m_unread;
};

#endif
