// The names of nodes in a model of a failover cluster that is being made.
#ifndef CLUSCTL_MODELNODES_H
#define CLUSCTL_MODELNODES_H

#include "Json.h"

#include <string>

// Calls this computer "." wherever the model names it as a node, so that the model is one of whatever computer loads
// it. But when any place spells it in another letter case all stay as they are: the library compares letter for letter,
// and on another computer nobody would know who is meant.
void NameThisComputer(Json& model, const std::string& thisComputer);

#endif
