// The texts that the program carries as resources.
#ifndef CLUSCTL_EMBEDDED_H
#define CLUSCTL_EMBEDDED_H

#include <string>

// The resource of that name (clusctl_texts.rc), with plain line ends; empty when the program has none.
std::string EmbeddedText(const wchar_t* name);

#endif
