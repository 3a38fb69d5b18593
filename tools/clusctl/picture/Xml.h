// Texts in XML and HTML.
#ifndef CLUSCTL_PICTURE_XML_H
#define CLUSCTL_PICTURE_XML_H

#include <string>

namespace picture {

// The text as it may stand between tags and within quoted attributes of XML and HTML, whatever it holds: control
// characters, which XML has no form for, get a visible one, bytes that are no UTF-8 and non-characters become U+FFFD.
std::string EscapedXml(const std::string& text);

} // namespace picture

#endif
