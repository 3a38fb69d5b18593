// Commands that mend what the doctor finds, as they can be typed at a command prompt.
#ifndef CLUSCTL_DOCTORMENDS_H
#define CLUSCTL_DOCTORMENDS_H

#include "picture/Health.h"
#include "picture/PictureIndex.h"

#include <string>
#include <vector>

// Each runs when the one before has succeeded.
std::string InTurn(const std::vector<std::string>& commands);

// A VCS tool's change of the configuration, which VCS refuses while that is read-only, as it is as a rule.
std::string WhileWritable(const std::string& command);

// `name` depends on `child`.
std::string LinkCommand(const std::string& name, const std::string& child);

// A Lanman resource for a service group.
std::string LanmanCommand(const std::string& group);

// Where a group that is on none of these systems may come online; "SYSTEM" when there are none.
std::string SystemToComeOnline(const std::vector<picture::StateOnNode>& states);

struct Mend {
    std::string text; // as of a finding
    std::string ask;
};

// Of what the status tells.
Mend MendOf(const picture::Problem& problem, const picture::PictureIndex& cluster);

#endif
