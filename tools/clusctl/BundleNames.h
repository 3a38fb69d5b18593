// The names of an installation in a support bundle, replaced consistently.
#ifndef CLUSCTL_BUNDLENAMES_H
#define CLUSCTL_BUNDLENAMES_H

#include "Json.h"

#include "common/Anonymiser.h"
#include "picture/HtmlPage.h"

#include <string>
#include <vector>

// First all names are learned, then they are replaced wherever they stand.
class BundleNames {
public:
    // This computer's name, and the account's with its domain.
    BundleNames();

    // Names of the cluster, its nodes, groups, resources and servers; words of its types stay.
    void Learn(const picture::ClusterPicture& cluster);
    // Accounts and domains of the model of a failover cluster.
    void LearnModel(const Json& model);
    // The same of VCS; what its format and its types give the names to stays.
    void LearnMainCf(const std::string& text);

    // Of any document: what its texts show to be names, as those of a log do.
    void LearnTexts(const Json& document);

    // What the lines of a log show to be names; also where the cluster has them no more.
    void LearnLog(const std::string& text);

    // Names of the computers and of the cluster that stay: each is a single word that everybody's names have, too.
    const std::vector<std::string>& Kept() const {
        return m_kept;
    }

    // Any text, and addresses in it.
    std::string Renamed(const std::string& text);
    // In all texts of a document, but for what a format gives the words to.
    void Rename(Json& document);
    // The same, and in the names of its members: the states of VCS's objects are named after these.
    void RenameKeys(Json& document);
    void Rename(picture::ClusterPicture& cluster);
    // Of a page all but its cluster and health.
    void Rename(picture::PageContent& page);

private:
    void SpareWords(const std::string& text);
    void RenameTypes(Json& types);
    void LearnIdentity(const std::string& name);

    common::Anonymiser m_names;
    std::vector<std::string> m_kept;
};

#endif
