// Rules for comparing server names. They depend on nothing but the locale of the C runtime.
#ifndef CLUS_CORE_SERVERNAME_H
#define CLUS_CORE_SERVERNAME_H

#include <string>

namespace clus {

// The text with every character upper-cased by the wide mapping of the runtime.
std::wstring WideUpper(const wchar_t* text);

// Whether the first character is a letter to the narrow classification: then the text is a host name and not an
// address.
bool StartsLikeHostName(const wchar_t* text);

// The part before the first ".", upper-cased by the narrow mapping: letters outside the single-byte range stay.
std::wstring UpperFirstLabel(const wchar_t* text);

} // namespace clus

#endif
