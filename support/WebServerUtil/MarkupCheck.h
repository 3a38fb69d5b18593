// A look over XML text before a parser gets it: is every construct that is opened also closed?
#ifndef MARKUPCHECK_H
#define MARKUPCHECK_H

#include <string>

// `bytes`: UTF-8, or UTF-16 in this machine's byte order with a byte order mark. False for text that ends inside a tag,
// comment, character data, instruction or element, for a document type, and for null characters. True does not mean
// well-formed.
//
// Files get cut and damaged, and not every XmlLite comes back from text that just ends: Wine's can wait for the rest
// for ever.
bool HasCompleteMarkup(const std::string& bytes);

#endif
