// What holds of every text as a main.cf, and of every change of one.
#ifndef MAINCFCHECKS_H
#define MAINCFCHECKS_H

#include "CfDocument.h"

#include <string>

// What the file says, apart from the thing of that name: a resource, with its links.
std::string ToldWithout(const vcssim::CfDocument& document, const std::string& without);

// A text that can be read is kept byte for byte, and a change changes what it says and nothing else.
void CheckMainCf(const std::string& text);

#endif
