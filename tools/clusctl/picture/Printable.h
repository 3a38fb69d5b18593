// Texts that cannot break a line or steer a terminal.
#ifndef CLUSCTL_PICTURE_PRINTABLE_H
#define CLUSCTL_PICTURE_PRINTABLE_H

#include <string>

// The text with control characters replaced by a visible form, so that a name cannot break a line or steer a terminal.
std::string Printable(const std::string& text);

#endif
