// The states of a VCS cluster as its tools show them, for the VCS simulator.
#ifndef CLUSCTL_SHOWNSTATES_H
#define CLUSCTL_SHOWNSTATES_H

#include "Json.h"
#include "MainCfText.h"

// The state file of docs/vcs-simulator.md. Groups have none of their own: theirs follow from the resources'.
Json StatesJson(const ShownConfiguration& shown);

#endif
