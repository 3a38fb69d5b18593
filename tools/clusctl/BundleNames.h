// The names of an installation in a support bundle, replaced consistently.
#ifndef CLUSCTL_BUNDLENAMES_H
#define CLUSCTL_BUNDLENAMES_H

#include "Json.h"

#include "common/Anonymiser.h"
#include "picture/HtmlPage.h"

#include <string>

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

    // What the lines of a log show to be names; also where the cluster has them no more.
    void LearnLog(const std::string& text);

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
    void KeepWords(const std::string& text);

    common::Anonymiser m_names;
};

#endif
