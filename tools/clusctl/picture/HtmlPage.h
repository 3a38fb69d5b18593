// A cluster as one page of HTML that needs nothing besides.
#ifndef CLUSCTL_PICTURE_HTMLPAGE_H
#define CLUSCTL_PICTURE_HTMLPAGE_H

#include "ClusterPicture.h"
#include "Health.h"

#include <string>
#include <utility>
#include <vector>

namespace picture {

// A table: what it lists, titles, and rows of as many texts. The first text of a row may be a level or a state, which
// its look follows.
struct PageTable {
    std::string title;
    std::string whenEmpty;
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;
};

struct PageContent {
    std::string madeAt;                // "2026-11-22 16:45:03 UTC"
    std::string madeBy;                // "clusctl 1.0.0"
    std::string computer;              // where
    std::string simulated;             // the file of the simulated cluster; empty when it is a real one
    std::vector<std::string> warnings; // what could not be read
    std::vector<PageTable> tables;     // shown between the pictures and the lists: findings, settings
    ClusterPicture cluster;
    Health health;
};

// The page: without network, readable without script, light or dark as the reader's system is, printable. All texts are
// escaped, whatever they hold. Lists can be searched where scripts run.
std::string HtmlPage(const PageContent& content);

} // namespace picture

#endif
