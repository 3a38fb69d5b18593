// The page that "clusctl status" shows, line by line.
#ifndef CLUSCTL_STATUSTEXT_H
#define CLUSCTL_STATUSTEXT_H

#include "picture/ClusterPicture.h"
#include "picture/Health.h"

#include <string>
#include <vector>

struct StyledLine {
    std::string text;
    std::string style; // of the line: a sequence of Stream's, or empty
};

// Pending and failed things first.
std::vector<StyledLine> StatusPage(const picture::ClusterPicture& cluster, const picture::Health& health);

// The lines as one text, without the last line end. With their styles when it is for a terminal that may show them
// (WantsColour).
std::string PageText(const std::vector<StyledLine>& lines, bool isColoured);

// Whether standard output is a terminal, and the user has not asked for texts without colours (NO_COLOR).
bool WantsColour();

#endif
