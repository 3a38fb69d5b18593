// The page that "clusctl status" shows, line by line.
#ifndef CLUSCTL_STATUSTEXT_H
#define CLUSCTL_STATUSTEXT_H

#include "picture/ClusterPicture.h"
#include "picture/Health.h"
#include "picture/TerminalPage.h"

#include <vector>

// Pending and failed things first.
std::vector<picture::StyledLine> StatusPage(const picture::ClusterPicture& cluster, const picture::Health& health);

// Whether standard output is a terminal, and the user has not asked for texts without colours (NO_COLOR).
bool WantsColour();

#endif
